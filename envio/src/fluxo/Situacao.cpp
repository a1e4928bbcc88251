// SPDX-License-Identifier: MIT
// How the line to an authority is, as this process and others have found it.
#include "fluxo/Fluxo.h"

#include "fluxo/Destinos.h"
#include "mensagem/Lote.h"

#include <utility>

namespace zel::envio {

namespace {

std::string anotacaoDa(const std::string &qual) {
    return "linha:" + qual;
}

} // namespace

Linha::Situacao Fluxo::situacaoDa(const std::string &qual) {
    Linha::Situacao nossa = meios_.linha.situacao(qual);
    if (nossa.falhas > 0 || !alguemEspera_) return nossa;
    return falhaLida(meios_.fila.anotado(anotacaoDa(qual)), meios_.relogio.agora());
}

void Fluxo::linhaFalhou(const std::string &qual, const std::string &motivo) {
    const Momento agora = meios_.relogio.agora();
    meios_.linha.falhou(qual, agora, motivo);
    meios_.fila.anotar(anotacaoDa(qual), falhaEscrita(agora, motivo));
}

void Fluxo::linhaRespondeu(const std::string &qual) {
    meios_.linha.respondeu(qual, meios_.relogio.agora());
    if (!meios_.fila.anotado(anotacaoDa(qual)).empty()) meios_.fila.anotar(anotacaoDa(qual), "");
}

void Fluxo::sondar(const std::string &caixa, Milissegundos limite) {
    const auto ultimas = meios_.fila.procurar({.caixa = caixa, .maximo = 1});
    if (ultimas.empty()) return; // it is not known yet whom it will send to
    const std::string qual = linhaDaFicha(meios_.config, ultimas.front());
    if (qual.starts_with('/')) return; // a request refused because it names no state
    if (meios_.linha.calada(qual, meios_.relogio.agora()))
        perguntarServico(qual.substr(0, 2), ultimas.front().tpAmb, limite);
}

bool Fluxo::perguntarServico(std::string_view cUF, int tpAmb, Milissegundos limite) {
    Ficha sem;
    sem.tpAmb = tpAmb;
    sem.chave = cUF;
    const std::string qual = linhaDaFicha(meios_.config, sem);
    const Momento agora = meios_.relogio.agora();
    if (!meios_.linha.podePerguntar(qual, agora)) return true;
    const Milissegundos antes = std::exchange(limite_, limite);
    const Retorno retorno =
        pedir(Servico::kStatusServico, sem, consultaDoServico(cUF, std::to_string(tpAmb)));
    limite_ = antes;
    if (retorno.chegada != Chegada::kResposta) return false;
    constexpr int kEmOperacao = 107;
    const auto resposta = lerResposta(Servico::kStatusServico, retorno.corpo, {}, descartadas_);
    if (resposta && resposta->cStat == kEmOperacao) return linhaRespondeu(qual), true;
    // Asked too often: that says nothing of what is sent.
    if (resposta && resposta->desfecho == Desfecho::kExcesso) {
        meios_.linha.naoPerguntar(qual, agora + kPausaDoExcesso);
        return linhaRespondeu(qual), true;
    }
    linhaFalhou(qual, resposta ? resposta->xMotivo : "o serviço não responde como deve");
    return false;
}

} // namespace zel::envio
