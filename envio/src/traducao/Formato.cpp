// SPDX-License-Identifier: MIT
#include "traducao/Formato.h"

#include "base/Decimal.h"
#include "base/Texto.h"
#include "comum/Ascii.h"
#include "comum/Digitos.h"
#include "comum/Estados.h"

#include <algorithm>

namespace zel::envio {

namespace {

constexpr std::string_view kEntreDigitos = "./- ";
constexpr std::string_view kInicioDoCfop = "123567"; // TCfop
constexpr std::string_view kExterior = "9999999";    // cMun of an address abroad

std::string semPontuacao(std::string_view valor) {
    std::string limpo(valor);
    std::erase_if(limpo, [](char c) { return kEntreDigitos.find(c) != kEntreDigitos.npos; });
    return limpo;
}

std::optional<std::string> quando(bool certo, const std::string &valor) {
    return certo ? std::optional(valor) : std::nullopt;
}

bool ehUmDe(std::string_view valores, std::string_view valor) {
    while (!valores.empty()) {
        const std::size_t fim = std::min(valores.find(' '), valores.size());
        if (valores.substr(0, fim) == valor) return true;
        valores.remove_prefix(std::min(fim + 1, valores.size()));
    }
    return false;
}

// "2.5000" stays, "10." becomes 10.00, ".5" becomes 0.5.
int casasEscritas(std::string_view valor) {
    const std::size_t ponto = valor.find('.');
    if (ponto == valor.npos) return 0;
    const auto casas = static_cast<int>(valor.size() - ponto - 1);
    return casas == 0 ? 2 : casas;
}

std::optional<std::string> numero(const Formato &formato, std::string_view valor) {
    const auto lido = Decimal::ler(valor);
    if (!lido) return {};
    const int casas =
        formato.minimo > 0 ? formato.minimo : std::min(casasEscritas(valor), formato.maximo);
    return lido->texto(casas, formato.maximo, formato.inteiros);
}

bool cabe(const Formato &formato, std::string_view limpo) {
    return ehTexto(limpo, static_cast<std::size_t>(formato.minimo),
                   static_cast<std::size_t>(formato.maximo));
}

bool ehInteiro(const Formato &formato, std::string_view limpo) {
    return soDigitos(limpo) && static_cast<int>(limpo.size()) <= formato.maximo &&
           (limpo.size() == 1 || limpo.front() != '0');
}

bool ehCfop(std::string_view limpo) {
    return soDigitos(limpo) && limpo.size() == 4 &&
           kInicioDoCfop.find(limpo.front()) != kInicioDoCfop.npos;
}

std::optional<std::string> comDigitos(const Formato &formato, std::string_view valor) {
    std::string limpo = semPontuacao(valor);
    const auto tamanho = static_cast<int>(limpo.size());
    return quando(soDigitos(limpo) && tamanho >= formato.minimo && tamanho <= formato.maximo,
                  limpo);
}

} // namespace

std::optional<std::string> formatar(const Formato &formato, std::string_view valor) {
    std::string limpo = aparar(valor);
    switch (formato.tipo) {
    case Tipo::kLivre:
        return std::string(valor);
    case Tipo::kTexto:
        return quando(cabe(formato, limpo), limpo);
    case Tipo::kDigitos:
        return comDigitos(formato, limpo);
    case Tipo::kInteiro:
        return quando(ehInteiro(formato, limpo), limpo);
    case Tipo::kUmDe:
        return quando(ehUmDe(formato.valores, limpo), limpo);
    case Tipo::kDecimal:
        return numero(formato, limpo);
    case Tipo::kCnpj:
        limpo = semPontuacao(limpo);
        return quando(ehCnpj(limpo), limpo);
    case Tipo::kCpf:
        limpo = semPontuacao(limpo);
        return quando(ehCpf(limpo), limpo);
    case Tipo::kMunicipio:
        return quando((limpo == kExterior && formato.minimo == 0) || ehMunicipio(limpo), limpo);
    case Tipo::kUf:
        return quando(limpo == "EX" || procurarEstado(limpo) != nullptr, limpo);
    case Tipo::kMomento:
        return quando(ehMomento(limpo), limpo);
    case Tipo::kCfop:
        limpo = semPontuacao(limpo);
        return quando(ehCfop(limpo), limpo);
    case Tipo::kVisivel:
        return quando(limpo.find(' ') == limpo.npos && cabe(formato, limpo), limpo);
    }
    return {};
}

std::string permitido(const Formato &formato) {
    const std::string de = std::to_string(formato.minimo), ate = std::to_string(formato.maximo);
    const std::string tamanho = de == ate ? de : "de " + de + " a " + ate;
    switch (formato.tipo) {
    case Tipo::kLivre:
        return "não serve";
    case Tipo::kTexto:
        return "tem " + tamanho + " caracteres do ISO-8859-1";
    case Tipo::kDigitos:
        return "tem " + tamanho + " dígitos";
    case Tipo::kInteiro:
        return "é um número de até " + ate + " dígitos, sem zeros à esquerda";
    case Tipo::kUmDe:
        return "é um de: " + std::string(formato.valores);
    case Tipo::kDecimal:
        return "é um número sem sinal de até " + std::to_string(formato.inteiros) +
               " dígitos inteiros e " + ate + " casas decimais";
    case Tipo::kCnpj:
        return "é um CNPJ: 14 dígitos, os dois últimos de controle";
    case Tipo::kCpf:
        return "é um CPF: 11 dígitos, os dois últimos de controle";
    case Tipo::kMunicipio:
        return "é um código de município do IBGE: 7 dígitos, o último de controle";
    case Tipo::kUf:
        return "é a sigla de um estado";
    case Tipo::kCfop:
        return "tem 4 dígitos, o primeiro 1, 2, 3, 5, 6 ou 7";
    case Tipo::kVisivel:
        return "tem " + tamanho + " caracteres, sem brancos";
    case Tipo::kMomento:
        return "é data e hora com fuso, como 2026-01-31T12:00:00-03:00";
    }
    return {};
}

} // namespace zel::envio
