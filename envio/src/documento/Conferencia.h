// SPDX-License-Identifier: MIT
// Looks at what anybody made of layout 4.00, and shows documents to people.
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

// The same of the events (envEvento, evento, procEventoNFe) or the inutilization (inutNFe,
// ProcInutNFe) in a document: signature, Id, key, fields, the answer beside it, schema.
bool verificarPedido(const Documento &documento, const Configuracao &config, Esquemas *esquemas,
                     std::vector<std::string> &olhado, Recusas &recusas);

// Whether what is not signed yet may be: key, numbers, sums, IBS and CBS of an NFe; Id and fields
// of events and inutilizations.
bool conferirParaAssinar(const Documento &nfe, const Configuracao &config, Recusas &recusas);

// A document as a person reads it, UTF-8, lines of up to 78 characters.
std::string mostrar(const Documento &documento);

} // namespace zel::envio
