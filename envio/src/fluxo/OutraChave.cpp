// SPDX-License-Identifier: MIT
// The authority has the number of a document with another key, which it names: what became of that
// one is found out first, and decides what is said of this one. Nothing is sold again unseen.
#include "fluxo/Fluxo.h"

#include "fluxo/Destinos.h"
#include "mensagem/Lote.h"

#include <algorithm>
#include <utility>

namespace zel::envio {

namespace {

std::string autorizacaoDe(const std::string &momento, const std::string &protocolo) {
    return "autorizada em " + momento + ", protocolo " + protocolo;
}

std::string numeroDe(const Ficha &ficha, const std::string &chave) {
    return "na SEFAZ o número " + std::to_string(ficha.numero) + " é da nota " + chave + ", ";
}

// The till's own reissue of one sale: online, then offline under the same number.
bool mesmaVenda(const Ficha &a, const Ficha &b) {
    return a.caixa == b.caixa && a.total == b.total && a.consumidor == b.consumidor &&
           a.tpEmis != b.tpEmis;
}

bool jaVoltou(Fila &fila, const Ficha &ficha) {
    const auto passos = fila.passos(ficha.id);
    return std::any_of(passos.begin(), passos.end(), [](const PassoDado &passo) {
        return passo.de == Estado::kRetirado && passo.para == Estado::kPerguntar;
    });
}

std::string textoDaNossa(const Ficha &ficha, const Ficha &outra) {
    const std::string inicio = numeroDe(ficha, outra.chave);
    if (outra.desfecho != Desfecho::kAutorizado)
        return inicio + "que nesta fila está " + std::string(nomeDe(outra.estado)) + " (" +
               (outra.motivo.empty() ? outra.xMotivo : outra.motivo) +
               "): chame quem cuida do sistema antes de vender de novo";
    const std::string quando = autorizacaoDe(outra.momentoResposta, outra.protocolo);
    if (mesmaVenda(ficha, outra))
        return inicio + "desta mesma venda, " + quando +
               ": vale aquela. Entregue ao consumidor o cupom dela, e não venda de novo";
    return inicio + "outra venda (" + outra.caixa + ", emitida em " + outra.dhEmi + "), " + quando +
           ": venda de novo, com outro número, e diga --substitui " + ficha.chave +
           " ao transmitir";
}

std::string textoDaAlheia(const Ficha &ficha, const std::string &chave, const Resposta &resposta) {
    const std::string inicio = numeroDe(ficha, chave) + "que não está nesta fila";
    if (resposta.desfecho == Desfecho::kAutorizado)
        return inicio + ": " + autorizacaoDe(resposta.momento, resposta.protocolo) +
               ". Veja em que caixa ou computador foi emitida: se é esta mesma venda, vale aquela; "
               "se não é, venda de novo com outro número, e diga --substitui " +
               ficha.chave + " ao transmitir";
    return inicio + "; dela a SEFAZ diz: " + std::to_string(resposta.cStat) + " " +
           resposta.xMotivo + ". Chame quem cuida do sistema antes de vender de novo";
}

} // namespace

// What a person is told of a document whose number is another's; none while it is not known.
std::optional<std::string> Fluxo::outraDoNumero(const Ficha &ficha) {
    const std::string chave = chaveCitada(ficha.xMotivo);
    if (chave.empty() || chave == ficha.chave) return ficha.motivo;
    const auto outra = meios_.fila.porChave(chave, Tipo::kNfce);
    // One that was taken back unsigned is not what the authority has: another program sent it.
    if (outra && !(outra->estado == Estado::kRetirado && meios_.fila.mensagem(outra->id).empty()))
        return outraDaFila(ficha, *outra);
    return outraAlheia(ficha, chave);
}

std::optional<std::string> Fluxo::outraDaFila(const Ficha &ficha, const Ficha &outra) {
    // Taken back, and there all the same: it is asked for, once.
    const bool voltou = outra.estado == Estado::kRetirado && !jaVoltou(meios_.fila, outra);
    if (acabou(outra.estado) && !voltou) return textoDaNossa(ficha, outra);
    Recusas recusas;
    Fila::Transacao transacao(meios_.fila);
    if (voltou)
        mudar(outra, Estado::kPerguntar,
              {.motivo = "retirada, e a SEFAZ diz que a tem", .tentativas = 0, .proximo = 0});
    else if (ficha.tentativas == 0 && outra.estado == Estado::kPerguntar)
        anotar(outra, {.proximo = 0});
    adiarMais(ficha, pausaDepoisDe(ficha.tentativas + 1),
              numeroDe(ficha, outra.chave) +
                  "que está sendo perguntada: não venda de novo antes de saber o que foi dela");
    transacao.confirmar(recusas);
    return {};
}

std::optional<std::string> Fluxo::outraAlheia(const Ficha &ficha, const std::string &chave) {
    if (parada(ficha) || !linhaLivre(ficha)) return {};
    Ficha outra = ficha;
    outra.chave = chave;
    const Retorno retorno = pedir(Servico::kConsultaProtocolo, outra,
                                  consultaDaChave(chave, std::to_string(ficha.tpAmb)));
    if (retorno.chegada == Chegada::kCertificado) return parar(ficha, retorno.motivo), std::nullopt;
    Recusas recusas;
    const auto resposta =
        retorno.chegada == Chegada::kResposta
            ? lerResposta(Servico::kConsultaProtocolo, retorno.corpo, chave, recusas)
            : std::nullopt;
    const Desfecho desfecho = resposta ? resposta->desfecho : Desfecho::kEsperar;
    if (desfecho == Desfecho::kCertificado) return parar(ficha, resposta->xMotivo), std::nullopt;
    const bool excesso = desfecho == Desfecho::kExcesso;
    if (!excesso && desfecho != Desfecho::kEsperar && desfecho != Desfecho::kEmProcesso)
        return textoDaAlheia(ficha, chave, *resposta);
    adiarMais(ficha, excesso ? kPausaDoExcesso : pausaDepoisDe(ficha.tentativas + 1),
              numeroDe(ficha, chave) +
                  "que ainda não se pôde consultar: não venda de novo antes de saber o que foi "
                  "dela");
    return {};
}

} // namespace zel::envio
