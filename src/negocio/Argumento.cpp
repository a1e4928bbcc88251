// SPDX-License-Identifier: MIT
#include "negocio/Argumento.h"

#include "recusa/Recusa.h"
#include "texto/Numero.h"
#include "texto/Texto.h"

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

int exigirTextos(std::initializer_list<Argumento> argumentos) {
    for (const auto &[nome, texto] : argumentos)
        if (texto.empty()) return recusar(Motivo::kArgumentoVazio, {.campo = nome, .dado = texto});
    return ZEL_OK;
}

int recusarNulos(std::initializer_list<Argumento> argumentos) {
    for (const auto &[nome, texto] : argumentos)
        if (texto.data() == nullptr) return recusar(Motivo::kArgumentoNulo, {.campo = nome});
    return ZEL_OK;
}

int recusarNegativo(std::string_view nome, std::string_view texto) {
    return recusar(Motivo::kArgumentoNegativo, {.campo = nome, .dado = texto});
}

void juntarSeAceito(ST_tagZEL &grupo, std::string_view nome, std::string_view simples) {
    if (!simples.empty()) grupo.addSubTag(nome, escaparXml(simples));
}

} // namespace zel
