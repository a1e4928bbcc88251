// SPDX-License-Identifier: MIT
// What a printer says of itself, asked by a real-time command of its family.
#pragma once

#include "Espera.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zel::cupom {

enum class Estado { kNaoDisse, kPronta, kSemPapel, kTampaAberta, kForaDeLinha };

// A command, and what it means when one of those bits is set in that byte of the answer.
struct PerguntaDeEstado {
    std::string_view comando;
    std::size_t byte;
    std::uint8_t bits;
    Estado estado;
};

// An answer begins with a byte of which the bits of the mask have that value; others are reports
// that nobody asked for. Questions in the order in which they explain why a printer does not print.
struct FamiliaDeEstado {
    std::string_view nome; // in profiles
    std::uint8_t mascara;
    std::uint8_t valor;
    std::array<PerguntaDeEstado, 3> perguntas;
};

// ESC/POS: DLE EOT 4, 2 and 1 answer a byte 0xx1xx10 each. Star: ESC ACK SOH answers the automatic
// status, seven bytes or more, the first of which counts them.
constexpr std::array<FamiliaDeEstado, 2> kFamiliasDeEstado{{
    {"escpos",
     0x93,
     0x12,
     {{{"\x10\x04\x04", 0, 0x60, Estado::kSemPapel},
       {"\x10\x04\x02", 0, 0x04, Estado::kTampaAberta},
       {"\x10\x04\x01", 0, 0x08, Estado::kForaDeLinha}}}},
    {"star",
     0x91,
     0x01,
     {{{"\x1B\x06\x01", 5, 0x08, Estado::kSemPapel},
       {"\x1B\x06\x01", 2, 0x20, Estado::kTampaAberta},
       {"\x1B\x06\x01", 2, 0x08, Estado::kForaDeLinha}}}},
}};

// Asks through a descriptor that does not block. kNaoDisse when there is no answer within a part of
// the time, half a second at most: many connections go one way only.
Estado perguntarEstado(int fd, const FamiliaDeEstado &familia, const Prazo &prazo);

} // namespace zel::cupom
