// SPDX-License-Identifier: MIT
#include "texto/Acentuacao.h"

#include <array>
#include <cstddef>

namespace zel {

namespace {

constexpr char kEscape = '\x1B';
constexpr std::size_t kTamanhoEscape = 3;

struct Faixa {
    unsigned char primeiro;
    unsigned char ultimo;
    char letra;
};

// The accented letters of ISO/IEC 8859-1:1998, by their codes. Which of them become plain is the
// till's own convention.
constexpr Faixa kFaixas[] = {
    {0xE0, 0xE4, 'a'}, {0xAA, 0xAA, 'a'}, {0xF2, 0xF6, 'o'}, {0xBA, 0xBA, 'o'}, {0xC0, 0xC4, 'A'},
    {0xC7, 0xC7, 'C'}, {0xC8, 0xCB, 'E'}, {0xCC, 0xCF, 'I'}, {0xD2, 0xD6, 'O'}, {0xD9, 0xDC, 'U'},
    {0xE7, 0xE7, 'c'}, {0xE8, 0xEB, 'e'}, {0xEC, 0xEF, 'i'}, {0xF9, 0xFC, 'u'},
};

constexpr std::array<char, 256> kSemAcento = []() {
    std::array<char, 256> mapa{};
    for (std::size_t i = 0; i < mapa.size(); ++i)
        mapa[i] = static_cast<char>(i);
    for (const auto &faixa : kFaixas)
        for (std::size_t i = faixa.primeiro; i <= faixa.ultimo; ++i)
            mapa[i] = faixa.letra;
    return mapa;
}();

} // namespace

std::string fnRetiraAcentuacao(std::string_view texto) {
    std::string resultado(texto);
    std::size_t escape = 0; // bytes of an escape sequence still to come
    for (char &c : resultado) {
        if (escape == 0 && c == kEscape) escape = kTamanhoEscape;
        if (escape > 0) {
            c = ' ';
            --escape;
        } else {
            c = kSemAcento[static_cast<unsigned char>(c)];
        }
    }
    return resultado;
}

std::string fnAdequarCaracteres(std::string_view xml) {
    constexpr std::string_view kUf = "<UF>";
    const std::size_t uf = xml.find(kUf);
    const bool exige = uf != xml.npos && xml.substr(uf + kUf.size()).starts_with("MT");
    return exige ? fnRetiraAcentuacao(xml) : std::string(xml);
}

} // namespace zel
