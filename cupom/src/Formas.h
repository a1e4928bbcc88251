// SPDX-License-Identifier: MIT
// What of a page is drawn with rectangles, for every renderer alike. Measures are dots from the
// upper left corner of the paper, margins included.
#pragma once

#include "Pagina.h"

#include <vector>

namespace zel::cupom {

struct Retangulo {
    double x = 0;
    double y = 0;
    double largura = 0;
    double altura = 0;
};

// The dark modules of a QR code, those that touch in a row as one.
std::vector<Retangulo> retangulosDe(const QrPosto &qr, const Papel &papel);

// The dashes of a cut.
std::vector<Retangulo> retangulosDe(const CortePosto &corte, const Papel &papel);

// The line under underlined letters.
Retangulo sublinhadoDe(const TextoPosto &texto, const Papel &papel);

} // namespace zel::cupom
