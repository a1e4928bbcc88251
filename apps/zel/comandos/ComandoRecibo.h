// SPDX-License-Identifier: MIT
// What zel ver and zel imprimir have in common: the receipt that the arguments ask for.
#pragma once

#include "comandos/BibliotecaRecibo.h"
#include "comandos/Comando.h"
#include "comandos/Papel.h"

#include <optional>
#include <string>

namespace zel::aplicativo {

// The receipt, with its notice said on the error output. None, and said, when there is none or the
// arguments do not fit together; `saida` is then the exit code. `previa`: one without the
// authority's answer will do.
std::optional<Recibo> reciboPedido(const Comando &comando, const Argumentos &argumentos,
                                   bool previa, int &saida);

// The receipt of a document, laid out in the till itself where that is right, else in a copy.
Recibo montarRecibo(const std::string &diretorio, const PedidoDeRecibo &pedido);

// Where to print, from the options. What is wrong with them; empty when nothing is.
std::string lerImpressora(const Argumentos &argumentos, Impressao &impressao);

} // namespace zel::aplicativo
