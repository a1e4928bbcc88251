// SPDX-License-Identifier: MIT
// The listing of a document: its indented XML on PDF pages, coloured by the role of each character.
#pragma once

#include "impressao/PdfPagina.h"

#include <string_view>

namespace zel {

// Where the lines of a listing stand, and how one that is too long goes on.
inline constexpr MargensPdf kMargensListagem{0, 0, "    "};

// Draws an XML text (Latin-1): the marks of its tags blue, what stands in a tag red, the content
// black and bold.
void fnEscreverTextoPDF(PdfPagina &pagina, std::string_view xml);

} // namespace zel
