// SPDX-License-Identifier: MIT
// Scrambling with a repeating key: keeps texts from casual eyes, it is no encryption. A scrambled
// text has no header and no check value, so a wrong key gives garbage, never an error. The files
// that are kept so are disco/ArquivoCripto's.
#pragma once

#include <string>
#include <string_view>

namespace zel {

inline constexpr std::string_view kChaveFixa = "rkv804mtq217";

// Scrambled byte i = byte i + key byte + 84 (mod 256), the key taken in turn; an empty key is a
// single zero byte.
std::string embaralhar(std::string_view claro, std::string_view chave);

// The inverse, ending in front of the first byte whose plain value is 0xFF: a plain text with a "ÿ"
// is cut there. Part of the format.
std::string desembaralhar(std::string_view embaralhado, std::string_view chave);

// The plain text of a contingency file's content: all bytes but the last, which is the scrambled
// zero, and at least one when there is any. Does not stop at 0xFF.
std::string fnDescriptBufferContingencia(std::string_view conteudo,
                                         std::string_view chave = kChaveFixa);

} // namespace zel
