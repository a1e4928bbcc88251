// SPDX-License-Identifier: MIT
#include "base/Texto.h"

#include "base/Xml.h"
#include "comum/Ascii.h"

#include <algorithm>
#include <chrono>

namespace zel::envio {

namespace {

constexpr bool ehBranco(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// Digits alone, and their number up to a limit; below 0 otherwise.
int numeroAte(std::string_view digitos, int maximo) {
    if (!soDigitos(digitos)) return -1;
    int valor = 0;
    for (const char c : digitos)
        valor = valor * 10 + (c - '0');
    return valor <= maximo ? valor : -1;
}

bool ehHora(std::string_view texto) {
    return texto.size() == 8 && texto[2] == ':' && texto[5] == ':' &&
           numeroAte(texto.substr(0, 2), 23) >= 0 && numeroAte(texto.substr(3, 2), 59) >= 0 &&
           numeroAte(texto.substr(6, 2), 59) >= 0;
}

bool ehFuso(std::string_view texto) {
    return texto.size() == 6 && texto.ends_with(":00") &&
           ((texto[0] == '-' && numeroAte(texto.substr(1, 2), 11) >= 0) ||
            (texto[0] == '+' && numeroAte(texto.substr(1, 2), 12) >= 0));
}

} // namespace

std::string aparar(std::string_view texto) {
    std::string limpo;
    bool branco = false;
    for (const char c : texto) {
        if (ehBranco(c)) {
            branco = !limpo.empty();
            continue;
        }
        if (branco) limpo += ' ';
        branco = false;
        limpo += c;
    }
    return limpo;
}

std::size_t caracteres(std::string_view utf8) {
    return static_cast<std::size_t>(std::count_if(utf8.begin(), utf8.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    }));
}

bool ehTexto(std::string_view utf8, std::size_t minimo, std::size_t maximo) {
    const std::size_t tamanho = caracteres(utf8);
    if (tamanho < minimo || tamanho > maximo || !latin1DeUtf8(utf8)) return false;
    if (!utf8.empty() && (utf8.front() == ' ' || utf8.back() == ' ')) return false;
    return std::none_of(utf8.begin(), utf8.end(),
                        [](unsigned char c) { return c < ' ' || c == 0x7F; });
}

bool ehData(std::string_view texto) {
    if (texto.size() != 10 || texto[4] != '-' || texto[7] != '-') return false;
    const int ano = numeroAte(texto.substr(0, 4), 2099), mes = numeroAte(texto.substr(5, 2), 12),
              dia = numeroAte(texto.substr(8, 2), 31);
    if (ano < 2000 || mes < 1 || dia < 1) return false;
    return std::chrono::year_month_day(std::chrono::year(ano),
                                       std::chrono::month(static_cast<unsigned>(mes)),
                                       std::chrono::day(static_cast<unsigned>(dia)))
        .ok();
}

std::optional<std::int64_t> segundosDoMomento(std::string_view texto) {
    if (!ehMomento(texto)) return {};
    const auto em = [&](std::size_t onde, std::size_t quantos) {
        return numeroAte(texto.substr(onde, quantos), 9999);
    };
    const std::chrono::year_month_day dia(std::chrono::year(em(0, 4)),
                                          std::chrono::month(static_cast<unsigned>(em(5, 2))),
                                          std::chrono::day(static_cast<unsigned>(em(8, 2))));
    const std::int64_t dias = std::chrono::sys_days(dia).time_since_epoch().count();
    const int fuso = em(20, 2) * (texto[19] == '-' ? -1 : 1);
    return ((dias * 24 + em(11, 2) - fuso) * 60 + em(14, 2)) * 60 + em(17, 2);
}

bool ehMomento(std::string_view texto) {
    return texto.size() == 25 && ehData(texto.substr(0, 10)) && texto[10] == 'T' &&
           ehHora(texto.substr(11, 8)) && ehFuso(texto.substr(19));
}

} // namespace zel::envio
