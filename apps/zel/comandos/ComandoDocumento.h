// SPDX-License-Identifier: MIT
// What the forms of zel documento have in common.
#pragma once

#include "comandos/Comando.h"
#include "comandos/Envio.h"

#include <string>
#include <string_view>

namespace zel::aplicativo {

inline constexpr std::string_view kNomeDaConfigDoEnvio = "zel-envio.toml";

// The configuration of the side that sends: the one given, else the one in the till's directory;
// empty when there is none.
std::string configDoEnvio(const Argumentos &argumentos, const std::string &diretorio);

// What the till keeps of its last document beside it: where `arquivo` is that document, or a
// request about it, this completes what the arguments leave out. From the next sale on the change
// there is another one's: false when so much is no longer known.
bool completarDoCaixa(const std::string &diretorio, const std::string &arquivo,
                      PedidoAoEnvio &pedido);

// zel documento config.
int configurarEnvio(const Argumentos &argumentos);

// Says all that was refused of a file in a step, and answers kComErros.
int recusarDoEnvio(std::string_view passo, std::string_view arquivo,
                   const RespostaDoEnvio &resposta);

// Writes the file whole or not at all, a secret for its owner alone. Why it was not written; empty
// when it was.
std::string gravarInteiro(const std::string &arquivo, std::string_view bytes, bool segredo = false);

} // namespace zel::aplicativo
