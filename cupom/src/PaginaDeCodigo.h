// SPDX-License-Identifier: MIT
// The code pages of printers: which byte prints an ISO-8859-1 character, and which plain letter
// stands in for it where the page has none.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zel::cupom {

// By character from 0xA0 to 0xFF; 0 where the page lacks it.
using BytesDaPagina = std::array<std::uint8_t, 96>;

struct PaginaDeCodigo {
    std::string_view nome; // in the printer-profile databases
    const BytesDaPagina *bytes;
};

// ISO-8859-1 itself, and CP1252, which has the same characters from 0xA0 on.
constexpr BytesDaPagina kLatin1 = []() {
    BytesDaPagina bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<std::uint8_t>(0xA0 + i);
    return bytes;
}();

// CP850; CP858 differs in a character that ISO-8859-1 does not have.
constexpr BytesDaPagina kCp850{
    0xFF, 0xAD, 0xBD, 0x9C, 0xCF, 0xBE, 0xDD, 0xF5, 0xF9, 0xB8, 0xA6, 0xAE, 0xAA, 0xF0, 0xA9, 0xEE,
    0xF8, 0xF1, 0xFD, 0xFC, 0xEF, 0xE6, 0xF4, 0xFA, 0xF7, 0xFB, 0xA7, 0xAF, 0xAC, 0xAB, 0xF3, 0xA8,
    0xB7, 0xB5, 0xB6, 0xC7, 0x8E, 0x8F, 0x92, 0x80, 0xD4, 0x90, 0xD2, 0xD3, 0xDE, 0xD6, 0xD7, 0xD8,
    0xD1, 0xA5, 0xE3, 0xE0, 0xE2, 0xE5, 0x99, 0x9E, 0x9D, 0xEB, 0xE9, 0xEA, 0x9A, 0xED, 0xE8, 0xE1,
    0x85, 0xA0, 0x83, 0xC6, 0x84, 0x86, 0x91, 0x87, 0x8A, 0x82, 0x88, 0x89, 0x8D, 0xA1, 0x8C, 0x8B,
    0xD0, 0xA4, 0x95, 0xA2, 0x93, 0xE4, 0x94, 0xF6, 0x9B, 0x97, 0xA3, 0x96, 0x81, 0xEC, 0xE7, 0x98,
};

constexpr BytesDaPagina kCp860{
    0xFF, 0xAD, 0x9B, 0x9C, 0,    0,    0, 0,    0,    0,    0xA6, 0xAE, 0xAA, 0,    0, 0,
    0xF8, 0xF1, 0xFD, 0,    0,    0xE6, 0, 0xFA, 0,    0,    0xA7, 0xAF, 0xAC, 0xAB, 0, 0xA8,
    0x91, 0x86, 0x8F, 0x8E, 0,    0,    0, 0x80, 0x92, 0x90, 0x89, 0,    0x98, 0x8B, 0, 0,
    0,    0xA5, 0xA9, 0x9F, 0x8C, 0x99, 0, 0,    0,    0x9D, 0x96, 0,    0x9A, 0,    0, 0xE1,
    0x85, 0xA0, 0x83, 0x84, 0,    0,    0, 0x87, 0x8A, 0x82, 0x88, 0,    0x8D, 0xA1, 0, 0,
    0,    0xA4, 0x95, 0xA2, 0x93, 0x94, 0, 0xF6, 0,    0x97, 0xA3, 0,    0x81, 0,    0, 0,
};

constexpr std::array<PaginaDeCodigo, 5> kPaginasDeCodigo{{
    {"CP850", &kCp850},
    {"CP858", &kCp850},
    {"CP860", &kCp860},
    {"CP1252", &kLatin1},
    {"ISO_8859-1", &kLatin1},
}};

// By character from 0xA0 to 0xFF: one plain letter or sign for each, so that columns stay columns.
constexpr std::string_view kLetrasSimples = " !cL$Y|S\"Ca<--R-"
                                            "o+23'uP.,1o>???\?"
                                            "AAAAAAACEEEEIIII"
                                            "DNOOOOOxOUUUUYPB"
                                            "aaaaaaaceeeeiiii"
                                            "dnooooo/ouuuuypy";
static_assert(kLetrasSimples.size() == 96);

// The byte that prints `c`, which is no control character.
constexpr char byteDe(const PaginaDeCodigo &pagina, char c) {
    const auto codigo = static_cast<unsigned char>(c);
    if (codigo < 0xA0) return c;
    const std::uint8_t byte = (*pagina.bytes)[codigo - 0xA0U];
    return byte != 0 ? static_cast<char>(byte) : kLetrasSimples[codigo - 0xA0U];
}

} // namespace zel::cupom
