// SPDX-License-Identifier: MIT
// From the till's file to signed bytes.
#include "comum/Arquivo.h"
#include "fluxo/ConsultaGuardada.h"
#include "fluxo/Destinos.h"
#include "fluxo/Entrega.h"
#include "fluxo/Fluxo.h"
#include "mensagem/Lote.h"

#include <algorithm>
#include <utility>

namespace zel::envio {

namespace {

constexpr std::size_t kMaiorGuardado = 4U << 20; // bytes of an nfeProc

// What was kept of it before the queue knew it.
std::optional<NotaGuardada> guardadaDe(const Guarda &guarda, const Ficha &ficha) {
    const std::string lugar = ficha.tipo == Tipo::kNfce ? guarda.lugarDe(ficha) : "";
    const auto bytes = lugar.empty() ? std::nullopt : comum::lerArquivo(lugar, kMaiorGuardado);
    return bytes ? notaDe(*bytes, ficha.chave) : std::nullopt;
}

} // namespace

bool Fluxo::preparar(const Ficha &ficha) {
    if (parada(ficha)) return false;
    // Authorized once, it is no more taken back: whatever replaces it has it cancelled.
    if (const auto guardada = guardadaDe(guarda_, ficha)) return retomar(ficha, *guardada);
    if (semLugar(ficha) || faixaOcupada(ficha)) return false;
    if (ficha.tipo == Tipo::kConsulta && ficha.chave.empty()) {
        if (!responderDoGuardado(meios_.config, meios_.fila, ficha)) return false;
        return mudar(ficha, Estado::kEntregue, {.motivo = "respondida do que foi guardado"});
    }
    bool esperar = false;
    const auto contexto = contextoDe(ficha, esperar);
    if (!contexto) return !esperar;
    const ContextoNota nota{ficha.troco.value_or(0)};
    const Feito feito = meios_.oficina.fazer(meios_.fila.original(ficha.id), *contexto, nota,
                                             meios_.relogio.agora());
    if (feito.passo != Passo::kFeito) return naoFeito(ficha, feito);

    Recusas recusas;
    Fila::Transacao transacao(meios_.fila);
    return assinada(
               ficha,
               {.mensagem = feito.mensagem,
                .chave = feito.chave,
                .dhEmi = contexto->data.empty() ? ficha.dhEmi : momentoEscrito(ficha.achado, {}),
                .motivo = ""},
               recusas) &&
           transacao.confirmar(recusas);
}

// What is one document's own fault stops no other.
bool Fluxo::naoFeito(const Ficha &ficha, const Feito &feito) {
    const std::string motivo = feito.recusas.texto();
    switch (feito.culpa) {
    case Culpa::kDocumento:
        return recusar(ficha, motivo);
    case Culpa::kTitular:
        return titularDe(ficha) == Titular::kTrocado ? parar(ficha, motivo)
                                                     : recusar(ficha, motivo);
    case Culpa::kProcesso:
        if (soDaqui()) return deixar(ficha, motivo);
        [[fallthrough]];
    case Culpa::kCertificado:
        break;
    }
    return parar(ficha, motivo);
}

// The till delivers its sales in the name of the one or the other: a copy from a test, of another
// company, tells nothing of the certificate.
Fluxo::Titular Fluxo::titularDe(const Ficha &ficha) {
    constexpr std::size_t kRaiz = 8; // digits that all branches of a company share
    const auto mesma = [&](const std::string &cnpj) {
        return cnpj.substr(0, kRaiz) == ficha.cnpj.substr(0, kRaiz);
    };
    Recusas ignoradas;
    const auto certificado = meios_.oficina.certificado(ignoradas);
    if (!certificado || mesma(certificado->cnpj())) return Titular::kNosso;
    const auto entregues =
        meios_.fila.procurar({.caixa = ficha.caixa, .estados = {Estado::kEntregue}, .maximo = 20});
    const bool vendeu = std::any_of(entregues.begin(), entregues.end(), [&](const Ficha &esta) {
        return esta.tipo == Tipo::kNfce && mesma(esta.cnpj);
    });
    return vendeu ? Titular::kTrocado : Titular::kAlheio;
}

bool Fluxo::assinada(const Ficha &ficha, const Mudanca &mudanca, Recusas &recusas) {
    const Momento agora = meios_.relogio.agora();
    return (ficha.estado == Estado::kTraduzido ||
            meios_.fila.mudar(ficha.id, Estado::kAchado, Estado::kTraduzido, {}, agora, recusas)) &&
           meios_.fila.mudar(ficha.id, Estado::kTraduzido, Estado::kAssinado, mudanca, agora,
                             recusas);
}

// The queue was lost or goes back in time, what was kept did not: signed anew it might be other
// bytes (the till says the change of its last receipt alone), and the authority has had its own.
bool Fluxo::retomar(const Ficha &ficha, const NotaGuardada &guardada) {
    Recusas recusas;
    const Momento agora = meios_.relogio.agora();
    Fila::Transacao transacao(meios_.fila);
    return assinada(ficha, {.mensagem = guardada.assinada, .motivo = ""}, recusas) &&
           meios_.fila.mudar(ficha.id, Estado::kAssinado, Estado::kEnviado, {}, agora, recusas) &&
           meios_.fila.mudar(ficha.id, Estado::kEnviado, Estado::kRespondido,
                             {.resposta = guardada.resposta, .proximo = 0}, agora, recusas) &&
           transacao.confirmar(recusas);
}

// Another one has its place, or may have it: then it does not go out.
bool Fluxo::semLugar(const Ficha &ficha) {
    if (ficha.tipo != Tipo::kNfce) return false;
    if (substituta(meios_.fila, ficha)) {
        constexpr const char *kMotivo = "outro documento a substitui";
        const bool saiu = ficha.estado == Estado::kAssinado && jaSaiu(meios_.fila, ficha);
        return saiu ? mudar(ficha, Estado::kPerguntar, {.motivo = kMotivo, .proximo = 0})
                    : mudar(ficha, Estado::kRetirado, {.motivo = kMotivo}),
               true;
    }
    const auto duvida = duvidaDe(meios_.fila, ficha);
    if (duvida) recusar(ficha, *duvida);
    return duvida.has_value();
}

// A number that a note of this queue has, or may come to have, is not given up: voided, the note
// whose paper is out would be refused. What went out already is the authority's to decide.
bool Fluxo::faixaOcupada(const Ficha &ficha) {
    if (ficha.tipo != Tipo::kInutilizacao || ficha.tentativas > 0) return false;
    const auto nota = meios_.fila.notaNaFaixa(ficha);
    if (!nota) return false;
    const std::string qual =
        "o número " + std::to_string(nota->numero) + " é da nota " + nota->chave;
    if (acabou(nota->estado))
        recusar(ficha, qual + ", " + std::string(nomeDe(nota->desfecho)) + ", protocolo " +
                           nota->protocolo + ": peça a faixa sem ele");
    else
        adiar(ficha, std::max(nota->proximo, meios_.relogio.agora() + kEsperaDoOutro),
              qual + ", que está na fila sem resposta: a inutilização espera por ela");
    return true;
}

// What a request does not say. None when it has to wait (`esperar`), or was refused.
std::optional<ContextoPedido> Fluxo::contextoDe(const Ficha &ficha, bool &esperar) {
    ContextoPedido contexto;
    contexto.idLote = std::to_string(ficha.id);
    if (ficha.tipo == Tipo::kInutilizacao)
        contexto.data = momentoEscrito(ficha.achado, {}).substr(0, 10);
    if (ficha.tipo != Tipo::kCancelamento) return contexto;
    contexto.substituta = ficha.substitui;
    if (!protocoloDe(ficha, contexto, esperar)) return {};
    return contexto;
}

// A cancellation names the authorization: from the queue, else from the authority.
bool Fluxo::protocoloDe(const Ficha &ficha, ContextoPedido &contexto, bool &esperar) {
    const auto nota = meios_.fila.porChave(ficha.chave, Tipo::kNfce);
    if (nota && !acabou(nota->estado)) {
        esperar = true;
        return adiar(ficha, std::max(nota->proximo, meios_.relogio.agora() + kEsperaDoOutro),
                     "espera a resposta da nota"),
               false;
    }
    if (nota && nota->desfecho == Desfecho::kCancelado) {
        Resposta dita;
        dita.cStat = nota->cStat;
        dita.xMotivo = nota->xMotivo;
        dita.protocolo = nota->protocolo;
        dita.evento = meios_.fila.evento(nota->id);
        return esperar = !jaCancelada(ficha, dita), false;
    }
    if (nota && nota->desfecho != Desfecho::kAutorizado && nota->desfecho != Desfecho::kJaEsta) {
        recusar(ficha, "a nota " + std::to_string(nota->numero) +
                           " não foi autorizada: não há o que cancelar");
        return false;
    }
    if (nota) {
        contexto.protocolo = nota->protocolo;
        return true;
    }
    return protocoloPerguntado(ficha, contexto, esperar);
}

bool Fluxo::protocoloPerguntado(const Ficha &ficha, ContextoPedido &contexto, bool &esperar) {
    if (!linhaLivre(ficha)) return esperar = true, false;
    const Retorno retorno = pedir(Servico::kConsultaProtocolo, ficha,
                                  consultaDaChave(ficha.chave, std::to_string(ficha.tpAmb)));
    Recusas recusas;
    const auto resposta =
        retorno.chegada == Chegada::kResposta
            ? lerResposta(Servico::kConsultaProtocolo, retorno.corpo, ficha.chave, recusas)
            : std::nullopt;
    const Desfecho desfecho = resposta ? resposta->desfecho : Desfecho::kEsperar;
    const std::string &motivo = resposta ? resposta->xMotivo : retorno.motivo;
    if (desfecho == Desfecho::kAutorizado) {
        contexto.protocolo = resposta->protocolo;
        return true;
    }
    if (desfecho == Desfecho::kCancelado) return esperar = !jaCancelada(ficha, *resposta), false;
    esperar = desfecho == Desfecho::kEsperar || desfecho == Desfecho::kExcesso ||
              desfecho == Desfecho::kCertificado;
    if (!esperar)
        recusar(ficha, "a SEFAZ diz da nota: " + std::to_string(resposta->cStat) + " " + motivo);
    else if (desfecho == Desfecho::kCertificado || retorno.chegada == Chegada::kCertificado)
        parar(ficha, motivo);
    else
        adiarMais(ficha,
                  desfecho == Desfecho::kExcesso ? kPausaDoExcesso
                                                 : pausaDepoisDe(ficha.tentativas + 1),
                  motivo);
    return false;
}

// Its note was cancelled before, by somebody else: nothing is left to be sent.
bool Fluxo::jaCancelada(const Ficha &ficha, const Resposta &consulta) {
    Resposta evento = eventoDe(consulta);
    evento.desfecho = Desfecho::kJaCancelado;
    evento.elemento.clear();
    return mudar(ficha, Estado::kRespondido,
                 {.resposta = evento, .motivo = "", .tentativas = 0, .proximo = 0});
}

bool Fluxo::recusar(const Ficha &ficha, const std::string &motivo) {
    Ficha recusada = ficha;
    recusada.motivo = motivo;
    Recusas recusas;
    if (!escreverRetorno(meios_.config, recusada, {}, {}, recusas))
        return adiar(ficha, meios_.relogio.agora() + kMinuto, recusas.texto());
    mudar(ficha, Estado::kRecusado, {.motivo = motivo});
    return false;
}

} // namespace zel::envio
