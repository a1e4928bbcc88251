// SPDX-License-Identifier: MIT
// The lines of a receipt: texts put one after the other, and fields of a fixed width.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zel {

// Appends each of the texts.
template <class... Partes>
void anexar(std::string &saida, const Partes &...partes) {
    (saida.append(std::string_view(partes)), ...);
}

// The text with blanks after it up to `largura` characters; a longer one stays whole ("%-*s").
inline std::string aEsquerda(std::string_view texto, std::size_t largura) {
    const std::size_t falta = texto.size() < largura ? largura - texto.size() : 0;
    return std::string(texto).append(falta, ' ');
}

// The text with blanks in front of it ("%*s").
inline std::string aDireita(std::string_view texto, std::size_t largura) {
    const std::size_t falta = texto.size() < largura ? largura - texto.size() : 0;
    return std::string(falta, ' ').append(texto);
}

} // namespace zel
