// SPDX-License-Identifier: MIT
// The text of a receipt while it is put together. What the receipt's own form says stands in the
// source, mark-up included; everything else is a value out of a document, a return or the
// configuration, and is made harmless on its way in: no mark in it is one to whatever prints the
// text.
#pragma once

#include "texto/Latin1.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace zel {

// A piece of the form, "fixed". None can be made of a text that the program only knows when it
// runs.
class Fixo {
public:
    consteval Fixo(const char *texto) : texto_(texto) {}
    consteval explicit Fixo(std::string_view texto) : texto_(texto) {}
    constexpr std::string_view texto() const { return texto_; }

private:
    std::string_view texto_;
};

// A piece with accents, as "..."_l1.
template <LiteralLatin1 L>
consteval Fixo operator""_fixo() {
    return Fixo(std::string_view(L.bytes, L.tamanho));
}

// Characters by which a value may grow on its way in: the text's size is promised. More marks than
// that lose their "<" to a blank.
inline constexpr std::size_t kMaiorCrescimento = 100;

// The value with a blank after the "<" of every mark, so that it prints as text; every other "<"
// stays. After the hundredth mark the blank takes the place of the "<". What is harmless already is
// not changed.
std::string inofensivo(std::string_view valor);

inline void escreverParte(std::string &cupom, const Fixo &forma) {
    cupom.append(forma.texto());
}
template <std::size_t N>
void escreverParte(std::string &cupom, const char (&literal)[N]) {
    cupom.append(literal, N - 1);
}
inline void escreverParte(std::string &cupom, std::string_view valor) {
    cupom.append(inofensivo(valor));
}

// Appends each of the parts: literals and Fixo as they stand, anything else as a value.
template <class... Partes>
void escrever(std::string &cupom, const Partes &...partes) {
    (escreverParte(cupom, partes), ...);
}

} // namespace zel
