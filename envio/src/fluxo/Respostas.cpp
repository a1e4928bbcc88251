// SPDX-License-Identifier: MIT
// What an answer leads to, and what is asked when none came.
#include "fluxo/Fluxo.h"

#include "fluxo/Destinos.h"
#include "mensagem/Lote.h"

#include <algorithm>
#include <utility>

namespace zel::envio {

namespace {

constexpr int kReciboDesconhecido = 106;
constexpr int kOutraEmpresa = 213; // than the one whose certificate signed
// So long after it was found a document may still be in the authority's hands, which takes its
// time, though it says that it does not have it. After that it refuses it as late.
constexpr Momento kAindaPodeChegar = 15 * kMinuto;

} // namespace

// ---- what an answer leads to ----

bool Fluxo::responder(const Ficha &ficha, Resposta resposta) {
    const Momento agora = meios_.relogio.agora();
    switch (resposta.desfecho) {
    case Desfecho::kEmProcesso:
        mudar(ficha, Estado::kPerguntar,
              {.motivo = resposta.xMotivo,
               .recibo = resposta.recibo,
               .proximo = agora + std::max(resposta.espera, 1) * kSegundo});
        return false;
    case Desfecho::kEsperar:
        return voltar(ficha, agora + pausaDepoisDe(ficha.tentativas), resposta.xMotivo);
    case Desfecho::kExcesso:
        return voltar(ficha, agora + kPausaDoExcesso, resposta.xMotivo);
    case Desfecho::kCertificado:
        if (resposta.cStat == kOutraEmpresa && titularDe(ficha) == Titular::kAlheio)
            return respondido(ficha, resposta);
        return parar(ficha, resposta.xMotivo);
    // Of an inutilization nothing more can be asked than this. Who answers that it is there, and
    // when asked that it is not, is asked with pauses.
    case Desfecho::kJaEsta:
        if (ficha.tipo == Tipo::kInutilizacao) return respondido(ficha, resposta);
        return perguntarDepois(ficha,
                               ficha.tentativas > 1 ? pausaDepoisDe(ficha.tentativas - 1) : 0,
                               resposta.xMotivo);
    default:
        return respondido(ficha, resposta);
    }
}

bool Fluxo::respondido(const Ficha &ficha, const Resposta &resposta) {
    Resposta dita = resposta;
    std::string motivo;
    if (dita.desfecho == Desfecho::kAutorizado && ficha.tipo == Tipo::kNfce &&
        !mesmoConteudo(ficha, dita)) {
        dita.desfecho = Desfecho::kRecusado;
        motivo = "a SEFAZ tem outro conteúdo com esta chave: chame quem cuida do sistema";
    } else if (!encerra(ficha.tipo, dita.desfecho)) {
        motivo = std::to_string(dita.cStat) + " " + dita.xMotivo;
        if (const auto remedio = linhaDe(dita.cStat).remedio; !remedio.empty())
            motivo += "; " + std::string(remedio);
    }
    return mudar(ficha, Estado::kRespondido,
                 {.resposta = dita, .motivo = motivo, .tentativas = 0, .proximo = 0});
}

bool Fluxo::mesmoConteudo(const Ficha &ficha, const Resposta &resposta) {
    if (resposta.digest.empty()) return true; // some leave it out
    const std::string mensagem = meios_.fila.mensagem(ficha.id);
    return mensagem.find("<DigestValue>" + resposta.digest + "</DigestValue>") != std::string::npos;
}

// ---- asking ----

bool Fluxo::perguntar(const Ficha &ficha) {
    // There is no question about it: the same bytes again are one.
    if (ficha.tipo == Tipo::kInutilizacao || ficha.tipo == Tipo::kConsulta)
        return mudar(ficha, Estado::kAssinado, {.proximo = 0});
    if (parada(ficha) || !linhaLivre(ficha)) return false;
    const std::string tpAmb = std::to_string(ficha.tpAmb);
    const bool porRecibo = !ficha.recibo.empty();
    const Servico servico = porRecibo ? Servico::kRetAutorizacao : Servico::kConsultaProtocolo;
    const Retorno retorno = pedir(servico, ficha,
                                  porRecibo ? consultaDoRecibo(ficha.recibo, tpAmb)
                                            : consultaDaChave(ficha.chave, tpAmb));
    if (retorno.chegada == Chegada::kCertificado) return parar(ficha, retorno.motivo);
    Recusas recusas;
    auto resposta = retorno.chegada == Chegada::kResposta
                        ? lerResposta(servico, retorno.corpo, ficha.chave, recusas)
                        : std::nullopt;
    if (!resposta)
        return adiarMais(ficha, pausaDepoisDe(ficha.tentativas + 1),
                         retorno.motivo.empty() ? recusas.texto() : retorno.motivo);
    // A receipt that it does not know says nothing of the document.
    if (porRecibo && resposta->cStat == kReciboDesconhecido) return naoConsta(ficha);
    return perguntado(ficha, std::move(*resposta));
}

bool Fluxo::perguntado(const Ficha &ficha, Resposta resposta) {
    switch (resposta.desfecho) {
    case Desfecho::kEmProcesso:
    case Desfecho::kEsperar:
        return adiarMais(ficha, pausaDepoisDe(ficha.tentativas + 1), resposta.xMotivo);
    case Desfecho::kExcesso:
        return adiarMais(ficha, kPausaDoExcesso, resposta.xMotivo);
    case Desfecho::kCertificado:
        return parar(ficha, resposta.xMotivo);
    case Desfecho::kNaoConsta:
        return naoConsta(ficha);
    default:
        break;
    }
    if (ficha.tipo != Tipo::kCancelamento) return respondido(ficha, resposta);
    // Its note is authorized and nothing more: the event never arrived.
    if (resposta.evento.empty() && resposta.desfecho != Desfecho::kCancelado)
        return naoConsta(ficha);
    Resposta evento = eventoDe(resposta);
    if (!nossoEvento(ficha, resposta)) {
        evento.desfecho = Desfecho::kJaCancelado;
        evento.elemento.clear();
    }
    return respondido(ficha, evento);
}

// Whether the registered event is the one that was signed here, and not another request's.
bool Fluxo::nossoEvento(const Ficha &ficha, const Resposta &resposta) {
    const auto digestDe = [](std::string_view xml) {
        constexpr std::string_view kAbre = "<DigestValue>";
        const std::size_t abre = xml.find(kAbre);
        return abre == xml.npos ? std::string_view()
                                : xml.substr(abre, xml.find('<', abre + kAbre.size()) - abre);
    };
    const std::string_view dito = digestDe(resposta.evento); // some leave the signature out
    return dito.empty() || dito == digestDe(meios_.fila.mensagem(ficha.id));
}

// Asked by a receipt that is unknown, it is asked for by its key; by its key, it may go out again,
// unless another has taken its place: then it is asked for until it cannot arrive any more, and
// its number, which went out, is not used by two.
bool Fluxo::naoConsta(const Ficha &ficha) {
    if (!ficha.recibo.empty()) return anotar(ficha, {.recibo = "", .proximo = 0});
    if (ficha.tipo != Tipo::kNfce || !substituta(meios_.fila, ficha))
        return mudar(ficha, Estado::kAssinado, {.proximo = 0});
    const Momento desde = meios_.relogio.agora() - ficha.achado;
    if (desde >= 0 && desde < kAindaPodeChegar)
        return adiarMais(ficha, pausaDepoisDe(ficha.tentativas + 1),
                         "a SEFAZ ainda não a tem, e outro documento a substitui");
    return mudar(
        ficha, Estado::kRetirado,
        {.motivo = "a SEFAZ não a tem, e outro documento a substitui: inutilize o número " +
                   std::to_string(ficha.numero)});
}

} // namespace zel::envio
