// SPDX-License-Identifier: MIT
// The plainest steps of a receipt, for a test that is about something else: no consumer, one item
// of 10.00.
#pragma once

#include "apoio/Funcoes.h"

inline int abrirSemConsumidor(const Funcoes &f) {
    return f.aCFAbrir_ZEL("", "", "", "", "", "", "", "", "");
}
inline int venderUm(const Funcoes &f) {
    return f.aCFVender_ZEL("T1800", "1", "10.00", "", "", "1", "UN", "Produto");
}

// From no receipt to a state, 1 opened to 5 closed, by the calls that lead there. The state of the
// last one that succeeded.
inline int avancar(const Funcoes &f, int estado) {
    int (*const passos[])(const Funcoes &) = {
        abrirSemConsumidor,
        venderUm,
        [](const Funcoes &g) { return g.aCFTotalizar_ZEL("", ""); },
        [](const Funcoes &g) { return g.aCFEfetuarPagamento_ZEL("dinheiro", ""); },
        [](const Funcoes &g) { return g.tCFEncerrar_ZEL(""); },
    };
    int feitos = 0;
    while (feitos < estado && passos[feitos](f) == ZEL_OK)
        ++feitos;
    return feitos;
}
