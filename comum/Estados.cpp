// SPDX-License-Identifier: MIT
#include "comum/Estados.h"

#include "comum/Ascii.h"
#include "comum/Digitos.h"

#include <algorithm>
#include <iterator>

namespace zel {

namespace {

constexpr DigitoIe kNono{8, "98765432"};

// Two-digit codes: IBGE, Código da Unidade da Federação. The states' rules for the IE as published
// for SINTEGRA. Where a state has more than one rule (AP, BA, GO, MG, RO, RR, TO) only the length
// is checked.
constexpr Estado kEstados[] = {
    {"AC", "12", {13}, {11, "43298765432"}, {12, "543298765432"}},
    {"AL", "27", {9}, kNono, {}},
    {"AP", "16", {9}, {}, {}},
    {"AM", "13", {9}, kNono, {}},
    {"BA", "29", {8, 9}, {}, {}},
    {"CE", "23", {9}, kNono, {}},
    {"DF", "53", {13}, {11, "43298765432"}, {12, "543298765432"}},
    {"ES", "32", {9}, kNono, {}},
    {"GO", "52", {9}, {}, {}},
    {"MA", "21", {9}, kNono, {}},
    {"MT", "51", {11}, {10, "3298765432"}, {}},
    {"MS", "50", {9}, kNono, {}},
    {"MG", "31", {13}, {}, {}},
    {"PR", "41", {10}, {8, "32765432"}, {9, "432765432"}},
    {"PB", "25", {9}, kNono, {}},
    {"PA", "15", {9}, kNono, {}},
    {"PE", "26", {9, 14}, {7, "8765432"}, {8, "98765432"}},
    {"PI", "22", {9}, kNono, {}},
    {"RJ", "33", {8}, {7, "2765432"}, {}},
    {"RN", "24", {9, 10}, kNono, {}},
    {"RS", "43", {10}, {9, "298765432"}, {}},
    {"RO", "11", {14}, {}, {}},
    {"RR", "14", {9}, {}, {}},
    {"SC", "42", {9}, kNono, {}},
    {"SE", "28", {9}, kNono, {}},
    {"SP", "35", {12}, {8, "1345678A"}, {11, "32A98765432"}, Modulo::kResto},
    {"TO", "17", {9, 11}, {}, {}},
};

// The first three digits of the postal codes of a state, as the Correios publish them.
struct FaixaDeCep {
    std::string_view primeiro, ultimo, uf;
};
constexpr FaixaDeCep kFaixasDeCep[] = {
    {"010", "199", "SP"}, {"200", "289", "RJ"}, {"290", "299", "ES"}, {"300", "399", "MG"},
    {"400", "489", "BA"}, {"490", "499", "SE"}, {"500", "569", "PE"}, {"570", "579", "AL"},
    {"580", "589", "PB"}, {"590", "599", "RN"}, {"600", "639", "CE"}, {"640", "649", "PI"},
    {"650", "659", "MA"}, {"660", "688", "PA"}, {"689", "689", "AP"}, {"690", "692", "AM"},
    {"693", "693", "RR"}, {"694", "698", "AM"}, {"699", "699", "AC"}, {"700", "727", "DF"},
    {"728", "729", "GO"}, {"730", "736", "DF"}, {"737", "767", "GO"}, {"768", "769", "RO"},
    {"770", "779", "TO"}, {"780", "788", "MT"}, {"790", "799", "MS"}, {"800", "879", "PR"},
    {"880", "899", "SC"}, {"900", "999", "RS"},
};

template <class Casa>
const Estado *primeiro(Casa casa) {
    const auto achado = std::find_if(std::begin(kEstados), std::end(kEstados), casa);
    return achado == std::end(kEstados) ? nullptr : achado;
}

bool confere(const DigitoIe &digito, Modulo modulo, std::string_view ie) {
    if (digito.lugar == 0) return true;
    const int resto = restoPonderado(ie.substr(0, digito.lugar), digito.pesos);
    const int esperado = modulo == Modulo::kResto ? resto % 10 : resto < 2 ? 0 : 11 - resto;
    return ie[digito.lugar] - '0' == esperado;
}

} // namespace

const Estado *procurarEstado(std::string_view uf) {
    return primeiro([&](const Estado &estado) { return estado.uf == uf; });
}

const Estado *procurarEstadoPorCodigo(std::string_view codigo) {
    return primeiro([&](const Estado &estado) { return estado.codigo == codigo; });
}

const Estado *estadoDoCep(std::string_view cep) {
    if (cep.size() != 8 || !soDigitos(cep)) return nullptr;
    const std::string_view inicio = cep.substr(0, 3);
    for (const FaixaDeCep &faixa : kFaixasDeCep)
        if (inicio >= faixa.primeiro && inicio <= faixa.ultimo) return procurarEstado(faixa.uf);
    return nullptr;
}

bool fusoDoBrasil(std::string_view fuso) {
    return fuso == "-02:00" || fuso == "-03:00" || fuso == "-04:00" || fuso == "-05:00";
}

std::string_view remedioDoFuso() {
    return "Acerte o fuso do sistema (timedatectl set-timezone America/Sao_Paulo, ou o do lugar), "
           "ou "
           "diga-o:\nzel config gravar 'CONFIGURACAO\\TIMEZONESERVIDOR\\Valor' 3\n"
           "zel config gravar 'CONFIGURACAO\\TIMEZONESERVIDOR\\Utilizar' 1";
}

bool tamanhoDeIe(const Estado &estado, std::string_view ie) {
    return std::find(estado.tamanhos.begin(), estado.tamanhos.end(), ie.size()) !=
           estado.tamanhos.end();
}

bool digitosDeIe(const Estado &estado, std::string_view ie) {
    if (ie.size() != estado.tamanhos.front()) return true;
    return confere(estado.primeiro, estado.modulo, ie) &&
           confere(estado.segundo, estado.modulo, ie);
}

} // namespace zel
