// SPDX-License-Identifier: MIT
#include "fluxo/Destinos.h"

#include "base/Xml.h"
#include "fluxo/Prazos.h"

#include <algorithm>
#include <array>

namespace zel::envio {

namespace {

constexpr std::string_view kEnvioParado = "envio parado: ";

struct Destino {
    Tipo tipo;
    Servico servico;
    std::array<Desfecho, 3> fins; // answers that it was meant for
    std::array<Desfecho, 3> guardados;
};

constexpr Destino kDestinos[] = {
    {Tipo::kNfce,
     Servico::kAutorizacao,
     {Desfecho::kAutorizado, Desfecho::kCancelado, Desfecho::kJaEsta},
     {Desfecho::kAutorizado, Desfecho::kCancelado, Desfecho::kDenegado}},
    {Tipo::kCancelamento,
     Servico::kRecepcaoEvento,
     {Desfecho::kCancelado, Desfecho::kJaEsta, Desfecho::kJaCancelado},
     {Desfecho::kCancelado}},
    {Tipo::kInutilizacao,
     Servico::kInutilizacao,
     {Desfecho::kInutilizado, Desfecho::kJaInutilizado, Desfecho::kJaEsta},
     {Desfecho::kInutilizado}},
    {Tipo::kConsulta, Servico::kConsultaProtocolo, {}, {}},
};

const Destino &destinoDe(Tipo tipo) {
    const auto *destino = std::find_if(std::begin(kDestinos), std::end(kDestinos),
                                       [&](const Destino &d) { return d.tipo == tipo; });
    return destino == std::end(kDestinos) ? kDestinos[0] : *destino;
}

// kNenhum fills the rows of the table, and is no answer.
bool tem(const std::array<Desfecho, 3> &desfechos, Desfecho desfecho) {
    return desfecho != Desfecho::kNenhum &&
           std::find(desfechos.begin(), desfechos.end(), desfecho) != desfechos.end();
}

// Of several that may have a place: a delivered one, then one on its way.
int quantoVale(const Ficha &ficha) {
    return ficha.estado == Estado::kEntregue ? 2 : acabou(ficha.estado) ? 0 : 1;
}

std::string pastaDe(const Configuracao &config, const std::string &dita, std::string_view outra) {
    std::string pasta = dita.empty() ? config.diretorio + std::string(outra) : dita;
    if (!pasta.ends_with('/')) pasta += '/';
    return pasta;
}

} // namespace

std::string textoDaParada(const std::string &motivo) {
    return std::string(kEnvioParado) + motivo + "; resolva e diga: zel envio continuar";
}

void continuar(Fila &fila) {
    fila.anotar(kAnotacaoParada, "");
    fila.adiantar(kEnvioParado);
}

void procurarParaAlguem(Procura &procura, int horas, Momento agora) {
    // A till that takes a document back issues it again at once.
    constexpr Momento kReemissao = 5 * kMinuto;
    procura.atrasadoAntesDe = agora - horas * kHora;
    procura.retiradoAntesDe = agora - kReemissao;
}

std::string remedioDaRetirada(const Ficha &ficha) {
    if (ficha.estado != Estado::kRetirado) return {};
    return "o caixa a retirou, e nada foi emitido no lugar dela: entregue " + ficha.origem +
           ", ou a cópia, outra vez com: zel enviar ARQUIVO; se já não pode ir, venda de novo. "
           "Não inutilize o número antes disso.";
}

std::string anotacaoDaDuvida(const std::string &chave) {
    return "duvida:" + chave;
}

std::optional<std::string> duvidaDe(Fila &fila, const Ficha &ficha) {
    if (ficha.tipo != Tipo::kNfce || ficha.tpEmis != 1) return {};
    const std::string chave = fila.anotado(anotacaoDaDuvida(ficha.chave));
    const auto nova = fila.porChave(chave, Tipo::kNfce);
    if (!nova || substituta(fila, ficha)) return {};
    return "a nota " + std::to_string(nova->numero) + " (" + chave +
           "), emitida sem conexão logo depois com o mesmo conteúdo, parece estar no lugar desta, "
           "e o caixa já não o diz. Se está, entregue " +
           nova->origem + " outra vez com: zel enviar ARQUIVO --substitui " + ficha.chave +
           "; se foi outra venda, venda esta de novo";
}

std::string filaDe(const Configuracao &config) {
    return pastaDe(config, config.fila.diretorio, "fila/");
}

std::string guardadosDe(const Configuracao &config) {
    return pastaDe(config, config.fila.guardados, "guardados/");
}

Servico servicoDe(Tipo tipo) {
    return destinoDe(tipo).servico;
}

std::string linhaDaFicha(const Configuracao &config, const Ficha &ficha) {
    constexpr std::string_view kId = "ID"; // of an inutilization
    std::string_view cUF = ficha.chave;
    if (cUF.starts_with(kId)) cUF.remove_prefix(kId.size());
    if (cUF.size() < 2) cUF = config.cUF;
    return std::string(cUF.substr(0, 2)) + "/" + std::to_string(ficha.tpAmb);
}

bool encerra(Tipo tipo, Desfecho desfecho) {
    return tipo == Tipo::kConsulta || tem(destinoDe(tipo).fins, desfecho);
}

bool guardaSe(const Ficha &ficha) {
    return tem(destinoDe(ficha.tipo).guardados, ficha.desfecho);
}

namespace {

template <class Qual>
bool algumPasso(Fila &fila, const Ficha &ficha, Qual qual) {
    const auto passos = fila.passos(ficha.id);
    return std::any_of(passos.begin(), passos.end(), qual);
}

} // namespace

bool jaSaiu(Fila &fila, const Ficha &ficha) {
    return algumPasso(fila, ficha, [](const PassoDado &passo) {
        return passo.de == Estado::kEnviado && passo.para == Estado::kPerguntar;
    });
}

bool nuncaSaiu(Fila &fila, const Ficha &ficha) {
    return !algumPasso(fila, ficha,
                       [](const PassoDado &passo) { return passo.para == Estado::kEnviado; });
}

bool podeJaEstar(Fila &fila, const Ficha &ficha, const ConfigFila &config) {
    if (ficha.tipo != Tipo::kNfce || ficha.tpEmis != 1) return false;
    const auto prazo = prazoDe(fila, ficha, config);
    return prazo && *prazo < ficha.achado && nuncaSaiu(fila, ficha) &&
           !algumPasso(fila, ficha,
                       [](const PassoDado &passo) { return passo.para == Estado::kPerguntar; });
}

std::optional<Ficha> substituta(Fila &fila, const Ficha &ficha) {
    if (auto outra = fila.substituta(ficha.chave)) return outra;
    if (ficha.tpEmis != 1) return {};
    std::optional<Ficha> achada;
    for (Ficha &esta : fila.porNumero(ficha.cnpj, ficha.tpAmb, ficha.serie, ficha.numero))
        if (esta.tpEmis == 9 && esta.id > ficha.id && esta.estado != Estado::kRetirado &&
            (!achada || quantoVale(esta) >= quantoVale(*achada)))
            achada = std::move(esta);
    return achada;
}

bool autorizada(Fila &fila, const Ficha &ficha) {
    const auto agora = fila.ficha(ficha.id);
    return agora && agora->estado == Estado::kEntregue && agora->desfecho == Desfecho::kAutorizado;
}

Achado pedidoDeSubstituicao(const Ficha &velha, const Ficha &nova) {
    constexpr std::size_t kMomento = 19; // the rest is the zone
    const std::string quando = std::max(velha.momentoResposta, nova.momentoResposta);
    Documento documento = Documento::novo("EnvioEvento", {});
    No evento = documento.raiz().acrescentar("Evento");
    evento.acrescentar("tpAmb", std::to_string(velha.tpAmb));
    evento.acrescentar("ChaAcesso", velha.chave);
    evento.acrescentar("NtfCnpjEmissor", velha.cnpj);
    No informado = evento.acrescentar("EveInf");
    informado.acrescentar("EveTp", "110111");
    informado.acrescentar("EveDh", quando.substr(0, kMomento));
    informado.acrescentar("EveFusoHorario", quando.substr(std::min(kMomento, quando.size())));
    No detalhe = informado.acrescentar("Evedet");
    detalhe.acrescentar("EvenProt", velha.protocolo);
    detalhe.acrescentar("EvexJust", "Substituida por documento emitido em contingencia offline");
    Achado achado = velha;
    achado.tipo = Tipo::kCancelamento;
    achado.origem = "substituicao";
    achado.original = documento.texto();
    achado.substitui = nova.chave;
    achado.dhEmi = quando;
    achado.troco.reset();
    return achado;
}

// Whichever of the two is authorized last, or what is learned last.
void cancelarSubstituida(Fila &fila, const Ficha &ficha, Momento agora, Recusas &recusas) {
    const auto outra = ficha.substitui.empty() ? substituta(fila, ficha)
                                               : fila.porChave(ficha.substitui, Tipo::kNfce);
    if (!outra) return;
    const Ficha &velha = ficha.substitui.empty() ? ficha : *outra;
    const Ficha &nova = ficha.substitui.empty() ? *outra : ficha;
    if (velha.estado == Estado::kPerguntar || velha.estado == Estado::kEnviado)
        fila.adiar(velha.id, velha.estado, {.proximo = 0}, agora, recusas);
    if (autorizada(fila, velha) && autorizada(fila, nova))
        fila.achar(pedidoDeSubstituicao(velha, nova), agora, recusas);
}

void seguirSubstituicao(Fila &fila, std::int64_t id, Momento agora, Recusas &recusas) {
    const auto ficha = fila.ficha(id);
    if (ficha && autorizada(fila, *ficha)) cancelarSubstituida(fila, *ficha, agora, recusas);
}

Resposta eventoDe(const Resposta &consulta) {
    Resposta evento = consulta;
    std::string motivo;
    const auto lido = Documento::ler(consulta.evento, motivo);
    const No retorno = lido ? lido->raiz().procurar("retEvento") : No();
    const No infEvento = retorno.filho("infEvento");
    evento.elemento.clear();
    evento.desfecho = Desfecho::kCancelado;
    if (!infEvento) return evento;
    evento.cStat = std::atoi(infEvento.texto("cStat").c_str());
    evento.xMotivo = infEvento.texto("xMotivo");
    evento.protocolo = infEvento.texto("nProt");
    evento.momento = infEvento.texto("dhRegEvento");
    Documento copia = Documento::novo("x", kEspacoNfe);
    const No copiada = copia.raiz().acrescentarCopia(retorno);
    const std::string texto = copia.texto();
    const std::size_t inicio = texto.find("<retEvento"), fim = texto.rfind("</x>");
    if (copiada && inicio < fim && fim != texto.npos)
        evento.elemento = texto.substr(inicio, fim - inicio);
    return evento;
}

} // namespace zel::envio
