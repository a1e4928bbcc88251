// SPDX-License-Identifier: MIT
// Text at the border of the library: UTF-8 on the side of the application, ISO-8859-1 on the other.
// What has no place in ISO-8859-1 is refused by name and place, never replaced unasked.
#pragma once

#include "zel_felbor/tabelas.hpp"
#include "zel_felbor/valores.hpp"

#include <string>
#include <string_view>

namespace zel_felbor {

namespace detalhe {

inline std::string pontoDeCodigo(char32_t c) {
    constexpr std::string_view digitos = "0123456789ABCDEF";
    std::string hexa;
    for (; c != 0 || hexa.size() < 4; c >>= 4)
        hexa.insert(hexa.begin(), digitos[c & 15]);
    return "U+" + hexa;
}

// The bytes of the character at the front of `utf8` and its code point; no bytes when it is no
// UTF-8 (cut short, longer than needed, a surrogate, above U+10FFFF).
inline std::size_t lerCaractere(std::string_view utf8, char32_t &c) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(utf8[i]); };
    const unsigned char guia = byte(0);
    const std::size_t bytes = guia < 0x80   ? 1
                              : guia < 0xC2 ? 0
                              : guia < 0xE0 ? 2
                              : guia < 0xF0 ? 3
                                            : 4;
    if (bytes == 0 || guia > 0xF4 || utf8.size() < bytes) return 0;
    c = bytes == 1 ? guia : guia & (0x7Fu >> bytes);
    for (std::size_t i = 1; i < bytes; ++i) {
        if ((byte(i) & 0xC0u) != 0x80) return 0;
        c = c << 6 | (byte(i) & 0x3Fu);
    }
    const bool curto = (bytes == 3 && c < 0x800) || (bytes == 4 && c < 0x10000);
    return curto || c > 0x10FFFF || (c >= 0xD800 && c < 0xE000) ? 0 : bytes;
}

// The one letter that a letter and the mark after it make; 0 when there is none.
inline char32_t composto(char32_t letra, char32_t marca) {
    for (const Composicao &c : composicoes)
        if (c.letra == letra && c.marca == marca) return c.junta;
    return 0;
}

inline const char *transliterado(char32_t c) {
    for (const Transliteracao &t : transliteracoes)
        if (t.de == c) return t.para;
    return nullptr;
}

} // namespace detalhe

// ISO-8859-1 of an UTF-8 text; letters written in two parts are put together. Refused are
// characters beyond U+00FF, U+0000, and the controls U+0080 to U+009F, which are nearly always
// another character set taken for this one. `transliterar` replaces typographic quotes, dashes,
// ellipses and blanks by plain ones.
inline Conversao paraLatin1(std::string_view argumento, std::string_view utf8, bool transliterar) {
    std::string latin1;
    latin1.reserve(utf8.size());
    std::size_t posicao = 1;
    const auto recusar = [&](const std::string &oque, const char *motivo) {
        return Conversao{"", std::string(argumento) + ": " + oque + " na posição " +
                                 std::to_string(posicao) + motivo};
    };
    for (std::size_t i = 0; i < utf8.size(); ++posicao) {
        char32_t c = 0;
        std::size_t bytes = detalhe::lerCaractere(utf8.substr(i), c);
        if (bytes == 0) return recusar("o byte", " não é UTF-8");
        char32_t marca = 0;
        const std::size_t outros =
            i + bytes < utf8.size() ? detalhe::lerCaractere(utf8.substr(i + bytes), marca) : 0;
        if (const char32_t junta = outros > 0 ? detalhe::composto(c, marca) : 0; junta != 0) {
            c = junta;
            bytes += outros;
        }
        const bool controle = c == 0 || (c >= 0x80 && c < 0xA0);
        if (c < 0x100 && !controle) {
            latin1.push_back(static_cast<char>(c));
        } else if (const char *outro = transliterar ? detalhe::transliterado(c) : nullptr) {
            latin1 += paraLatin1(argumento, outro, false).texto;
        } else {
            const std::string glifo =
                controle ? "" : " \"" + std::string(utf8.substr(i, bytes)) + '"';
            return recusar("o caractere" + glifo + " (" + detalhe::pontoDeCodigo(c) + ")",
                           " não existe em ISO-8859-1");
        }
        i += bytes;
    }
    return {std::move(latin1), ""};
}

inline std::string paraUtf8(std::string_view latin1) {
    std::string utf8;
    utf8.reserve(latin1.size() + latin1.size() / 8);
    for (const char c : latin1) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            utf8.push_back(c);
        } else {
            utf8.push_back(static_cast<char>(0xC0 | byte >> 6));
            utf8.push_back(static_cast<char>(0x80 | (byte & 0x3F)));
        }
    }
    return utf8;
}

} // namespace zel_felbor
