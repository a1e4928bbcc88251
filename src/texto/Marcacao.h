// SPDX-License-Identifier: MIT
// Printer mark-up. Receipt texts carry it in angle brackets ("<b>"); inside a document the same
// mark-up travels in square brackets ("[b]"), its representatives. The names are comum/Marcas.h's.
#pragma once

#include <string>
#include <string_view>

namespace zel {

// Every "<" becomes "[" and every ">" becomes "]".
std::string fnRetornarFormatado2Representantes(std::string_view texto);

// Every "[" becomes "<" and every "]" becomes ">".
std::string fnRetornarRepresentantes2Formatado(std::string_view texto);

// Does "<nome>" mean something to whatever prints a receipt? Opening or closing ("/b"), in any
// case: a printing program need not mind it.
bool ehMarca(std::string_view nome);

// The text without its representatives. Tags of one table lose their two markers, those of the
// other lose what stands between them as well; an opening marker that is never closed goes alone. A
// name in neither table, a closing marker without its opening one and a lone "[" stay. Names match
// exactly as the tables write them. Time grows with the length of the text, whatever it holds.
std::string fnRetornarTextoSemRepresentantes(std::string_view texto);

} // namespace zel
