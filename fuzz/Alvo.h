// SPDX-License-Identifier: MIT
// What the fuzz targets share: the input, taken apart, and the check of what must hold.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <string_view>

// What a target does with an input: each defines its own.
void jogar(std::string_view texto);

inline void exigir(bool vale) {
    if (!vale) std::abort();
}

// The first byte of the text as a number below `limite`; it is taken off.
inline int tirarNumero(std::string_view &texto, int limite) {
    if (texto.empty()) return 0;
    const int numero = static_cast<unsigned char>(texto.front()) % limite;
    texto.remove_prefix(1);
    return numero;
}

// What stands before the first `separador`, which goes with it; everything when there is none.
inline std::string_view tirarAte(std::string_view &texto, char separador) {
    const std::string_view parte = texto.substr(0, texto.find(separador));
    texto.remove_prefix(std::min(parte.size() + 1, texto.size()));
    return parte;
}
