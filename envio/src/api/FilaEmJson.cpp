// SPDX-License-Identifier: MIT
#include "api/FilaEmJson.h"

#include "fluxo/Destinos.h"
#include "fluxo/Prazos.h"
#include "fluxo/Relogio.h"

#include <algorithm>
#include <array>

namespace zel::envio {

namespace {

constexpr std::size_t kMaisDeAlguem = 100; // rows that need a person are listed so far

constexpr std::array<std::string_view, 5> kTipos{"", "nfce", "cancelamento", "inutilizacao",
                                                 "consulta"};

struct Texto {
    const char *nome;
    std::string Ficha::*membro;
};
constexpr Texto kTextos[] = {
    {"chave", &Ficha::chave},
    {"cnpj", &Ficha::cnpj},
    {"caixa", &Ficha::caixa},
    {"origem", &Ficha::origem},
    {"dhEmi", &Ficha::dhEmi},
    {"consumidor", &Ficha::consumidor},
    {"nomeConsumidor", &Ficha::nomeConsumidor},
    {"substitui", &Ficha::substitui},
    {"xMotivo", &Ficha::xMotivo},
    {"protocolo", &Ficha::protocolo},
    {"momentoResposta", &Ficha::momentoResposta},
    {"recibo", &Ficha::recibo},
    {"motivo", &Ficha::motivo},
};

struct Inteiro {
    const char *nome;
    int Ficha::*membro;
};
constexpr Inteiro kInteiros[] = {{"modelo", &Ficha::modelo}, {"serie", &Ficha::serie},
                                 {"tpAmb", &Ficha::tpAmb},   {"tpEmis", &Ficha::tpEmis},
                                 {"cStat", &Ficha::cStat},   {"tentativas", &Ficha::tentativas}};

std::string emReais(Centavos valor) {
    constexpr int kDigitos = 13;
    return Decimal::deCentavos(valor).texto(2, 2, kDigitos).value_or("");
}

std::string escrito(Momento momento) {
    return momento == 0 ? std::string() : momentoEscrito(momento, {});
}

std::string_view pessoaDe(Estado estado) {
    return kEstados[static_cast<std::size_t>(estado)].pessoa;
}

Json contagens(Fila &fila, Momento agora, Json &json) {
    Json estados = Json::array();
    std::int64_t esperam = 0;
    Momento maisAntigo = 0;
    for (const Contagem &esta : fila.contar()) {
        if (esta.quantos == 0) continue;
        estados.push_back({{"estado", nomeDe(esta.estado)},
                           {"pessoa", pessoaDe(esta.estado)},
                           {"quantos", esta.quantos},
                           {"maisAntigo", escrito(esta.maisAntigo)}});
        if (acabou(esta.estado)) continue;
        esperam += esta.quantos;
        maisAntigo = maisAntigo == 0 ? esta.maisAntigo : std::min(maisAntigo, esta.maisAntigo);
    }
    json["esperam"] = esperam;
    json["maisAntigo"] = escrito(maisAntigo);
    json["esperaHaSegundos"] =
        maisAntigo == 0 ? 0 : std::max<Momento>(agora - maisAntigo, 0) / kSegundo;
    return estados;
}

Json certificadoEmJson(const Certificado *certificado, const Recusas &recusas, Momento agora) {
    if (certificado == nullptr) return {{"motivo", recusas.texto()}};
    return {{"nome", certificado->nome()},
            {"cnpj", certificado->cnpj()},
            {"validade", certificado->validoAte()},
            {"dias", certificado->dias(agora / kSegundo)}};
}

// The till of a gap is that of the document that ends it.
Json lacunaEmJson(Fila &fila, const Lacuna &lacuna) {
    const auto seguintes =
        fila.porNumero(lacuna.cnpj, lacuna.tpAmb, lacuna.serie, lacuna.ultimo + 1);
    return {{"cnpj", lacuna.cnpj},
            {"tpAmb", lacuna.tpAmb},
            {"serie", lacuna.serie},
            {"primeiro", lacuna.primeiro},
            {"ultimo", lacuna.ultimo},
            {"caixa", seguintes.empty() ? std::string() : seguintes.front().caixa}};
}

} // namespace

std::string_view nomeDe(Tipo tipo) {
    return kTipos.at(static_cast<std::size_t>(tipo));
}

Json fichaEmJson(Fila &fila, const Ficha &ficha, const ConfigFila &config, Momento agora) {
    Json json{{"id", ficha.id},
              {"tipo", nomeDe(ficha.tipo)},
              {"estado", nomeDe(ficha.estado)},
              {"pessoa", pessoaDe(ficha.estado)},
              {"desfecho", nomeDe(ficha.desfecho)},
              {"numero", ficha.numero},
              {"ultimo", ficha.ultimo},
              {"total", emReais(ficha.total)},
              {"troco", ficha.troco ? emReais(*ficha.troco) : ""},
              {"achado", escrito(ficha.achado)},
              {"mudado", escrito(ficha.mudado)},
              {"proximo", acabou(ficha.estado) ? "" : escrito(ficha.proximo)},
              {"remedio", encerra(ficha.tipo, ficha.desfecho) || ficha.cStat == 0
                              ? ""
                              : linhaDe(ficha.cStat).remedio},
              {"prazo", prazoDito(fila, ficha, config, agora)}};
    for (const auto &[nome, membro] : kTextos)
        json[nome] = ficha.*membro;
    for (const auto &[nome, membro] : kInteiros)
        json[nome] = ficha.*membro;
    return json;
}

Json fichaDeAlguem(Fila &fila, const Ficha &ficha, const ConfigFila &config, Momento agora) {
    Json json = fichaEmJson(fila, ficha, config, agora);
    if (const std::string remedio = remedioDaRetirada(ficha); !remedio.empty())
        json["remedio"] = remedio;
    return json;
}

Json passosEmJson(Fila &fila, std::int64_t id) {
    Json passos = Json::array();
    for (const PassoDado &passo : fila.passos(id))
        passos.push_back({{"momento", escrito(passo.momento)},
                          {"de", nomeDe(passo.de)},
                          {"para", nomeDe(passo.para)},
                          {"detalhe", passo.detalhe}});
    return passos;
}

Json servicoEmJson(const ServicoVisto &visto) {
    return {{"servico", visto.servico}, {"cUF", visto.cUF},
            {"tpAmb", visto.tpAmb},     {"cStat", visto.cStat},
            {"xMotivo", visto.xMotivo}, {"http", visto.http},
            {"demora", visto.demora},   {"momento", escrito(visto.momento)}};
}

Json estadoDaFila(const Configuracao &config, Fila &fila, const Certificado *certificado,
                  const Recusas &doCertificado, Momento agora) {
    Json json;
    json["parada"] = fila.anotado(kAnotacaoParada);
    json["estados"] = contagens(fila, agora, json);
    json["certificado"] = certificadoEmJson(certificado, doCertificado, agora);
    json["servicos"] = Json::array();
    for (const ServicoVisto &visto : fila.servicos())
        json["servicos"].push_back(servicoEmJson(visto));
    json["lacunas"] = Json::array();
    for (const Lacuna &lacuna : fila.lacunas())
        json["lacunas"].push_back(lacunaEmJson(fila, lacuna));
    Procura deAlguem{.precisaDeAlguem = true, .maximo = kMaisDeAlguem};
    procurarParaAlguem(deAlguem, config.fila.avisoHoras, agora);
    json["alguem"] = Json::array();
    for (const Ficha &ficha : fila.procurar(deAlguem))
        json["alguem"].push_back(fichaDeAlguem(fila, ficha, config.fila, agora));
    return json;
}

std::string escrita(const Json &json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

} // namespace zel::envio
