// SPDX-License-Identifier: MIT
// Reissue of the last document from its stored sections: in contingency, or to replace it.
#pragma once

#include "emcurso/Persistencia.h"

#include <string>

namespace zel {

// Reads the document back from its file and writes it anew as kind `tipo` (Cabecalho.h), with
// `texto` as fnXMLFormatado_ZEL takes it. Kind 3 writes parametrosEnvio.xml after it, naming
// number and series of the document that it replaces. The receipt state does not matter. ZEL_OK;
// ZEL_RECUSADO an unknown kind, no document, or what fnXMLFormatado_ZEL refuses;
// ZEL_CONFIG_ILEGIVEL, ZEL_ARQUIVO_INDISPONIVEL.
int fnGerarXMLContingencia(ST_PersitenceXML_ZEL &documento, int tipo, std::string &texto);

} // namespace zel
