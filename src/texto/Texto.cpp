// SPDX-License-Identifier: MIT
#include "texto/Texto.h"

#include <algorithm>

namespace zel {

std::string toUpperCase(std::string_view texto) {
    std::string resultado(texto);
    std::transform(resultado.begin(), resultado.end(), resultado.begin(), maiuscula);
    return resultado;
}

bool areDigit(std::string_view texto) {
    return std::all_of(texto.begin(), texto.end(), ehDigito);
}

std::string fnRetirarCaracter(std::string_view texto) {
    std::string digitos;
    std::copy_if(texto.begin(), texto.end(), std::back_inserter(digitos), ehDigito);
    return digitos;
}

std::string trim(std::string_view texto) {
    std::string resultado;
    for (const char c : retirarEspacos(texto))
        if (c != ' ' || resultado.back() != ' ') resultado.push_back(c);
    return resultado;
}

std::string_view retirarEspacos(std::string_view texto) {
    texto.remove_prefix(std::min(texto.find_first_not_of(' '), texto.size()));
    texto.remove_suffix(texto.size() - (texto.find_last_not_of(' ') + 1));
    return texto;
}

std::string substituirAll(std::string_view texto, std::string_view de, std::string_view para) {
    std::string resultado;
    std::size_t inicio = 0;
    for (std::size_t achado; !de.empty() && (achado = texto.find(de, inicio)) != texto.npos;
         inicio = achado + de.size())
        resultado.append(texto.substr(inicio, achado - inicio)).append(para);
    return resultado.append(texto.substr(inicio));
}

std::vector<std::string_view> split(std::string_view texto, char separador, std::size_t maximo) {
    std::vector<std::string_view> partes;
    while (!texto.empty() && partes.size() < maximo) {
        const std::size_t fim = std::min(texto.find(separador), texto.size());
        if (fim > 0) partes.push_back(texto.substr(0, fim));
        texto.remove_prefix(std::min(fim + 1, texto.size()));
    }
    return partes;
}

} // namespace zel
