// SPDX-License-Identifier: MIT
// Texts and numbers. Within the command every text is UTF-8; what comes from the library's files
// and goes to its functions is ISO-8859-1. Pure functions; case is that of ASCII.
#pragma once

#include "comum/Ascii.h"

#include <cstddef>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zel::aplicativo {

std::string utf8DeLatin1(std::string_view latin1);
// None when a character does not exist in ISO-8859-1, or the text is no UTF-8.
std::optional<std::string> latin1DeUtf8(std::string_view utf8);

// Well-formed UTF-8; plain ASCII is.
bool ehUtf8(std::string_view bytes);
bool ehAscii(std::string_view bytes);

// Length of a UTF-8 text in characters, and its first `maximo` characters.
std::size_t comprimento(std::string_view utf8);
std::string_view inicio(std::string_view utf8, std::size_t maximo);

// "1 caractere", "2 caracteres".
std::string caracteres(std::size_t quantos);

bool igualSemCaixa(std::string_view a, std::string_view b);
std::string minusculas(std::string_view texto);
std::string semAcentos(std::string_view utf8); // of ISO-8859-1; other characters stay
bool temBrancoNaPonta(std::string_view texto);
std::string_view aparar(std::string_view texto);

// The parts between the separators; an empty text is one empty part.
std::vector<std::string_view> dividir(std::string_view texto, char separador);

// "a, b, c e mais 7": the first few names, and how many more there are.
std::string enumerar(const std::vector<std::string_view> &nomes);

std::string juntar(std::initializer_list<std::string_view> partes);
std::string trocar(std::string texto, std::string_view de, std::string_view para);

// Whether the text is a pattern's: "*" stands for any characters, "?" for one, letters in any case.
bool casaPadrao(std::string_view padrao, std::string_view texto);

// A whole number of up to 18 digits, without a sign; none for anything else.
std::optional<long long> lerInteiro(std::string_view texto);
// Digits with at most one point and at most 18 characters; none for anything else.
std::optional<double> lerDecimal(std::string_view texto);
std::string formatarMoeda(double valor);

} // namespace zel::aplicativo
