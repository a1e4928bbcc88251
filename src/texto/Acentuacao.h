// SPDX-License-Identifier: MIT
// Latin-1 letters without their accents, for the states whose services take plain letters only and
// for comparing names as people type them.
#pragma once

#include <string>
#include <string_view>

namespace zel {

// Accented letters and the two ordinal signs become plain letters; "Ñ", "ñ", "Ý", "ý" and "ÿ" stay.
// An escape byte (0x1B) and the two bytes after it become blanks. The length never changes.
std::string fnRetiraAcentuacao(std::string_view texto);

// The document text without accents when its first "<UF>" holds "MT"; otherwise as it is.
std::string fnAdequarCaracteres(std::string_view xml);

} // namespace zel
