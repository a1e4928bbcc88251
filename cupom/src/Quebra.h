// SPDX-License-Identifier: MIT
// A line of a receipt as lines of the paper, for pictures and printers alike: a line that is too
// long first gives up blanks, and is broken between fields, not inside them, when that is not
// enough.
#pragma once

#include "Modelo.h"

#include <vector>

namespace zel::cupom {

// Widths in one unit, whatever it is: of the line, of a normal and of a condensed letter of single
// width. Double width must fit a line.
struct Medida {
    int linha = 0;
    int normal = 0;
    int condensada = 0;

    int de(const Estilo &estilo) const {
        return (estilo.condensado ? condensada : normal) * (estilo.larguraDupla ? 2 : 1);
    }
};

// What fits is left as it is. Otherwise blanks are taken, those at the end first, then one by one
// from the widest gap, as long as a blank is left between fields (of those before the first one
// none need be). If that does not make the line fit, it is broken at the widest gap up to which it
// does, at the last one of those that are as wide; the gap is not printed, and the rest goes on in
// the same way. Where there is no gap it is broken where it is full.
std::vector<Linha> quebrar(const Linha &linha, const Medida &medida);

} // namespace zel::cupom
