// SPDX-License-Identifier: MIT
// Texts on their way into and out of XML: a value is well-formed however the application wrote it,
// and its length is counted in characters, a reference counting as the one it stands for.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zel {

// What becomes of the line ends (CR LF, LF, CR) of a text.
enum class FimDeLinha { kBranco, kMantido };

// The plain characters of a text given by the application or the configuration: the five named
// references and numeric ones within Latin-1 are read as the characters they stand for, control
// bytes below 0x20 are dropped, a tab becomes a blank, a line end a blank or one "\n".
std::string textoSimples(std::string_view texto, FimDeLinha fimDeLinha = FimDeLinha::kBranco);

// Plain characters as an XML value: exactly "&", "<" and ">" become references, and "\n" becomes
// "&#10;" so that a stored record stays on one line.
std::string escaparXml(std::string_view simples);

// An application's text as an XML value in one step.
inline std::string valorXml(std::string_view texto) {
    return escaparXml(textoSimples(texto));
}

// Length in characters of an XML value; "&amp;" counts as one.
std::size_t comprimentoXml(std::string_view valor);

// The first `maximo` characters of an XML value; no reference is cut in two.
std::string_view cortarXml(std::string_view valor, std::size_t maximo);

// The first `maximo` bytes of a text, or fewer where that would cut a reference in two.
std::string_view cortarBytes(std::string_view texto, std::size_t maximo);

} // namespace zel
