// SPDX-License-Identifier: MIT
// Character classes as ASCII has them: never the process locale.
#pragma once

#include <algorithm>
#include <string_view>

namespace zel {

constexpr bool ehDigito(char c) {
    return c >= '0' && c <= '9';
}

// Digits alone, and not empty.
constexpr bool soDigitos(std::string_view texto) {
    return !texto.empty() && std::all_of(texto.begin(), texto.end(), ehDigito);
}

} // namespace zel
