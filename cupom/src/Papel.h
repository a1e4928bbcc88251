// SPDX-License-Identifier: MIT
// The papers: how wide they are and how large their letters, in dots of the print head, 8 to the
// millimetre (203 dpi). Letters are the two usual ones of receipt printers, 12 x 24 and 9 x 17
// dots; on the narrow paper, whose 384 dots do not hold 42 of the former, all are of the latter:
// its printers have no smaller ones.
#pragma once

#include "Modelo.h"

#include <array>

namespace zel::cupom {

constexpr int kPontosPorMilimetro = 8;

// One letter's place on the paper, in dots; it stands on a line `base` below its top.
struct Celula {
    int largura = 0;
    int altura = 0;
    int base = 0;

    bool operator==(const Celula &) const = default;
};

struct Papel {
    int colunas = 0;     // normal letters to a line
    int milimetros = 0;  // width of the paper
    int larguraUtil = 0; // dots that can be printed, in the middle of the paper
    Celula normal;
    Celula condensada;
    int passo = 0; // from line to line, for letters of single height

    constexpr int largura() const { return milimetros * kPontosPorMilimetro; }
    constexpr int margem() const { return (largura() - larguraUtil) / 2; }
    // What the letters of a line can fill: whole letters, in the middle of the printed dots.
    constexpr int larguraDoTexto() const { return colunas * normal.largura; }
};

// The first one of a number of columns is the usual one.
constexpr std::array<Papel, 3> kPapeis{{
    {48, 80, 576, {12, 24, 19}, {9, 17, 14}, 28},
    {42, 76, 504, {12, 24, 19}, {9, 17, 14}, 28},
    {42, 58, 384, {9, 17, 14}, {9, 17, 14}, 21},
}};

// The paper of so many columns, `milimetros` wide, 0 for the usual one; null when there is none.
constexpr const Papel *papelDe(int colunas, int milimetros) {
    for (const Papel &papel : kPapeis)
        if (papel.colunas == colunas && (milimetros == 0 || papel.milimetros == milimetros))
            return &papel;
    return nullptr;
}

constexpr Celula celulaDe(const Papel &papel, const Estilo &estilo) {
    Celula celula = estilo.condensado ? papel.condensada : papel.normal;
    if (estilo.larguraDupla) celula.largura *= 2;
    if (estilo.alturaDupla) {
        celula.altura *= 2;
        celula.base *= 2;
    }
    return celula;
}

} // namespace zel::cupom
