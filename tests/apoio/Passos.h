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
