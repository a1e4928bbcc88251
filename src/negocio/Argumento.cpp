// SPDX-License-Identifier: MIT
#include "negocio/Argumento.h"

#include "util/Numero.h"
#include "util/Texto.h"

namespace zel {

namespace {

constexpr std::size_t kMaiorDecimal = 15;

} // namespace

std::string argumentoCortado(std::string_view argumento, std::size_t maximo) {
    std::string simples = textoSimples(argumento);
    if (simples.size() > maximo) simples.resize(maximo);
    return simples;
}

std::string argumentoAceito(std::string_view argumento, std::size_t minimo, std::size_t maximo) {
    std::string simples = textoSimples(argumento);
    if (simples.size() < minimo || simples.size() > maximo) simples.clear();
    return simples;
}

std::string argumentoDecimal(std::string_view argumento) {
    return trocarVirgula(
        retirarEspacos(retirarEspacos(textoSimples(argumento)).substr(0, kMaiorDecimal)));
}

std::string_view cpfOuCnpj(std::size_t caracteres) {
    if (caracteres == 0 || caracteres == 12) return "";
    return caracteres <= 11 ? "CPF" : "CNPJ";
}

void addSeAceito(ST_tagZEL &grupo, std::string_view nome, std::string_view simples) {
    if (!simples.empty()) grupo.addSubTag(nome, escaparXml(simples));
}

} // namespace zel
