// SPDX-License-Identifier: MIT
// Mechanical text helpers over Latin-1 bytes: character classes and case as ASCII tables of our
// own (never the process locale), trimming, replacing, cutting apart. Pure functions.
#pragma once

#include "comum/Ascii.h"

#include <string>
#include <string_view>
#include <vector>

namespace zel {

constexpr char maiuscula(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

// Equality without regard to ASCII case.
constexpr bool igualSemCaixa(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (maiuscula(a[i]) != maiuscula(b[i])) return false;
    return true;
}

// Upper-case copy (ASCII letters only).
std::string toUpperCase(std::string_view texto);

// True when every character is a digit; also for an empty text.
bool areDigit(std::string_view texto);

// The digits of the text, in order.
std::string fnRetirarCaracter(std::string_view texto);

// Without leading and trailing blanks, every inner run of blanks collapsed into one. Only the
// blank character counts.
std::string trim(std::string_view texto);

// Without leading and trailing blanks.
std::string_view retirarEspacos(std::string_view texto);

// Replaces every occurrence of `de` by `para`, searching on after each replacement.
std::string substituirAll(std::string_view texto, std::string_view de, std::string_view para);

// Cuts the text at `separador` into at most `maximo` pieces; empty pieces are skipped, text after
// the last piece is dropped.
std::vector<std::string_view> split(std::string_view texto, char separador, std::size_t maximo);

} // namespace zel
