// SPDX-License-Identifier: MIT
// QR code symbols of ISO/IEC 18004: error correction M, byte mode, the smallest version that holds
// the content.
#pragma once

#include "Papel.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace zel::cupom {

// A square of modules, row by row, 1 for dark; the quiet zone around it is not included.
struct SimboloQr {
    int lado = 0;
    std::vector<std::uint8_t> modulos;

    bool escuro(int linha, int coluna) const {
        return modulos[static_cast<std::size_t>(linha * lado + coluna)] != 0;
    }
};

// Blank modules that must surround a symbol (ISO/IEC 18004:2015, 9.1).
constexpr int kZonaQuieta = 4;

// Dots of a side, without the quiet zone, that a receipt's code has at least: 25 mm.
constexpr int kMenorLadoDoQr = 25 * kPontosPorMilimetro;

// Dots of a module's side, of a symbol with `lado` modules: those that were asked for, more of them
// where the symbol would be smaller than `menorLado` dots, fewer where it would be wider, with its
// quiet zone, than `largura`; 1 when even those do not fit.
int moduloDoQr(int lado, int pedido, int menorLado, int largura);

// The modules of a side of the symbol of so many bytes, 1 to kMaiorQr.
int ladoDoQr(std::size_t bytes);

// The symbol of 1 to kMaiorQr bytes of any value. Throws std::bad_alloc when memory is short.
SimboloQr gerarQr(std::string_view conteudo);

} // namespace zel::cupom
