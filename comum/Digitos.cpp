// SPDX-License-Identifier: MIT
#include "comum/Digitos.h"

#include "comum/Ascii.h"
#include "comum/ChaveAcesso.h"

#include <algorithm>
#include <cstddef>

namespace zel {

namespace {

// Codes that the IBGE gave with a check digit that does not follow its rule.
constexpr std::string_view kMunicipiosForaDaRegra[] = {
    "2201919", "2201988", "2202251", "2611533", "3117836",
    "3152131", "4305871", "5203939", "5203962",
};

int valorDe(char c) {
    return ehDigito(c) ? c - '0' : c - 'A' + 10;
}

// Modulo 11: a remainder of 0 or 1 gives 0.
char digitoModulo11(std::string_view digitos, std::string_view pesos) {
    const int resto = restoPonderado(digitos, pesos);
    return static_cast<char>(resto < 2 ? '0' : '0' + 11 - resto);
}

bool todosIguais(std::string_view texto) {
    return texto.find_first_not_of(texto.front()) == texto.npos;
}

// The digits end with two check digits, the second of which counts the first one.
bool terminaComDois(std::string_view texto, std::string_view pesosDoSegundo) {
    const std::size_t n = texto.size() - 2;
    return texto[n] == digitoModulo11(texto.substr(0, n), pesosDoSegundo.substr(1)) &&
           texto[n + 1] == digitoModulo11(texto.substr(0, n + 1), pesosDoSegundo);
}

bool saoDigitos(std::string_view texto, std::size_t quantos) {
    return texto.size() == quantos && soDigitos(texto);
}

} // namespace

int restoPonderado(std::string_view digitos, std::string_view pesos) {
    int soma = 0;
    for (std::size_t i = 0; i < std::min(digitos.size(), pesos.size()); ++i)
        soma += (digitos[i] - '0') * valorDe(pesos[i]);
    return soma % 11;
}

bool ehCnpj(std::string_view texto) {
    return saoDigitos(texto, 14) && !todosIguais(texto) && terminaComDois(texto, "6543298765432");
}

bool ehCpf(std::string_view texto) {
    return saoDigitos(texto, 11) && !todosIguais(texto) && terminaComDois(texto, "BA98765432");
}

bool ehMunicipio(std::string_view texto) {
    if (!saoDigitos(texto, 7)) return false;
    if (std::find(std::begin(kMunicipiosForaDaRegra), std::end(kMunicipiosForaDaRegra), texto) !=
        std::end(kMunicipiosForaDaRegra))
        return true;
    int soma = 0;
    for (std::size_t i = 0; i < 6; ++i) {
        const int produto = (texto[i] - '0') * (i % 2 == 0 ? 1 : 2);
        soma += produto / 10 + produto % 10;
    }
    return texto[6] - '0' == (10 - soma % 10) % 10;
}

// GS1 General Specifications, "Check digit calculation".
bool ehGtin(std::string_view texto) {
    constexpr std::size_t kTamanhos[] = {8, 12, 13, 14};
    if (std::find(std::begin(kTamanhos), std::end(kTamanhos), texto.size()) ==
            std::end(kTamanhos) ||
        !soDigitos(texto))
        return false;
    int soma = 0;
    for (std::size_t i = 0; i + 1 < texto.size(); ++i)
        soma += (texto[i] - '0') * ((texto.size() - i) % 2 == 0 ? 3 : 1);
    return texto.back() - '0' == (10 - soma % 10) % 10;
}

// Chapters 01 to 97 of the Harmonized System (WCO, 1988), of which 77 is kept for later use.
bool ehNcm(std::string_view texto) {
    if (!saoDigitos(texto, 8)) return false;
    const std::string_view capitulo = texto.substr(0, 2);
    return capitulo >= "01" && capitulo <= "97" && capitulo != "77" && texto.substr(2, 2) != "00";
}

bool ehChaveIntegra(std::string_view texto) {
    const auto chave = ChaveAcesso::ler(texto);
    return chave && chave->integra();
}

} // namespace zel
