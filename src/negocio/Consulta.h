// SPDX-License-Identifier: MIT
// Consultation: the request for the state of issued documents, and the fixed parameters that say
// the sending component what to bring back.
#pragma once

#include <string_view>

namespace zel {

// `tipo`, matched exactly, is "DATA" (`inicio` and `fim` are dates, 25 characters), "NUM" (they
// are numbers, 9, of the series, 4) or "CHAVE" (access key, 44); longer texts are cut, arguments
// that the kind does not need are not looked at. Writes documentosEnvio.xml, after it
// parametrosEnvio.xml. Any state; works with the configuration in memory, loading it only when
// nothing did before. ZEL_OK; ZEL_ARGUMENTO_INVALIDO another kind, or a null text that the kind
// needs; ZEL_ARQUIVO_INDISPONIVEL, with both files as they were or, when only the second could not
// be written, the second; ZEL_CONFIG_ILEGIVEL a first load.
int fnGeraXMLConsulta_ZEL(std::string_view tipo, std::string_view inicio, std::string_view fim,
                          std::string_view serie, std::string_view chave);

} // namespace zel
