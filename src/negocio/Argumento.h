// SPDX-License-Identifier: MIT
// Texts of the flat interface on their way into a section: plain characters, bounded, or refused.
// Every rule here counts characters of the plain text, a reference as the one it stands for.
#pragma once

#include "secao/Tag.h"
#include "texto/TextoXml.h"

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

namespace zel {

// The plain text, cut to `maximo` characters.
std::string argumentoCortado(std::string_view argumento, std::size_t maximo);

// The plain text when it has `minimo` to `maximo` characters; an empty one otherwise, for a text
// that does not fit is left out, never cut.
std::string argumentoAceito(std::string_view argumento, std::size_t minimo, std::size_t maximo);

// Decimal text of at most 15 characters with the comma as a point, without blanks around it.
std::string argumentoDecimal(std::string_view argumento);

// The element that a document of that many characters is written as: "CPF" up to 11, "CNPJ" from 13
// on, none for 12 or an empty one.
std::string_view cpfOuCnpj(std::size_t caracteres);

// An argument by its name in the header.
struct Argumento {
    std::string_view nome, texto;
};

// 1, or -99 for the first one that is empty, or null.
int exigirTextos(std::initializer_list<Argumento> argumentos);

// 1, or -99 for the first one that is null, which the frames hand on as a view without data.
int recusarNulos(std::initializer_list<Argumento> argumentos);

// -99: a number below zero.
int recusarNegativo(std::string_view nome, std::string_view texto);

// Appends the element when the plain text is not empty.
void juntarSeAceito(ST_tagZEL &grupo, std::string_view nome, std::string_view simples);

} // namespace zel
