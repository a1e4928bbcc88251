// SPDX-License-Identifier: MIT
#include "negocio/Consulta.h"

#include "comum/ChaveAcesso.h"
#include "config/Registro.h"
#include "negocio/Argumento.h"
#include "negocio/Requisicao.h"
#include "recusa/Recusa.h"
#include "zel_felbor/codigos.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <tuple>

namespace zel {

namespace {

// Where an argument goes and how many of its characters are kept; nowhere when the kind does not
// need it.
struct Destino {
    std::string DadosRequisicao::*campo = nullptr;
    std::size_t maximo = 0;
};

using Argumentos = std::array<std::string_view, 4>;
constexpr Argumentos kNomes{"inicial", "final", "serie", "chave"};

struct TipoConsulta {
    std::string_view nome;
    bool porNumero;
    std::array<Destino, std::tuple_size_v<Argumentos>> destinos; // in the order of Argumentos
};

using D = DadosRequisicao;

constexpr std::array<TipoConsulta, 3> kTipos{{
    {"DATA", false, {{{&D::dataInicial, 25}, {&D::dataFinal, 25}, {}, {}}}},
    {"NUM", true, {{{&D::numeroInicial, 9}, {&D::numeroFinal, 9}, {&D::serie, 4}, {}}}},
    {"CHAVE", false, {{{}, {}, {}, {&D::chave, ChaveAcesso::kDigitos}}}},
}};

// ZEL_OK, or ZEL_ARGUMENTO_INVALIDO when the kind needs an argument that is null.
int preencher(const TipoConsulta &tipo, const Argumentos &argumentos, DadosRequisicao &dados) {
    dados.porNumero = tipo.porNumero;
    dados.numeroInicial = dados.numeroFinal = "0";
    for (std::size_t i = 0; i < argumentos.size(); ++i) {
        const auto [campo, maximo] = tipo.destinos[i];
        if (campo == nullptr) continue;
        if (const int presente = recusarNulos({{kNomes[i], argumentos[i]}}); presente != ZEL_OK)
            return presente;
        dados.*campo = argumentoCortado(argumentos[i], maximo);
    }
    return ZEL_OK;
}

} // namespace

int fnGeraXMLConsulta_ZEL(std::string_view tipo, std::string_view inicio, std::string_view fim,
                          std::string_view serie, std::string_view chave) {
    const auto achado = std::find_if(kTipos.begin(), kTipos.end(),
                                     [&](const TipoConsulta &um) { return um.nome == tipo; });
    if (achado == kTipos.end())
        return recusar(Motivo::kTipoDeConsulta, {.campo = "tipo", .dado = tipo});
    DadosRequisicao dados;
    if (const int resultado = preencher(*achado, {inicio, fim, serie, chave}, dados);
        resultado != ZEL_OK)
        return resultado;
    if (const int resultado = garantirConfig(); resultado != ZEL_OK) return resultado;
    if (const int resultado = enviarRequisicao(Requisicao::kConsulta, dados); resultado != ZEL_OK)
        return resultado;
    return enviarRequisicao(Requisicao::kParametrosConsulta, dados);
}

} // namespace zel
