// SPDX-License-Identifier: MIT
// Text literals in ISO-8859-1. Sources are UTF-8, the library speaks Latin-1 at every border:
// "ção"_l1 is turned into Latin-1 bytes at compile time, so every compiler writes the same bytes.
#pragma once

#include <cstddef>
#include <string_view>

namespace zel {

template <std::size_t N>
struct LiteralLatin1 {
    char bytes[N]{};
    std::size_t tamanho = 0;

    // A character beyond U+00FF does not exist in Latin-1 and stops the compilation.
    consteval LiteralLatin1(const char (&utf8)[N]) {
        for (std::size_t i = 0; i + 1 < N; ++i) {
            const auto byte = static_cast<unsigned char>(utf8[i]);
            if (byte < 0x80) {
                bytes[tamanho++] = utf8[i];
                continue;
            }
            if (byte != 0xC2 && byte != 0xC3) throw "character outside ISO-8859-1";
            const auto resto = static_cast<unsigned char>(utf8[++i]);
            bytes[tamanho++] = static_cast<char>(((byte & 0x03) << 6) | (resto & 0x3F));
        }
    }
};

template <LiteralLatin1 L>
consteval std::string_view operator""_l1() {
    return {L.bytes, L.tamanho};
}

} // namespace zel
