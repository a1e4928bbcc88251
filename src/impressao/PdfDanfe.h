// SPDX-License-Identifier: MIT
// The receipt on PDF pages: its printer mark-up turned into lines of normal and condensed text. No
// image is drawn, the QR code stands there as its content.
#pragma once

#include "impressao/PdfPagina.h"

#include <string_view>

namespace zel {

inline constexpr MargensPdf kMargensDanfe{10, 10, ""};

// Draws a receipt text (Latin-1, mark-up in angle or square brackets) in the widths of its columns,
// 42 or 48 (56 counts as 48); other numbers break lines at the right margin alone and centre
// nothing. A paper cut between two receipts ends the line.
void fnEscreverTextoDanfePDF(PdfPagina &pagina, std::string_view texto, int colunas);

} // namespace zel
