// SPDX-License-Identifier: MIT
#include "comandos/EnvioRelato.h"

#include "leitura/Texto.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>
#include <string>

namespace zel::aplicativo {

namespace {

using Json = nlohmann::json;

constexpr int kPoucosDias = 30; // of a certificate
constexpr std::size_t kLargura = 18;

std::string em(const Json &json, const char *nome) {
    const auto lugar = json.find(nome);
    if (lugar == json.end()) return {};
    return lugar->is_string() ? lugar->get<std::string>() : lugar->dump();
}

std::string linha(std::string_view rotulo, std::string_view valor) {
    if (valor.empty()) return {};
    const std::size_t brancos = kLargura - std::min(comprimento(rotulo), kLargura - 1);
    return juntar({rotulo, ":", std::string(brancos, ' '), valor, "\n"});
}

// "2026-11-25T22:04:16-03:00" as "2026-11-25 22:04:16".
std::string quando(const std::string &momento) {
    constexpr std::size_t kSemZona = 19;
    return trocar(momento.substr(0, kSemZona), "T", " ");
}

std::string ha(long long segundos) {
    constexpr long long kMinuto = 60, kHora = 3600, kDia = 86400;
    for (const auto &[tamanho, nome] : {std::pair{kDia, " dias"}, {kHora, " h"}, {kMinuto, " min"}})
        if (segundos >= 2 * tamanho) return std::to_string(segundos / tamanho) + nome;
    return std::to_string(segundos) + " s";
}

std::string ambiente(const Json &json) {
    return json.at("tpAmb") == 1 ? "produção" : "homologação";
}

std::string faixa(long long primeiro, long long ultimo) {
    const std::string um = std::to_string(primeiro);
    return primeiro == ultimo ? um : juntar({um, " a ", std::to_string(ultimo)});
}

std::string servicoDito(const Json &servico) {
    const std::string cStat = em(servico, "cStat"), xMotivo = em(servico, "xMotivo");
    return juntar({em(servico, "servico"), " (", em(servico, "cUF"), ", ", ambiente(servico), "): ",
                   cStat == "0" ? "sem resposta:" : cStat, xMotivo.empty() ? "" : " ", xMotivo,
                   ", ", quando(em(servico, "momento")), ", ", em(servico, "demora"), " ms"});
}

// Why a row is where it is, and what to do.
std::string porque(const Json &ficha) {
    const std::string motivo = em(ficha, "motivo"), remedio = em(ficha, "remedio");
    std::string dito = motivo.empty() ? em(ficha, "xMotivo") : motivo;
    if (!remedio.empty() && dito.find(remedio) == dito.npos)
        dito += juntar({dito.empty() ? "" : "; ", remedio});
    if (const std::string prazo = em(ficha, "prazo"); !prazo.empty())
        dito += juntar({dito.empty() ? "" : "\n", prazo});
    return dito.empty() ? dito : juntar({"    ", trocar(dito, "\n", "\n    "), "\n"});
}

std::string fichaDita(const Json &ficha, bool cancelada = false) {
    const std::string desfecho = em(ficha, "desfecho"), consumidor = em(ficha, "consumidor");
    const bool entregue = em(ficha, "estado") == "entregue";
    std::string texto =
        juntar({quando(em(ficha, "dhEmi")), "  ", em(ficha, "tipo"), "  série ", em(ficha, "serie"),
                " número ", faixa(ficha.at("numero"), ficha.at("ultimo")), "  R$ ",
                em(ficha, "total"), consumidor.empty() ? "" : "  para ", consumidor, "\n    ",
                entregue ? desfecho : em(ficha, "pessoa"),
                cancelada ? ", cancelada depois  " : "  ", em(ficha, "chave"), "\n"});
    if (!entregue || !em(ficha, "motivo").empty()) texto += porque(ficha);
    if (ficha.contains("passos"))
        for (const Json &passo : ficha["passos"])
            texto += juntar({"    ", quando(em(passo, "momento")), "  ", em(passo, "de"), " -> ",
                             em(passo, "para"), em(passo, "detalhe").empty() ? "" : "  ",
                             em(passo, "detalhe"), "\n"});
    return texto;
}

std::string certificadoDito(const Json &certificado, bool &atencao) {
    const bool bom = certificado.contains("dias");
    const long long dias = bom ? certificado["dias"].get<long long>() : 0;
    atencao = atencao || !bom || dias <= kPoucosDias;
    if (!bom) return trocar(em(certificado, "motivo"), "\n", "; ");
    return juntar({em(certificado, "nome"), ", até ", em(certificado, "validade"), ", ",
                   std::to_string(dias), dias == 1 ? " dia" : " dias"});
}

void relatarLacunas(const Json &json, RespostaDaFila &resposta) {
    for (const Json &lacuna : json.at("lacunas")) {
        resposta.lacunas.push_back({em(lacuna, "cnpj"), em(lacuna, "caixa"), lacuna.at("serie"),
                                    lacuna.at("primeiro"), lacuna.at("ultimo")});
        resposta.relato +=
            linha("Números pulados", juntar({"série ", em(lacuna, "serie"), ": ",
                                             faixa(lacuna.at("primeiro"), lacuna.at("ultimo")),
                                             "; zel envio inutilizar diz como os resolver"}));
    }
}

} // namespace

void relatarEstado(RespostaDaFila &resposta) {
    const Json json = Json::parse(resposta.json);
    const std::string parada = em(json, "parada");
    const long long esperam = json.at("esperam");
    std::string certificado = certificadoDito(json.at("certificado"), resposta.atencao);
    resposta.relato =
        linha("Envio", parada.empty() ? "anda"
                                      : juntar({"parado: ", trocar(parada, "\n", "; "),
                                                "; resolva e diga: zel envio continuar"}));
    resposta.relato +=
        linha("Esperam", esperam == 0 ? "nenhum documento"
                                      : juntar({std::to_string(esperam), ", o mais antigo há ",
                                                ha(json.at("esperaHaSegundos"))}));
    for (const Json &estado : json.at("estados"))
        resposta.relato += linha(em(estado, "estado"),
                                 juntar({em(estado, "quantos"), ", ", em(estado, "pessoa")}));
    resposta.relato += linha("Certificado", certificado);
    for (const Json &servico : json.at("servicos"))
        resposta.relato += linha("Serviço", servicoDito(servico));
    relatarLacunas(json, resposta);
    if (!json.at("alguem").empty()) resposta.relato += "\nPrecisa de alguém:\n";
    for (const Json &ficha : json.at("alguem"))
        resposta.relato += fichaDita(ficha);
    resposta.atencao = resposta.atencao || !parada.empty() || !json.at("alguem").empty() ||
                       !json.at("lacunas").empty();
}

void relatarProcura(RespostaDaFila &resposta) {
    const Json json = Json::parse(resposta.json);
    resposta.quantos = static_cast<long long>(json.size());
    std::set<std::string> canceladas;
    for (const Json &ficha : json)
        if (ficha.at("tipo") == "cancelamento" && ficha.at("desfecho") == "cancelado")
            canceladas.insert(em(ficha, "chave"));
    for (const Json &ficha : json)
        resposta.relato +=
            fichaDita(ficha, ficha.at("tipo") == "nfce" && canceladas.contains(em(ficha, "chave")));
}

void relatarServico(RespostaDaFila &resposta) {
    resposta.relato = linha("Serviço", servicoDito(Json::parse(resposta.json)));
}

} // namespace zel::aplicativo
