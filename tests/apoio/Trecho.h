// SPDX-License-Identifier: MIT
// Pieces of a text: looked for, replaced, repeated.
#pragma once

#include <gtest/gtest.h>

#include <concepts>
#include <string>
#include <string_view>

// How many times the text has the piece.
inline int vezesEm(std::string_view texto, std::string_view trecho) {
    int vezes = 0;
    for (std::size_t i = 0; (i = texto.find(trecho, i)) != texto.npos; i += trecho.size())
        ++vezes;
    return vezes;
}

// The text has the piece; exactly that many times where a number is given. A failure shows both.
inline testing::AssertionResult contem(std::string_view texto, std::string_view trecho,
                                       int vezes = -1) {
    const int tem = trecho.empty() ? 1 : vezesEm(texto, trecho);
    const bool certo = vezes < 0 ? tem > 0 : tem == vezes;
    return (certo ? testing::AssertionSuccess() : testing::AssertionFailure())
           << "\"" << trecho << "\" " << tem << " times in\n"
           << texto;
}

inline testing::AssertionResult contemTodas(std::string_view texto,
                                            std::initializer_list<std::string_view> trechos) {
    for (const std::string_view trecho : trechos)
        if (const auto achado = contem(texto, trecho); !achado) return achado;
    return testing::AssertionSuccess();
}

// What stands between two marks of the text; empty without the first.
inline std::string entre(std::string_view texto, std::string_view antes, std::string_view depois) {
    const std::size_t lugar = texto.find(antes);
    if (lugar == texto.npos) return {};
    texto.remove_prefix(lugar + antes.size());
    return std::string(texto.substr(0, texto.find(depois)));
}

// Replaces the first `de` after `marco`; both must be there.
inline std::string trocar(std::string texto, std::string_view de, std::string_view para,
                          std::string_view marco = "") {
    const std::size_t lugar = texto.find(de, texto.find(marco));
    EXPECT_NE(lugar, texto.npos) << marco << " " << de;
    return lugar == texto.npos ? texto : texto.replace(lugar, de.size(), para);
}

inline std::string repetir(std::string_view trecho, std::integral auto vezes) {
    std::string texto;
    while (vezes-- > 0)
        texto += trecho;
    return texto;
}
