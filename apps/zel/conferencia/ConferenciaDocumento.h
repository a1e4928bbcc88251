// SPDX-License-Identifier: MIT
// A document by itself: form, access key, digits, sums, payments and QR code. Nothing about the
// consumer is shown.
#pragma once

#include "conferencia/Achado.h"
#include "leitura/Xml.h"

#include <string>
#include <string_view>

namespace zel::aplicativo {

// The bytes of a file. With a folder of schemas the document is also held against the published
// one (Esquema).
void conferirDocumento(std::string_view bytes, const std::string &esquema, Relatorio &relatorio);

// The products of the items: texts, codes, values, and what homologation asks for.
void conferirProdutos(const NoXml &infNFe, Relatorio &relatorio);

// Items against totals, totals against payments. `infNFe` is the document's inner element.
void conferirTotais(const NoXml &infNFe, Relatorio &relatorio);

// The QR-code content of version 100 against the document that it stands in; `nfe` is around
// infNFe.
void conferirQrcode(const NoXml &nfe, Relatorio &relatorio);

} // namespace zel::aplicativo
