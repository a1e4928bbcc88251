// SPDX-License-Identifier: MIT
// Where each thing of a receipt stands on its paper: the one place that decides it, for every
// renderer that draws dots. Measures are dots from the upper left corner of what can be printed
// (the margins of the paper are outside).
#pragma once

#include "Modelo.h"
#include "Papel.h"
#include "Qr.h"

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace zel::cupom {

// Letters of one style in one line of the paper: the first one begins at `x`, each is a cell wide.
struct TextoPosto {
    int x = 0;
    int base = 0; // the line on which the letters stand
    Celula celula;
    Estilo estilo;
    std::string texto;
};

// The symbol without its quiet zone, which is left free around it.
struct QrPosto {
    int x = 0;
    int y = 0;
    int modulo = 0;
    SimboloQr simbolo;
};

struct LogotipoPosto {
    int x = 0;
    int y = 0;
};

// A dashed line over the whole width of the paper, margins included.
struct CortePosto {
    int y = 0;
};

struct Elemento {
    int topo = 0; // nothing of it stands above, or from `fim` on below
    int fim = 0;
    std::variant<TextoPosto, QrPosto, LogotipoPosto, CortePosto> desenho;
};

// Elements in the order of their tops, none of them beyond `altura`.
struct Pagina {
    Papel papel;
    int altura = 0;
    std::vector<Elemento> elementos;
};

// Size of the logo on the paper in dots; without a logo both are 0.
struct TamanhoLogotipo {
    int largura = 0;
    int altura = 0;
};

constexpr int kMaiorAltura = 50'000 * kPontosPorMilimetro;

// Lays a receipt out; none when it needs more paper than kMaiorAltura. The logo must not be wider
// than the paper's `larguraUtil`.
std::optional<Pagina> paginar(const Cupom &cupom, const Papel &papel, TamanhoLogotipo logotipo);

} // namespace zel::cupom
