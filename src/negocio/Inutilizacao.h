// SPDX-License-Identifier: MIT
// Inutilization: the request to void a range of receipt numbers that no document will ever use.
#pragma once

#include <string_view>

namespace zel {

// Writes the request to documentosEnvio.xml. Numbers up to 9 characters, series up to 3,
// justification up to 60; longer texts are cut. Any state, which stays. ZEL_OK;
// ZEL_CONFIG_ILEGIVEL; ZEL_ARGUMENTO_INVALIDO a null text; ZEL_ARQUIVO_INDISPONIVEL.
int fnCFInutilizar_ZEL_Felbor(std::string_view numeroInicial, std::string_view numeroFinal,
                              std::string_view serie, std::string_view justificativa);

} // namespace zel
