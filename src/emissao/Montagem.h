// SPDX-License-Identifier: MIT
// The complete NFC-e: head, stored sections in the document's order, closing text, in the layout's
// element order; and its way out, to documentosEnvio.xml or, in contingency, scrambled to the
// directories given. Leaves the receipt state to the closing operation.
#pragma once

#include "emcurso/Persistencia.h"
#include "emissao/Envio.h"

#include <string>
#include <string_view>

namespace zel {

// Builds and writes the document in progress as kind `tipo` (Cabecalho.h). `texto` carries the
// target directories of kind 4 on entry ("dirA/|dirB/", at most three of 300 characters, each with
// its own separator at the end), and on success the path last written (kind 4) or the document.
// What goes `junto` is saved in the same step as number, code and key (not for kind 4).
// ZEL_OK; 0 an unknown kind; ZEL_RECUSADO kind 2, a section that is missing, a number or key that
// cannot be built, kind 4 without a directory; ZEL_CONFIG_ILEGIVEL, ZEL_ARQUIVO_INDISPONIVEL. A
// document refused for a missing section has still consumed its number and numeric code; otherwise
// a failure leaves everything as it was.
int fnXMLFormatado_ZEL(const ST_PersitenceXML_ZEL &documento, int tipo, std::string &texto,
                       const JuntoDoDocumento &junto);

// Reissue of the last document, in contingency or to replace it: reads it back from its file and
// writes it anew as kind `tipo` (Cabecalho.h), with
// `texto` as fnXMLFormatado_ZEL takes it. Kind 3 writes parametrosEnvio.xml after it, naming
// number and series of the document that it replaces. The receipt state does not matter. ZEL_OK;
// ZEL_RECUSADO an unknown kind, no document, or what fnXMLFormatado_ZEL refuses;
// ZEL_CONFIG_ILEGIVEL, ZEL_ARQUIVO_INDISPONIVEL.
int fnGerarXMLContingencia(ST_PersitenceXML_ZEL &documento, int tipo, std::string &texto);

// The closing text as it stands in the document: without its printer marks, on one line, and with
// one blank where they leave several. Empty for none.
std::string mensagemDoDocumento(const ST_tagZEL &encerramento);

} // namespace zel
