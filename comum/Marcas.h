// SPDX-License-Identifier: MIT
// The names of the printer mark-up, as receipts carry it ("<b>text</b>"): this till's own, no
// standard's. The library takes the marks out of documents and makes those of values harmless,
// libzel-cupom obeys them: cupom/src/Marcas.h says what each asks for.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace zel::marcas {

// Marks whose content is text of the receipt.
inline constexpr std::array<std::string_view, 12> kDeTexto{"b", "i",  "ad", "s",  "e",  "c",
                                                           "n", "ce", "tb", "da", "xl", "fe"};

// Marks whose content is not.
inline constexpr std::array<std::string_view, 31> kDeConteudo{
    "l",      "dt",      "hr",     "dti", "hri",     "g",       "a",    "gui",
    "bmp",    "sl",      "sn",     "slm", "qrcode",  "ean13",   "ean8", "code93",
    "code39", "codabar", "cespl",  "mg",  "ibmp",    "confgui", "sp",   "tc",
    "upc-a",  "msi",     "code11", "pdf", "code128", "i2of5",   "s2of5"};

// Names that mean something within a mark or to some printing programs, and nothing in a document.
inline constexpr std::array<std::string_view, 2> kSoDeImpressao{"lmodulo", "logo"};

// Place of a name in its table; the table's size when it is not there.
template <std::size_t N>
constexpr std::size_t indiceDe(const std::array<std::string_view, N> &tabela,
                               std::string_view nome) {
    return static_cast<std::size_t>(std::find(tabela.begin(), tabela.end(), nome) - tabela.begin());
}

// The longest name, without "/".
inline constexpr std::size_t kMaior = 7;

template <std::size_t N>
constexpr bool cabem(const std::array<std::string_view, N> &tabela) {
    return std::all_of(tabela.begin(), tabela.end(),
                       [](std::string_view nome) { return nome.size() <= kMaior; });
}
static_assert(cabem(kDeTexto) && cabem(kDeConteudo) && cabem(kSoDeImpressao));

} // namespace zel::marcas
