// SPDX-License-Identifier: MIT
// Scrambling with a repeating key: keeps texts from casual eyes, it is no encryption. A scrambled
// file has no header and no check value, so a wrong key gives garbage, never an error. Owns the
// form of the contingency files and of "ultimadanfe.bin", both under the fixed key.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zel {

inline constexpr std::string_view kChaveFixa = "rkv804mtq217";

inline constexpr std::size_t kMaximoCaminho = 300; // of the paths given to the two file functions
inline constexpr std::size_t kMaximaChave = 1023;

// Scrambled byte i = byte i + key byte + 84 (mod 256), the key taken in turn; an empty key is a
// single zero byte.
std::string embaralhar(std::string_view claro, std::string_view chave);

// The inverse, ending in front of the first byte whose plain value is 0xFF: a plain text with a "ÿ"
// is cut there. Part of the format.
std::string desembaralhar(std::string_view embaralhado, std::string_view chave);

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

// The plain text of a contingency file's content: all bytes but the last, which is the scrambled
// zero, and at least one when there is any. Does not stop at 0xFF.
std::string fnDescriptBufferContingencia(std::string_view conteudo,
                                         std::string_view chave = kChaveFixa);

// Keeps the last receipt in "ultimadanfe.bin" of the data directory, readable by its owner alone.
// ZEL_OK or ZEL_ARQUIVO_INDISPONIVEL.
int fnCriarArquivoCriptUltimaDanfe(std::string_view texto);

// Reads it back into `texto`. ZEL_OK, or ZEL_ARQUIVO_INDISPONIVEL with `texto` unchanged.
int fnLerArquivoCriptUltimaDanfe(std::string &texto);

} // namespace zel
