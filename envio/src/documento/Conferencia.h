// SPDX-License-Identifier: MIT
// Looks at an NFC-e of layout 4.00 that anybody made, and shows documents to people.
#pragma once

#include "base/Recusa.h"
#include "base/Xml.h"
#include "config/Configuracao.h"
#include "esquema/Esquema.h"

#include <string>
#include <vector>

namespace zel::envio {

// Signature, key, QR code, schema (null: not judged), sums, IBS and CBS of the NFe in a document
// (NFe, enviNFe or nfeProc). `olhado` receives a line for each thing that was looked at or could
// not be.
bool verificarNfce(const Documento &documento, const Configuracao &config, Esquemas *esquemas,
                   std::vector<std::string> &olhado, Recusas &recusas);

// Whether an NFe that is not signed yet may be: key, numbers, sums, IBS and CBS.
bool conferirParaAssinar(const Documento &nfe, const Configuracao &config, Recusas &recusas);

// A document as a person reads it, UTF-8, lines of up to 78 characters.
std::string mostrar(const Documento &documento);

} // namespace zel::envio
