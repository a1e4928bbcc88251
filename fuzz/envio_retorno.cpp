// SPDX-License-Identifier: MIT
// The authority's answer as it came over the network, and documents of others: printed, looked at
// and shown, whatever they are. The first byte chooses which.
#include "Alvo.h"

#include "documento/Conferencia.h"
#include "documento/Impressao.h"
#include "documento/Leitura.h"
#include "mensagem/Lote.h"
#include "mensagem/Resposta.h"

using namespace zel::envio;

namespace {

constexpr std::string_view kNfe =
    R"(<NFe xmlns="http://www.portalfiscal.inf.br/nfe"><infNFe versao="4.00" )"
    R"(Id="NFe35261111222333000181650010000001011171025451"><ide><mod>65</mod><tpAmb>2</tpAmb></ide>)"
    R"(<pag><detPag><tPag>01</tPag><vPag>3.00</vPag></detPag><vTroco>1.00</vTroco></pag></infNFe>)"
    R"(<infNFeSupl><qrCode>https://exemplo.com.br/qrcode?p=1</qrCode>)"
    R"(<urlChave>exemplo.com.br/consulta</urlChave></infNFeSupl></NFe>)";

Documento lida(std::string_view bytes) {
    std::string motivo;
    auto documento = Documento::ler(bytes, motivo);
    exigir(documento.has_value());
    return std::move(*documento);
}

// What is printed authorizes this document, by its own words.
void imprimir(const Documento &resposta) {
    static const Documento nfe = lida(kNfe);
    Recusas recusas;
    const auto pronto = prepararImpressao(nfe.raiz(), &resposta, recusas);
    exigir(pronto.has_value() == recusas.nenhuma());
    if (!pronto) return;
    exigir(resposta.texto().find("35261111222333000181650010000001011171025451") !=
           std::string::npos);
    exigir(pronto->retorno.find("<SitCodigo>1") != std::string::npos);
    lida(pronto->documento);
}

void conferir(const Documento &documento) {
    static const Configuracao config;
    std::vector<std::string> olhado;
    Recusas recusas;
    exigir(verificarNfce(documento, config, nullptr, olhado, recusas) == recusas.nenhuma());
}

// The envelope as it came, of a service: what is kept of it can be read again.
void responder(std::string_view bytes) {
    const auto servico = static_cast<Servico>(tirarNumero(bytes, 8));
    const std::string_view id = servico == Servico::kInutilizacao
                                    ? "ID35261112223330001865001000000101000000101"
                                    : "35261111222333000181650010000001011171025451";
    std::string motivo;
    const std::string corpo = corpoDe(bytes, motivo);
    exigir(corpo.empty() != motivo.empty() && ehUtf8(motivo));
    if (corpo.empty()) return;
    Recusas recusas;
    const auto resposta = lerResposta(servico, corpo, id, recusas);
    exigir(resposta.has_value() == recusas.nenhuma());
    if (!resposta) return;
    exigir(ehUtf8(resposta->xMotivo) && resposta->cStat > 0);
    exigir(resposta->desfecho != Desfecho::kAutorizado || !resposta->protocolo.empty());
    exigir(resposta->chave.empty() || resposta->chave.size() == id.size() ||
           servico == Servico::kInutilizacao);
    if (!resposta->evento.empty()) lida(resposta->evento);
    if (!resposta->elemento.empty())
        lida(guardadoDe("<NFe></NFe><evento></evento><inutNFe></inutNFe>", resposta->elemento));
}

} // namespace

void jogar(std::string_view bytes) {
    const int qual = tirarNumero(bytes, 4);
    if (qual == 3) return responder(bytes);
    std::string motivo;
    const auto documento = Documento::ler(bytes, motivo);
    exigir(documento.has_value() == motivo.empty());
    if (!documento) return;
    switch (qual) {
    case 0:
        return imprimir(*documento);
    case 1:
        return conferir(*documento);
    default:
        exigir(ehUtf8(mostrar(*documento)));
    }
}
