// SPDX-License-Identifier: MIT
// Breaking and centring texts for a print column width. Lines end with "\n"; the words of a text
// are not looked at.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zel {

// Breaks lines after every `largura` characters; one of exactly `largura` + 1 still stays whole. In
// a text that has line ends already, what stands after the last of them is never broken. A width
// of 0 breaks nothing. ("Quebra", spelt so.)
std::string fnQuabraLinhaLayout(std::string_view texto, std::size_t largura);

// Breaks the text in the same way and puts (largura - length) / 2 blanks, at most 99, in front of
// each line. Nothing after a last "\n" is no line.
std::string fnCentralizarLayout(std::string_view texto, std::size_t largura);

} // namespace zel
