// SPDX-License-Identifier: MIT
// Reissue of the last document from its stored sections: in contingency, or to replace it.
#pragma once

#include <string>

namespace zel {

// Reads the document back from its file and writes it anew as kind `tipo` (ZEL_Cabecalho.h), with
// `texto` as fnXMLFormatado_ZEL takes it. Kind 3 writes parametrosEnvio.xml behind it, naming
// number and series of the document that it replaces. The receipt state does not matter. 1; -1 an
// unknown kind, no document, or what fnXMLFormatado_ZEL refuses; -40, -52.
int fnGerarXMLContingencia(int tipo, std::string &texto);

} // namespace zel
