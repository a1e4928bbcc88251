// SPDX-License-Identifier: MIT
// What the log may show of what an application gives: on one line, short, without secrets, and
// without what identifies a person.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zel {

inline constexpr std::size_t kMaiorDado = 40; // bytes shown

// `dado` (ISO-8859-1, perhaps only the beginning of `tamanho` bytes) of the field or key `campo`,
// in quotes and UTF-8; "vazio" without any. Of a CPF or CNPJ three digits are shown, of names,
// addresses and free texts the first character, of a token nothing.
std::string mostrarDado(std::string_view campo, std::string_view dado, std::size_t tamanho);

// A text from outside the library on one line in UTF-8: control bytes as "\n" or "\x1B".
std::string emUmaLinha(std::string_view latin1);

// The same for a path: bytes that are UTF-8 stay so, others are ISO-8859-1.
std::string caminhoEmUmaLinha(std::string_view caminho);

} // namespace zel
