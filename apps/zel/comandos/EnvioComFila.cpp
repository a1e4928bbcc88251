// SPDX-License-Identifier: MIT
#include "comandos/EnvioAlca.h"
#include "comandos/EnvioRelato.h"
#include "comum/ChaveAcesso.h"

#include <algorithm>
#include <iterator>

namespace zel::aplicativo {

namespace {

struct Fim {
    int codigo;
    FimDoEnvio fim;
};
constexpr Fim kFins[] = {{ZEL_ENVIO_OK, FimDoEnvio::kFeito},
                         {ZEL_ENVIO_RECUSADO, FimDoEnvio::kRecusado},
                         {ZEL_ENVIO_SEM_RESPOSTA, FimDoEnvio::kSemResposta},
                         {ZEL_ENVIO_NAO_ENVIADO, FimDoEnvio::kNaoEnviado}};

FimDoEnvio fimDe(int codigo) {
    const auto fim = std::ranges::find(kFins, codigo, &Fim::codigo);
    return fim == std::end(kFins) ? FimDoEnvio::kFalhou : fim->fim;
}

struct Fato {
    const char *nome;
    std::string Transmissao::*membro;
};
constexpr Fato kFatos[] = {
    {"tipo", &Transmissao::tipo},           {"chave", &Transmissao::chave},
    {"numero", &Transmissao::numero},       {"serie", &Transmissao::serie},
    {"estado", &Transmissao::estado},       {"desfecho", &Transmissao::desfecho},
    {"cStat", &Transmissao::cStat},         {"xMotivo", &Transmissao::xMotivo},
    {"protocolo", &Transmissao::protocolo}, {"motivo", &Transmissao::motivo},
    {"remedio", &Transmissao::remedio},     {"retorno", &Transmissao::arquivoDoRetorno},
};

// The reason of a refusal ends with its remedy, which is said by itself.
void semRemedio(std::string &motivo, const std::string &remedio) {
    const std::string fim = "; " + remedio;
    if (!remedio.empty() && motivo.ends_with(fim)) motivo.resize(motivo.size() - fim.size());
}

// What the receipt of an NFC-e is printed from: with the authority's answer, else offline.
void juntarRecibo(const Alca &envio, Transmissao &feita) {
    if (zel_envio_tipo(envio.get()) != ZEL_ENVIO_NFCE) return;
    std::string dela;
    const bool respondida = receber(dela, [&](char **bytes, std::size_t *tamanho) {
                                return zel_envio_resposta(envio.get(), bytes, tamanho);
                            }) > 0;
    if (feita.fim == FimDoEnvio::kRecusado || (!respondida && !ehChaveOffline(feita.chave))) return;
    receberImpressao(envio, respondida ? &dela : nullptr, feita.documento, feita.aoLado);
}

int preparar(const Alca &envio, const PedidoDeTransmissao &pedido) {
    int codigo = zel_envio_configurar(envio.get(), pedido.config.c_str());
    if (codigo > 0)
        codigo = zel_envio_ler(envio.get(), pedido.documento.data(), pedido.documento.size());
    return codigo > 0
               ? zel_envio_completar(envio.get(), nullptr, nullptr, nullptr, pedido.troco.c_str())
               : codigo;
}

int executar(const Alca &envio, const PerguntaAFila &pergunta, RespostaDaFila &feita) {
    const auto pedir = [&](auto chamada) {
        return receber(feita.json, [&](char **bytes, std::size_t *tamanho) {
            return chamada(envio.get(), bytes, tamanho);
        });
    };
    switch (pergunta.qual) {
    case Pergunta::kSituacao:
        return pedir(zel_envio_estado);
    case Pergunta::kProcurar:
        return pedir([&](zel_envio *alca, char **bytes, std::size_t *tamanho) {
            return zel_envio_procurar(alca, pergunta.criterios.c_str(), bytes, tamanho);
        });
    case Pergunta::kServico:
        return pedir([&](zel_envio *alca, char **bytes, std::size_t *tamanho) {
            return zel_envio_servico(alca, pergunta.cUF.c_str(), pergunta.ambiente,
                                     pergunta.segundos, bytes, tamanho);
        });
    case Pergunta::kContinuar:
        return zel_envio_continuar(envio.get());
    case Pergunta::kExportar: {
        std::size_t quantos = 0;
        const int codigo = zel_envio_exportar(envio.get(), pergunta.mes.c_str(),
                                              pergunta.arquivo.c_str(), &quantos);
        feita.quantos = static_cast<long long>(quantos);
        return codigo;
    }
    }
    return ZEL_ENVIO_ARGUMENTO;
}

void relatar(Pergunta qual, RespostaDaFila &feita) {
    if (qual == Pergunta::kSituacao) relatarEstado(feita);
    if (qual == Pergunta::kProcurar) relatarProcura(feita);
    if (qual == Pergunta::kServico) relatarServico(feita);
}

} // namespace

Transmissao transmitirPeloEnvio(const PedidoDeTransmissao &pedido) {
    const Alca envio(zel_envio_novo());
    int codigo = preparar(envio, pedido);
    if (codigo > 0)
        codigo = zel_envio_transmitir(envio.get(), pedido.caixa.c_str(), pedido.substitui.c_str(),
                                      pedido.segundos);
    Transmissao feita;
    static_cast<RespostaDoEnvio &>(feita) = resposta(envio, codigo);
    feita.fim = fimDe(feita.codigo);
    for (const auto &[nome, membro] : kFatos)
        feita.*membro = valorDe(envio, nome);
    semRemedio(feita.motivo, feita.remedio);
    if (feita.fim != FimDoEnvio::kFalhou) juntarRecibo(envio, feita);
    return feita;
}

RespostaDaFila perguntarAFila(const PerguntaAFila &pergunta) {
    const Alca envio(zel_envio_novo());
    RespostaDaFila feita;
    int codigo = zel_envio_configurar(envio.get(), pergunta.config.c_str());
    if (codigo > 0) codigo = executar(envio, pergunta, feita);
    static_cast<RespostaDoEnvio &>(feita) = resposta(envio, codigo);
    if (feita.feito()) relatar(pergunta.qual, feita);
    return feita;
}

} // namespace zel::aplicativo
