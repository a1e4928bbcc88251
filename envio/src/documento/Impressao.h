// SPDX-License-Identifier: MIT
// A document of layout 4.00 in the form in which the fiscal library reads it for printing, and the
// return with the ready content of the QR code.
#pragma once

#include "base/Recusa.h"
#include "base/Xml.h"

#include <optional>
#include <string>

namespace zel::envio {

struct ParaImprimir {
    std::string documento, retorno; // ISO-8859-1
};

// `nfe`: NFe with infNFeSupl. `resposta`: a document with the authority's protNFe; null offline.
std::optional<ParaImprimir> prepararImpressao(const No &nfe, const Documento *resposta,
                                              Recusas &recusas);

} // namespace zel::envio
