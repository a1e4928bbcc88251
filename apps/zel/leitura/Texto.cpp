// SPDX-License-Identifier: MIT
#include "leitura/Texto.h"
#include "comum/Centavo.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace zel::aplicativo {

namespace {

constexpr std::size_t kMaximoNumero = 18;
constexpr std::size_t kMaximoEnumerado = 5;

char minuscula(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool ehContinuacao(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

bool ehBranco(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// Bytes of the character that begins there, 0 when none does. Overlong forms, surrogates and what
// lies beyond U+10FFFF are none.
std::size_t tamanhoUtf8(std::string_view texto) {
    const auto primeiro = static_cast<unsigned char>(texto.front());
    if (primeiro < 0x80) return 1;
    const std::size_t tamanho = primeiro >= 0xF0 ? 4 : primeiro >= 0xE0 ? 3 : 2;
    if (primeiro < 0xC2 || primeiro > 0xF4 || texto.size() < tamanho) return 0;
    if (!std::all_of(texto.begin() + 1, texto.begin() + static_cast<std::ptrdiff_t>(tamanho),
                     ehContinuacao))
        return 0;
    const auto segundo = static_cast<unsigned char>(texto[1]);
    if (primeiro == 0xE0 && segundo < 0xA0) return 0;
    if (primeiro == 0xED && segundo > 0x9F) return 0;
    if (primeiro == 0xF0 && segundo < 0x90) return 0;
    if (primeiro == 0xF4 && segundo > 0x8F) return 0;
    return tamanho;
}

} // namespace

std::string utf8DeLatin1(std::string_view latin1) {
    std::string utf8;
    utf8.reserve(latin1.size());
    for (const char c : latin1) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            utf8 += c;
            continue;
        }
        utf8 += static_cast<char>(0xC0 | (byte >> 6));
        utf8 += static_cast<char>(0x80 | (byte & 0x3F));
    }
    return utf8;
}

std::optional<std::string> latin1DeUtf8(std::string_view utf8) {
    if (!ehUtf8(utf8)) return {};
    std::string latin1;
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const auto byte = static_cast<unsigned char>(utf8[i]);
        if (byte > 0xC3) return {};
        latin1 += byte < 0x80 ? utf8[i]
                              : static_cast<char>(((byte & 0x03) << 6) |
                                                  (static_cast<unsigned char>(utf8[++i]) & 0x3F));
    }
    return latin1;
}

bool ehUtf8(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::size_t tamanho = tamanhoUtf8(bytes);
        if (tamanho == 0) return false;
        bytes.remove_prefix(tamanho);
    }
    return true;
}

bool ehAscii(std::string_view bytes) {
    return std::all_of(bytes.begin(), bytes.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::size_t comprimento(std::string_view utf8) {
    return utf8.size() -
           static_cast<std::size_t>(std::count_if(utf8.begin(), utf8.end(), ehContinuacao));
}

std::string_view inicio(std::string_view utf8, std::size_t maximo) {
    std::size_t fim = 0;
    for (std::size_t n = 0; fim < utf8.size(); ++fim)
        if (!ehContinuacao(utf8[fim]) && n++ == maximo) break;
    return utf8.substr(0, fim);
}

std::string caracteres(std::size_t quantos) {
    return juntar({std::to_string(quantos), quantos == 1 ? " caractere" : " caracteres"});
}

bool igualSemCaixa(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return minuscula(x) == minuscula(y); });
}

std::string minusculas(std::string_view texto) {
    std::string resultado(texto);
    std::transform(resultado.begin(), resultado.end(), resultado.begin(), minuscula);
    return resultado;
}

std::string semAcentos(std::string_view utf8) {
    // U+00C0 to U+00FF, which UTF-8 writes as C3 and one byte.
    constexpr std::string_view kBases = "AAAAAAACEEEEIIIIDNOOOOO*OUUUUYTs"
                                        "aaaaaaaceeeeiiiidnooooo/ouuuuyty";
    std::string texto;
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const std::size_t letra =
            i + 1 < utf8.size() ? static_cast<unsigned char>(utf8[i + 1]) - 0x80U : kBases.size();
        const bool comAcento = utf8[i] == '\xC3' && letra < kBases.size();
        texto += comAcento ? kBases[letra] : utf8[i];
        if (comAcento) ++i;
    }
    return texto;
}

bool temBrancoNaPonta(std::string_view texto) {
    return !texto.empty() && (ehBranco(texto.front()) || ehBranco(texto.back()));
}

std::string_view aparar(std::string_view texto) {
    while (!texto.empty() && ehBranco(texto.front()))
        texto.remove_prefix(1);
    while (!texto.empty() && ehBranco(texto.back()))
        texto.remove_suffix(1);
    return texto;
}

std::vector<std::string_view> dividir(std::string_view texto, char separador) {
    std::vector<std::string_view> partes;
    for (;;) {
        const std::size_t fim = texto.find(separador);
        partes.push_back(texto.substr(0, fim));
        if (fim == texto.npos) return partes;
        texto.remove_prefix(fim + 1);
    }
}

std::string enumerar(const std::vector<std::string_view> &nomes) {
    std::string texto;
    for (std::size_t i = 0; i < std::min(nomes.size(), kMaximoEnumerado); ++i)
        texto += juntar({i == 0 ? "" : ", ", nomes[i]});
    if (nomes.size() > kMaximoEnumerado)
        texto += juntar({" e mais ", std::to_string(nomes.size() - kMaximoEnumerado)});
    return texto;
}

std::string juntar(std::initializer_list<std::string_view> partes) {
    std::string texto;
    for (const std::string_view parte : partes)
        texto.append(parte);
    return texto;
}

std::string trocar(std::string texto, std::string_view de, std::string_view para) {
    for (std::size_t lugar = 0; (lugar = texto.find(de, lugar)) != texto.npos; lugar += para.size())
        texto.replace(lugar, de.size(), para);
    return texto;
}

bool casaPadrao(std::string_view padrao, std::string_view texto) {
    std::size_t p = 0, t = 0, volta = padrao.npos, resto = 0;
    while (t < texto.size()) {
        if (p < padrao.size() && padrao[p] == '*') {
            volta = p++;
            resto = t;
        } else if (p < padrao.size() &&
                   (padrao[p] == '?' || minuscula(padrao[p]) == minuscula(texto[t]))) {
            ++p;
            ++t;
        } else if (volta != padrao.npos) {
            p = volta + 1;
            t = ++resto;
        } else {
            return false;
        }
    }
    return padrao.find_first_not_of('*', p) == padrao.npos;
}

std::optional<long long> lerInteiro(std::string_view texto) {
    if (!soDigitos(texto) || texto.size() > kMaximoNumero) return {};
    long long valor = 0;
    std::from_chars(texto.data(), texto.data() + texto.size(), valor);
    return valor;
}

std::optional<double> lerDecimal(std::string_view texto) {
    if (texto.size() > kMaximoNumero || std::count(texto.begin(), texto.end(), '.') > 1) return {};
    const auto ehParte = [](char c) { return ehDigito(c) || c == '.'; };
    if (!std::all_of(texto.begin(), texto.end(), ehParte) ||
        std::none_of(texto.begin(), texto.end(), ehDigito))
        return {};
    double valor = 0;
    std::from_chars(texto.data(), texto.data() + texto.size(), valor, std::chars_format::fixed);
    return valor;
}

std::string formatarMoeda(double valor) {
    char bytes[64];
    // What is written as zero has no sign.
    const double sem = std::abs(valor) < kMeioCentavo ? 0.0 : valor;
    const auto fim =
        std::to_chars(bytes, bytes + sizeof bytes, sem, std::chars_format::fixed, 2).ptr;
    return {bytes, fim};
}

} // namespace zel::aplicativo
