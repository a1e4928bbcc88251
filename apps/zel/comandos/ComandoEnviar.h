// SPDX-License-Identifier: MIT
// What became of a document that was transmitted, as zel enviar and zel vender say it.
#pragma once

#include "comandos/ComandoComum.h"
#include "comandos/Envio.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zel::aplicativo {

// What to say where there is no configuration of the side that sends.
std::string semConfigDoEnvio(const std::string &diretorio);

// `--esperar`; none when it is no number of seconds from 0 to 300.
std::optional<int> segundosDados(const Argumentos &argumentos);

// The request about a till's file: configuration, till, change. None, and said, when it cannot be
// had.
std::optional<PedidoDeTransmissao> pedidoDeTransmissao(const Argumentos &argumentos,
                                                       const std::string &diretorio,
                                                       const std::string &arquivo);

// An NFC-e that was issued offline.
bool ehOffline(const Transmissao &feita);

// "autorizado", "recusado", "sem resposta", "não enviado"...; and the exit code of that.
std::string resultadoDe(const Transmissao &feita);
Saida saidaDe(const Transmissao &feita);

// The authority's answer, why and what to do.
std::vector<Linha> linhasDaResposta(const Transmissao &feita);

} // namespace zel::aplicativo
