// SPDX-License-Identifier: MIT
// The sale with its transmission, from the closed document to the receipt in the customer's hand:
// authorized, or issued offline where no answer came. docs/envio.md tells the same to people, "A
// venda com transmissão".
#pragma once

#include "comandos/ComandoComum.h"

#include <string>
#include <vector>

namespace zel::aplicativo {

// What is wrong with the options that go with --transmitir; empty when nothing is.
std::string erroDaTransmissao(const Argumentos &argumentos);

// Before the first step of a sale: whether what is sold could go into a queue. The kind of emission
// is the sequence's own: one that a death left offline is online again. False, and said.
bool prepararTransmissao(const Argumentos &argumentos, const std::string &diretorio);

struct VendaTransmitida {
    Saida saida = kComErros;
    std::string resultado; // "autorizado", "offline", "parado", "recusado"...
    std::vector<Linha> linhas;
};

// Transmits the document that was closed last, and makes its receipt.
VendaTransmitida transmitirVenda(const Argumentos &argumentos, const std::string &diretorio);

} // namespace zel::aplicativo
