// SPDX-License-Identifier: MIT
// Files that are kept scrambled (texto/Cripto.h). Owns the form of the contingency files and of
// "ultimadanfe.bin", both under the fixed key.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zel {

inline constexpr std::size_t kMaximoCaminho = 300; // of the paths given to the two file functions
inline constexpr std::size_t kMaximaChave = 1023;

// Scrambles or unscrambles file `origem` into file `destino`, which may be the same one. Paths and
// key are cut to their limits. ZEL_OK, or ZEL_ARQUIVO_INDISPONIVEL when the source cannot be read
// or the target not written.
int fnCriptografarArquivo(std::string_view origem, std::string_view destino,
                          std::string_view chave);
int fnDescriptografarArquivo(std::string_view origem, std::string_view destino,
                             std::string_view chave);

// A contingency file (the name is misspelt and kept) at the path as given: the text and a
// terminating zero byte under the fixed key. ZEL_OK or ZEL_ARQUIVO_INDISPONIVEL.
int fnCriarArquivoContigencia(const std::string &caminho, std::string_view texto);

// Keeps the last receipt in "ultimadanfe.bin" of the data directory, readable by its owner alone.
// ZEL_OK or ZEL_ARQUIVO_INDISPONIVEL.
int fnCriarArquivoCriptUltimaDanfe(std::string_view texto);

// Reads it back into `texto`. ZEL_OK, or ZEL_ARQUIVO_INDISPONIVEL with `texto` unchanged.
int fnLerArquivoCriptUltimaDanfe(std::string &texto);

} // namespace zel
