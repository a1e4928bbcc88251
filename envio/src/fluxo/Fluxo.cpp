// SPDX-License-Identifier: MIT
#include "fluxo/Fluxo.h"

#include "fluxo/Destinos.h"
#include "fluxo/Entrega.h"
#include "mensagem/Lote.h"
#include "rede/Remessa.h"

#include <algorithm>
#include <array>
#include <utility>

namespace zel::envio {

namespace {

// A document takes fewer steps than this before it waits or ends.
constexpr int kMaisPassos = 12;
// How much longer than a request may last another process waits before it takes the request for
// one whose sender died.
constexpr Momento kFolga = 15 * kSegundo;
// So long a line that was down is asked for while somebody stands there.
constexpr Milissegundos kSondagem{2000};
// So often a stopped queue is looked at again.
constexpr Momento kPausaDaParada = kMinuto;

} // namespace

Fluxo::Fluxo(const Meios &meios) : meios_(meios), guarda_(guardadosDe(meios.config)) {}

void Fluxo::tratar(std::int64_t id, Milissegundos limite) {
    limite_ = limite;
    for (int i = 0; i < kMaisPassos; ++i) {
        const auto ficha = meios_.fila.ficha(id);
        if (!ficha || acabou(ficha->estado) || cedoDemais(ficha->proximo, meios_.relogio.agora()))
            return;
        if (!passo(*ficha)) return;
    }
}

void Fluxo::assinar(std::int64_t id) {
    const auto ficha = meios_.fila.ficha(id);
    if (ficha && ficha->tipo == Tipo::kNfce && ficha->proximo <= meios_.relogio.agora() &&
        (ficha->estado == Estado::kAchado || ficha->estado == Estado::kTraduzido))
        preparar(*ficha);
}

int Fluxo::tratarProntas(const std::string &caixa, Milissegundos limite, std::size_t maximo) {
    const int antes = mudancas_;
    for (const auto &ficha : meios_.fila.prontas(caixa, meios_.relogio.agora(), maximo))
        tratar(ficha.id, limite);
    return mudancas_ - antes;
}

bool Fluxo::passo(const Ficha &ficha) {
    switch (ficha.estado) {
    case Estado::kAchado:
    case Estado::kTraduzido:
        return preparar(ficha);
    case Estado::kAssinado:
        return enviar(ficha);
    // Whoever was sending it is gone: nobody knows what became of it.
    case Estado::kEnviado:
        return perguntarDepois(ficha, 0, "o envio foi interrompido");
    case Estado::kPerguntar:
        return perguntar(ficha);
    case Estado::kRespondido:
        return entregar(ficha);
    default:
        return false;
    }
}

// ---- out ----

bool Fluxo::linhaLivre(const Ficha &ficha) {
    const std::string qual = linhaDaFicha(meios_.config, ficha);
    const Linha::Situacao situacao = situacaoDa(qual);
    const Momento agora = meios_.relogio.agora();
    if (situacao.falhas > 0) {
        const bool cedo = cedoDemais(situacao.proxima, agora, pausaDepoisDe(situacao.falhas));
        if (cedo || !perguntarServico(qual.substr(0, 2), ficha.tpAmb,
                                      alguemEspera_ ? std::min(limite_, kSondagem) : limite_))
            return adiar(ficha, meios_.linha.situacao(qual).proxima, situacao.motivo);
    }
    const Momento vez = meios_.linha.vez(agora);
    return vez == 0 || adiar(ficha, vez, "");
}

bool Fluxo::enviar(const Ficha &ficha) {
    if (parada(ficha) || semLugar(ficha) || faixaOcupada(ficha)) return false;
    // What somebody hands over was not sent before, whatever its till's clock says.
    if (!alguemEspera_ && podeJaEstar(meios_.fila, ficha, meios_.config.fila))
        return mudar(ficha, Estado::kPerguntar, {.motivo = "achada tarde", .proximo = 0});
    if (!linhaLivre(ficha)) return false;
    const Momento agora = meios_.relogio.agora();
    if (!mudar(ficha, Estado::kEnviado,
               {.tentativas = ficha.tentativas + 1, .proximo = agora + limite_.count() + kFolga}))
        return false;
    Ficha enviada = ficha;
    enviada.estado = Estado::kEnviado;
    ++enviada.tentativas;
    const std::string assinada = meios_.fila.mensagem(ficha.id);
    const Servico servico = servicoDe(ficha.tipo);
    const Retorno retorno =
        pedir(servico, ficha, ficha.tipo == Tipo::kNfce ? loteDe(assinada, ficha.id) : assinada);
    switch (retorno.chegada) {
    case Chegada::kNaoEnviado:
        return naoEnviado(enviada, retorno);
    case Chegada::kSemResposta:
        return semResposta(enviada, retorno);
    case Chegada::kCertificado:
        return parar(enviada, retorno.motivo);
    case Chegada::kResposta:
        break;
    }
    Recusas recusas;
    auto resposta = lerResposta(servico, retorno.corpo, ficha.chave, recusas);
    if (!resposta) return semResposta(enviada, {.motivo = recusas.texto()});
    return responder(enviada, std::move(*resposta));
}

Milissegundos Fluxo::tempo() const {
    using Cronometro = std::chrono::steady_clock;
    if (ate_ == Cronometro::time_point::max()) return limite_;
    return std::min(limite_, std::chrono::duration_cast<Milissegundos>(ate_ - Cronometro::now()));
}

Retorno Fluxo::pedir(Servico servico, const Ficha &ficha, std::string mensagem) {
    const std::string qual = linhaDaFicha(meios_.config, ficha);
    Recusas recusas;
    const auto remessa = remessaDe(meios_.config, qual.substr(0, 2), ficha.tpAmb, servico,
                                   std::move(mensagem), recusas);
    if (!remessa) return {.motivo = recusas.texto()};
    const Momento saiu = meios_.relogio.agora();
    const Milissegundos limite = tempo();
    // Of the line that says nothing.
    if (limite <= Milissegundos::zero()) return {.motivo = "o tempo acabou antes do envio"};
    Retorno retorno = meios_.rede.pedir(*remessa, limite);
    const bool chegou = retorno.chegada == Chegada::kResposta;
    ServicoVisto visto{.servico = std::string(metodoDe(servico).servico),
                       .cUF = qual.substr(0, 2),
                       .tpAmb = ficha.tpAmb,
                       .cStat = 0,
                       .http = retorno.http,
                       .xMotivo = retorno.motivo,
                       .momento = saiu,
                       .demora = retorno.demora.count()};
    if (chegou)
        if (const auto resposta = lerResposta(servico, retorno.corpo, ficha.chave, recusas)) {
            visto.cStat = resposta->cStat;
            visto.xMotivo = resposta->xMotivo;
        }
    meios_.fila.verServico(visto);
    if (meios_.ouvinte != nullptr) meios_.ouvinte->respondeu(visto);
    if (chegou) {
        // How the service is, is known when that answer is read.
        if (servico != Servico::kStatusServico) linhaRespondeu(qual);
    } else if (retorno.chegada != Chegada::kCertificado)
        linhaFalhou(qual, retorno.motivo);
    return retorno;
}

bool Fluxo::naoEnviado(const Ficha &ficha, const Retorno &retorno) {
    const Momento quando =
        std::max(meios_.linha.situacao(linhaDaFicha(meios_.config, ficha)).proxima,
                 meios_.relogio.agora() + pausaDepoisDe(1));
    return voltar(ficha, quando, retorno.motivo);
}

// Back to the signed bytes: the authority has nothing of it.
bool Fluxo::voltar(const Ficha &ficha, Momento quando, const std::string &motivo) {
    mudar(ficha, Estado::kAssinado, {.motivo = motivo, .proximo = quando});
    return false;
}

bool Fluxo::semResposta(const Ficha &ficha, const Retorno &retorno) {
    // Sent again and again without an answer that can be read: more slowly each time.
    const Momento mais = ficha.tentativas > 1 ? pausaDepoisDe(ficha.tentativas - 1) : 0;
    return perguntarDepois(ficha, std::max(kEsperaDoOutro, mais), retorno.motivo);
}

bool Fluxo::perguntarDepois(const Ficha &ficha, Momento pausa, const std::string &motivo) {
    const Mudanca mudanca{.motivo = motivo, .proximo = meios_.relogio.agora() + pausa};
    return mudar(ficha, Estado::kPerguntar, mudanca) && pausa == 0;
}

// ---- the end ----

bool Fluxo::entregar(const Ficha &respondida) {
    Recusas recusas;
    Ficha ficha = respondida;
    if (ficha.tipo == Tipo::kNfce && ficha.desfecho == Desfecho::kOutraChave) {
        const auto motivo = outraDoNumero(ficha);
        if (!motivo) return false;
        ficha.motivo = *motivo;
    }
    const std::string mensagem = meios_.fila.mensagem(ficha.id),
                      elemento = meios_.fila.elemento(ficha.id);
    if (ficha.desfecho == Desfecho::kAutorizado)
        if (const auto duvida = duvidaDe(meios_.fila, ficha)) ficha.motivo = *duvida;
    std::string guardado;
    if (guardaSe(ficha) && !elemento.empty()) guardado = guardadoDe(mensagem, elemento);
    // Another one's cancellation, of which nothing is kept yet.
    if (ficha.desfecho == Desfecho::kJaCancelado && guarda_.lugarDe(ficha).empty())
        guardado = meios_.fila.evento(ficha.id);
    const bool pronto = (guardado.empty() || guarda_.guardar(ficha, guardado, recusas)) &&
                        escreverRetorno(meios_.config, ficha, mensagem, elemento, recusas);
    if (!pronto) return adiar(ficha, meios_.relogio.agora() + kMinuto, recusas.texto());
    const Estado fim = encerra(ficha.tipo, ficha.desfecho) ? Estado::kEntregue : Estado::kRecusado;
    // In one piece: whoever died in between would leave two sales for one.
    Fila::Transacao transacao(meios_.fila);
    if (!mudar(ficha, fim, {.motivo = ficha.motivo})) return false;
    if (fim == Estado::kEntregue && ficha.tipo == Tipo::kNfce)
        cancelarSubstituida(meios_.fila, ficha, meios_.relogio.agora(), descartadas_);
    if (!transacao.confirmar(recusas))
        return adiar(ficha, meios_.relogio.agora() + kMinuto, recusas.texto());
    return false;
}

// ---- the queue as a whole ----

// What cannot be opened where somebody waits may be open to the service, which is another user. A
// token is the machine's, and its PIN is not tried at every sale.
bool Fluxo::soDaqui() const {
    return alguemEspera_ && meios_.config.certificado.modulo.empty();
}

// To whoever can do it.
bool Fluxo::deixar(const Ficha &ficha, const std::string &motivo) {
    const Momento quando = meios_.relogio.agora() + kEsperaDoOutro;
    const std::string dito = "este comando não pôde assinar nem transmitir: " + motivo;
    if (ficha.estado == Estado::kEnviado) return voltar(ficha, quando, dito);
    return adiar(ficha, quando, dito);
}

bool Fluxo::parar(const Ficha &ficha, const std::string &motivo) {
    Recusas ignoradas;
    if (soDaqui() && !meios_.oficina.certificado(ignoradas)) return deixar(ficha, motivo);
    meios_.fila.anotar(kAnotacaoParada, motivo);
    if (meios_.ouvinte != nullptr) meios_.ouvinte->parou(motivo);
    const Momento quando = meios_.relogio.agora() + kPausaDaParada;
    if (ficha.estado == Estado::kEnviado) return voltar(ficha, quando, textoDaParada(motivo));
    return adiar(ficha, quando, textoDaParada(motivo));
}

bool Fluxo::parada(const Ficha &ficha) {
    const std::string motivo = meios_.fila.anotado(kAnotacaoParada);
    return !motivo.empty() &&
           !adiar(ficha, meios_.relogio.agora() + kPausaDaParada, textoDaParada(motivo));
}

bool Fluxo::mudar(const Ficha &ficha, Estado para, const Mudanca &mudanca) {
    const bool feito = meios_.fila.mudar(ficha.id, ficha.estado, para, mudanca,
                                         meios_.relogio.agora(), descartadas_);
    mudancas_ += feito ? 1 : 0;
    if (feito && meios_.ouvinte != nullptr) meios_.ouvinte->mudou(ficha, para);
    return feito;
}

bool Fluxo::anotar(const Ficha &ficha, const Mudanca &mudanca) {
    const bool feito =
        meios_.fila.adiar(ficha.id, ficha.estado, mudanca, meios_.relogio.agora(), descartadas_);
    mudancas_ += feito ? 1 : 0;
    return feito;
}

// After one more attempt that led to nothing.
bool Fluxo::adiarMais(const Ficha &ficha, Momento pausa, const std::string &motivo) {
    anotar(ficha, {.motivo = motivo,
                   .tentativas = ficha.tentativas + 1,
                   .proximo = meios_.relogio.agora() + pausa});
    return false;
}

Recusas Fluxo::queixas() {
    return std::exchange(descartadas_, {});
}

// Always false: nothing more is done with it now.
bool Fluxo::adiar(const Ficha &ficha, Momento quando, const std::string &motivo) {
    Mudanca mudanca{.proximo = quando};
    if (!motivo.empty()) mudanca.motivo = motivo;
    anotar(ficha, mudanca);
    return false;
}

} // namespace zel::envio
