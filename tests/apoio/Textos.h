// SPDX-License-Identifier: MIT
// Texts of tests: whether one holds another, and texts made of others.
#pragma once

#include <gtest/gtest.h>
#include <string>
#include <string_view>

// A failure shows both.
inline testing::AssertionResult contem(std::string_view texto, std::string_view parte) {
    const bool achada = texto.find(parte) != texto.npos;
    return (achada ? testing::AssertionSuccess() : testing::AssertionFailure())
           << '"' << parte << "\" in:\n"
           << texto;
}

inline testing::AssertionResult contemTodas(std::string_view texto,
                                            std::initializer_list<std::string_view> partes) {
    for (const std::string_view parte : partes)
        if (const auto achada = contem(texto, parte); !achada) return achada;
    return testing::AssertionSuccess();
}

// The text with its first `de`, which must be there, replaced.
inline std::string trocar(std::string texto, std::string_view de, std::string_view para) {
    const std::size_t onde = texto.find(de);
    EXPECT_NE(onde, texto.npos) << de;
    return onde == texto.npos ? texto : texto.replace(onde, de.size(), para);
}

inline std::string repetir(std::string_view parte, int vezes) {
    std::string texto;
    for (int i = 0; i < vezes; ++i)
        texto += parte;
    return texto;
}
