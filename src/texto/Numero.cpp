// SPDX-License-Identifier: MIT
#include "texto/Numero.h"

#include "texto/Texto.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace zel {

namespace {

struct Prefixo {
    bool negativo = false;
    std::string_view digitos; // digits and, for decimals, at most one point
};

Prefixo lerPrefixo(std::string_view texto, bool comPonto) {
    Prefixo prefixo;
    texto.remove_prefix(std::min(texto.find_first_not_of(' '), texto.size()));
    if (!texto.empty() && (texto.front() == '-' || texto.front() == '+')) {
        prefixo.negativo = texto.front() == '-';
        texto.remove_prefix(1);
    }
    std::size_t fim = 0;
    while (fim < texto.size() && (ehDigito(texto[fim]) || (comPonto && texto[fim] == '.'))) {
        if (texto[fim] == '.') comPonto = false;
        ++fim;
    }
    prefixo.digitos = texto.substr(0, fim);
    return prefixo;
}

} // namespace

double lerDecimal(std::string_view texto) {
    const Prefixo prefixo = lerPrefixo(texto, true);
    double valor = 0;
    const char *fim = prefixo.digitos.data() + prefixo.digitos.size();
    const auto [_, erro] =
        std::from_chars(prefixo.digitos.data(), fim, valor, std::chars_format::fixed);
    if (erro == std::errc::result_out_of_range) {
        // Hundreds of digits in front of the point: a bound that no field of a document can hold,
        // never infinity. Hundreds of zeros after it: zero.
        const std::string_view inteiros = prefixo.digitos.substr(0, prefixo.digitos.find('.'));
        valor = inteiros.find_first_not_of('0') == inteiros.npos
                    ? 0
                    : std::numeric_limits<double>::max();
    }
    return prefixo.negativo ? -valor : valor;
}

long long lerInteiro(std::string_view texto) {
    const Prefixo prefixo = lerPrefixo(texto, false);
    long long valor = 0;
    const char *fim = prefixo.digitos.data() + prefixo.digitos.size();
    const auto [_, erro] = std::from_chars(prefixo.digitos.data(), fim, valor);
    if (erro == std::errc::result_out_of_range) valor = std::numeric_limits<long long>::max();
    return prefixo.negativo ? -valor : valor;
}

std::string formatarDecimal(double valor, int casas) {
    // The longest double has 309 digits before the point.
    std::array<char, 352> texto;
    const auto [fim, erro] = std::to_chars(texto.data(), texto.data() + texto.size(), valor,
                                           std::chars_format::fixed, casas);
    if (erro != std::errc{}) return {};
    const bool negativo = texto.front() == '-';
    const bool ehZero = std::all_of(texto.data() + (negativo ? 1 : 0), fim,
                                    [](char c) { return c == '0' || c == '.'; });
    return std::string(texto.data() + (negativo && ehZero ? 1 : 0), fim);
}

std::string formatarInteiro(long long valor, int largura) {
    std::array<char, 24> texto;
    const auto [fim, _] = std::to_chars(texto.data(), texto.data() + texto.size(), valor);
    std::string digitos(texto.data(), fim);
    const std::size_t sinal = valor < 0 ? 1 : 0;
    if (const auto falta = largura - static_cast<int>(digitos.size()); falta > 0)
        digitos.insert(sinal, static_cast<std::size_t>(falta), '0');
    return digitos;
}

std::string trocarVirgula(std::string_view texto) {
    std::string resultado(texto);
    if (const std::size_t virgula = texto.find(','); virgula != texto.npos)
        resultado[virgula] = '.';
    return resultado;
}

std::string fnZerosLeft(std::string_view texto, std::size_t largura) {
    const std::size_t falta = texto.size() < largura ? largura - texto.size() : 0;
    return std::string(falta, '0').append(texto);
}

std::string fnRetirarZerosLeft(std::string_view texto) {
    while (texto.size() > 1 && texto[0] == '0' && texto[1] != '.')
        texto.remove_prefix(1);
    return std::string(texto);
}

bool ehDecimalPuro(std::string_view texto) {
    const auto digitos = std::count_if(texto.begin(), texto.end(), ehDigito);
    const auto pontos = std::count(texto.begin(), texto.end(), '.');
    return digitos > 0 && pontos <= 1 && static_cast<std::size_t>(digitos + pontos) == texto.size();
}

double arredondarOuTruncar(double valor, bool truncar) {
    if (truncar) return std::trunc(valor * 100) / 100;
    return emCentavos(valor);
}

} // namespace zel
