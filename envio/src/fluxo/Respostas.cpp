// SPDX-License-Identifier: MIT
// What an answer leads to, and what is asked when none came.
#include "fluxo/Fluxo.h"

#include "fluxo/Destinos.h"
#include "mensagem/Lote.h"

#include <algorithm>
#include <array>
#include <utility>

namespace zel::envio {

namespace {

constexpr int kReciboDesconhecido = 106, kNaoCatalogado = 999;
constexpr int kAssinaturaDe = 290, kAssinaturaAte = 296; // of the certificate that signed
constexpr int kOutraEmpresa = 213;                       // than the one whose certificate signed
// What the answer to a question tells of a note; any other is about the question alone.
constexpr std::array kDizDaNota{Desfecho::kAutorizado, Desfecho::kCancelado, Desfecho::kDenegado,
                                Desfecho::kOutraChave, Desfecho::kJaInutilizado};
// So long after it was found a document may still be in the authority's hands, which takes its
// time, though it says that it does not have it. After that it refuses it as late.
constexpr Momento kAindaPodeChegar = 15 * kMinuto;

// What never went out from here is not asked for without end: so old a key may have no answer.
constexpr int kPerguntasVas = 5;

// A question that is refused is refused again: the pauses grow to half an hour.
Momento pausaDaRecusada(int tentativas) {
    constexpr int kMaisVezes = 5;
    return kMinuto << std::clamp(tentativas, 0, kMaisVezes);
}

// Done before, says the authority, and not what: the consultation by its key has it.
bool foiAntes(const Ficha &ficha, const Resposta &resposta) {
    if (resposta.desfecho == Desfecho::kJaEsta) return ficha.tipo != Tipo::kInutilizacao;
    return ficha.tipo == Tipo::kNfce &&
           (resposta.desfecho == Desfecho::kJaCancelado ||
            (resposta.desfecho == Desfecho::kDenegado && resposta.elemento.empty()));
}

} // namespace

// ---- what an answer leads to ----

bool Fluxo::responder(const Ficha &ficha, Resposta resposta) {
    const Momento agora = meios_.relogio.agora();
    // Who answers that it is there, and when asked that it is not, is asked with pauses.
    if (foiAntes(ficha, resposta))
        return perguntarDepois(ficha,
                               ficha.tentativas > 1 ? pausaDepoisDe(ficha.tentativas - 1) : 0,
                               resposta.xMotivo);
    switch (resposta.desfecho) {
    case Desfecho::kEmProcesso:
        mudar(ficha, Estado::kPerguntar,
              {.motivo = resposta.xMotivo,
               .recibo = resposta.recibo,
               .proximo = agora + std::max(resposta.espera, 1) * kSegundo});
        return false;
    case Desfecho::kEsperar:
        // Who cannot say what failed may have done it.
        if (resposta.cStat == kNaoCatalogado)
            return perguntarDepois(ficha, pausaDepoisDe(ficha.tentativas), resposta.xMotivo);
        return voltar(ficha, agora + pausaDepoisDe(ficha.tentativas), resposta.xMotivo);
    case Desfecho::kExcesso:
        return voltar(ficha, agora + kPausaDoExcesso, resposta.xMotivo);
    case Desfecho::kCertificado:
        if (resposta.cStat == kOutraEmpresa && titularDe(ficha) == Titular::kAlheio)
            return respondido(ficha, resposta);
        return certificadoRecusado(ficha, resposta);
    default:
        return respondido(ficha, resposta);
    }
}

// Waited so long that the certificate was exchanged meanwhile: not the new one is refused, and the
// authority, which has nothing of the document, gets the same content signed with that.
bool Fluxo::certificadoRecusado(const Ficha &ficha, const Resposta &resposta) {
    Recusas recusas;
    const auto agora = meios_.oficina.certificado(recusas);
    const std::string assinada = meios_.fila.mensagem(ficha.id);
    const bool outro = agora && assinada.find("<X509Certificate>") != assinada.npos &&
                       assinada.find('>' + agora->emBase64() + '<') == assinada.npos;
    if (!outro || resposta.cStat < kAssinaturaDe || resposta.cStat > kAssinaturaAte)
        return parar(ficha, resposta.xMotivo);
    const auto mudar = [&](Estado de, Estado para, const Mudanca &mudanca) {
        return meios_.fila.mudar(ficha.id, de, para, mudanca, meios_.relogio.agora(), descartadas_);
    };
    Fila::Transacao transacao(meios_.fila);
    return mudar(ficha.estado, Estado::kRespondido, {.resposta = resposta}) &&
           mudar(Estado::kRespondido, Estado::kRecusado, {}) &&
           mudar(Estado::kRecusado, Estado::kAchado,
                 {.mensagem = "", .motivo = "", .recibo = "", .tentativas = 0, .proximo = 0}) &&
           transacao.confirmar(descartadas_);
}

bool Fluxo::respondido(const Ficha &ficha, const Resposta &resposta) {
    Resposta dita = resposta;
    std::string motivo;
    Ficha sua = ficha;
    sua.desfecho = dita.desfecho;
    if (ficha.tipo == Tipo::kNfce && guardaSe(sua) && !mesmoConteudo(ficha, dita)) {
        // What never went out from here was sent by whoever did that before: it stands as it is
        // there.
        const bool deAntes =
            dita.desfecho == Desfecho::kAutorizado && nuncaSaiu(meios_.fila, ficha);
        dita.desfecho = deAntes ? Desfecho::kJaEsta : Desfecho::kRecusado;
        motivo = deAntes ? "autorizada antes, e não por esta fila: o XML está com quem a enviou"
                         : "a SEFAZ tem outro conteúdo com esta chave: chame quem cuida do sistema";
    } else if (ficha.tipo == Tipo::kNfce && dita.desfecho == Desfecho::kCancelado) {
        motivo = "a nota foi autorizada, e está cancelada na SEFAZ: o cupom dela não vale";
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
    return perguntado(ficha, *resposta);
}

bool Fluxo::perguntado(const Ficha &ficha, const Resposta &resposta) {
    switch (resposta.desfecho) {
    case Desfecho::kEmProcesso:
    case Desfecho::kEsperar:
        return adiarMais(ficha, pausaDepoisDe(ficha.tentativas + 1), resposta.xMotivo);
    case Desfecho::kExcesso:
        return adiarMais(ficha, kPausaDoExcesso, resposta.xMotivo);
    case Desfecho::kCertificado:
        return resposta.doDocumento ? certificadoRecusado(ficha, resposta)
                                    : parar(ficha, resposta.xMotivo);
    case Desfecho::kNaoConsta:
        return naoConsta(ficha);
    default:
        break;
    }
    if (ficha.tipo == Tipo::kNfce) return perguntadaNota(ficha, resposta);
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

// An answer by the receipt is the document's own; one about the receipt alone is no answer. A
// refused question says nothing of the note, which may be authorized: it is asked for until it is
// known.
bool Fluxo::perguntadaNota(const Ficha &ficha, const Resposta &resposta) {
    const bool diz =
        std::find(kDizDaNota.begin(), kDizDaNota.end(), resposta.desfecho) != kDizDaNota.end();
    if (!ficha.recibo.empty() && (!resposta.doDocumento || foiAntes(ficha, resposta)))
        return naoConsta(ficha);
    if (diz || !ficha.recibo.empty()) return respondido(ficha, resposta);
    const std::string dito = "a SEFAZ recusou a pergunta (" + std::to_string(resposta.cStat) + " " +
                             resposta.xMotivo + ")";
    if (ficha.tentativas >= kPerguntasVas && nuncaSaiu(meios_.fila, ficha))
        return recusar(ficha, dito +
                                  ". Achada tarde, não foi enviada: se outro programa a enviou, "
                                  "nada falta (e [[caixas]] desde deixa as outras dele fora); se "
                                  "não, venda de novo");
    return adiarMais(ficha, pausaDaRecusada(ficha.tentativas),
                     dito + ", e a nota pode estar lá: não a venda de novo antes de saber");
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
    const auto outra = ficha.tipo == Tipo::kNfce ? substituta(meios_.fila, ficha) : std::nullopt;
    if (!outra) return mudar(ficha, Estado::kAssinado, {.proximo = 0});
    const Momento desde = meios_.relogio.agora() - ficha.achado;
    if (desde >= 0 && desde < kAindaPodeChegar)
        return adiarMais(ficha, pausaDepoisDe(ficha.tentativas + 1),
                         "a SEFAZ ainda não a tem, e outro documento a substitui");
    return mudar(ficha, Estado::kRetirado,
                 {.motivo = "a SEFAZ não a tem, e outro documento a substitui" +
                            (outra->numero == ficha.numero
                                 ? std::string()
                                 : ": inutilize o número " + std::to_string(ficha.numero))});
}

} // namespace zel::envio
