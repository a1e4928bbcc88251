// SPDX-License-Identifier: MIT
// What the forms of zel documento have in common.
#pragma once

#include "comandos/Comando.h"
#include "comandos/Envio.h"

#include <string>
#include <string_view>

namespace zel::aplicativo {

inline constexpr std::string_view kNomeDaConfigDoEnvio = "zel-envio.toml";

// zel documento config.
int configurarEnvio(const Argumentos &argumentos);

// Says all that was refused of a file in a step, and answers kComErros.
int recusarDoEnvio(std::string_view passo, std::string_view arquivo,
                   const RespostaDoEnvio &resposta);

// Writes the file whole or not at all, a secret for its owner alone. Why it was not written; empty
// when it was.
std::string gravarInteiro(const std::string &arquivo, std::string_view bytes, bool segredo = false);

} // namespace zel::aplicativo
