// SPDX-License-Identifier: MIT
#include "mensagem/Resposta.h"

#include "base/Texto.h"
#include "base/Xml.h"
#include "comum/ChaveAcesso.h"
#include "comum/Zeros.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace zel::envio {

namespace {

constexpr std::size_t kMaiorMotivo = 500; // bytes of an xMotivo; the schema has 255 characters
constexpr int kMaiorEspera = 3600;        // seconds

// Codes of a lot that the table of outcomes does not tell apart.
constexpr int kRecebido = 103, kLoteProcessado = 104, kEmProcesso = 105, kEventosProcessados = 128;

// Where an answer has its document's own level. Source: Manual de Orientação do Contribuinte 7.0,
// Anexo I, "Web Services"; schemas 4.00. In the order of Servico.
struct Forma {
    std::string_view raiz;
    std::string_view item;    // what is kept of it; empty: the root, or nothing
    std::string_view inf;     // below the item
    std::string_view momento; // below inf
};
constexpr std::array<Forma, 6> kFormas{{
    {"retEnviNFe", "protNFe", "infProt", "dhRecbto"},
    {"retConsReciNFe", "protNFe", "infProt", "dhRecbto"},
    {"retInutNFe", "", "infInut", "dhRecbto"},
    {"retConsSitNFe", "protNFe", "infProt", "dhRecbto"},
    {"retConsStatServ", "", "", "dhRecbto"},
    {"retEnvEvento", "retEvento", "infEvento", "dhRegEvento"},
}};

int numeroDe(std::string_view texto, int maior) {
    int numero = 0;
    const auto [fim, erro] = std::from_chars(texto.data(), texto.data() + texto.size(), numero);
    const bool inteiro = erro == std::errc() && fim == texto.data() + texto.size();
    return inteiro && numero > 0 && numero <= maior ? numero : 0;
}

int codigoDe(const No &no) {
    return numeroDe(aparar(no.texto("cStat")), 9999);
}

std::string motivoDe(const No &no) {
    std::string motivo = aparar(no.texto("xMotivo"));
    std::size_t fim = std::min(motivo.size(), kMaiorMotivo);
    while (fim < motivo.size() && (static_cast<unsigned char>(motivo[fim]) & 0xC0) == 0x80)
        --fim;
    motivo.resize(fim);
    return motivo;
}

// "ID" and the fields that an inutilization's Id is made of; of a refusal some may be missing.
bool ehDaFaixa(const No &infInut, std::string_view id) {
    const struct {
        const char *nome;
        std::size_t largura;
    } kPartes[] = {{"cUF", 2},   {"ano", 2},    {"CNPJ", 14}, {"mod", 2},
                   {"serie", 3}, {"nNFIni", 9}, {"nNFFin", 9}};
    std::size_t lugar = 2;
    for (const auto &[nome, largura] : kPartes) {
        const std::string valor = aparar(infInut.texto(nome));
        if (lugar + largura > id.size()) return false;
        if (!valor.empty() && comZeros(valor, largura) != id.substr(lugar, largura)) return false;
        lugar += largura;
    }
    return lugar == id.size();
}

// The levels of an answer; the inner ones are null where a refused lot has none.
struct Niveis {
    No raiz, item, inf;
};

// False when it is about something else than was asked.
bool acharItem(Servico servico, const Forma &forma, std::string_view id, Niveis &niveis) {
    if (servico == Servico::kStatusServico) return true;
    if (servico == Servico::kInutilizacao) {
        niveis.item = niveis.raiz;
        niveis.inf = niveis.raiz.filho(forma.inf);
        return !niveis.inf || ehDaFaixa(niveis.inf, id);
    }
    const auto itens = niveis.raiz.filhos(forma.item);
    for (const No &item : itens) {
        const No inf = item.filho(forma.inf);
        // A refused event need not repeat its key.
        const bool calado = servico == Servico::kRecepcaoEvento && itens.size() == 1 &&
                            !inf.filho("chNFe") && !inf.filho("nProt");
        if (inf.texto("chNFe") == id || calado) niveis.item = item, niveis.inf = inf;
    }
    const std::string dita = niveis.raiz.texto("chNFe"); // of a consultation
    return (itens.empty() || niveis.item) && (dita.empty() || dita == id);
}

void lerNivel(const No &nivel, Resposta &resposta) {
    resposta.cStat = codigoDe(nivel);
    resposta.xMotivo = motivoDe(nivel);
    resposta.desfecho = linhaDe(resposta.cStat).desfecho;
}

// What was registered of the document since its authorization.
void lerCancelamento(const No &raiz, std::string_view id, Resposta &resposta) {
    const auto cancela = [](const No &inf) {
        return linhaDe(codigoDe(inf)).desfecho == Desfecho::kCancelado;
    };
    No registro;
    for (const No &proc : raiz.filhos("procEventoNFe")) {
        const No inf = proc.filho("retEvento/infEvento");
        const std::string tipo = proc.texto("evento/infEvento/tpEvento");
        if (inf.texto("chNFe") != id || (tipo != "110111" && tipo != "110112") || !cancela(inf))
            continue;
        resposta.evento = Documento::de(proc).texto();
        registro = inf;
    }
    // The form of before there were events.
    const No antigo = raiz.filho("retCancNFe/infCanc");
    if (!registro && cancela(antigo)) registro = antigo;
    if (registro && resposta.desfecho == Desfecho::kAutorizado) lerNivel(registro, resposta);
}

// Of a consultation the outer level says how things are now, the inner one how they were then.
void lerDesfecho(Servico servico, const Niveis &niveis, std::string_view id, Resposta &resposta) {
    const bool consulta = servico == Servico::kConsultaProtocolo;
    lerNivel(niveis.inf ? niveis.inf : niveis.raiz, resposta);
    if (!consulta) return;
    const Resposta entao = resposta;
    lerNivel(niveis.raiz, resposta);
    if (resposta.desfecho == Desfecho::kAutorizado && entao.desfecho == Desfecho::kAutorizado)
        resposta = entao;
    lerCancelamento(niveis.raiz, id, resposta);
}

void lerCampos(Servico servico, const Forma &forma, const Niveis &niveis, std::string_view id,
               Resposta &resposta) {
    const No &raiz = niveis.raiz;
    const No inf = niveis.inf ? niveis.inf : raiz;
    resposta.doDocumento = bool(niveis.inf);
    resposta.protocolo = aparar(inf.texto("nProt"));
    resposta.momento = aparar(inf.texto(forma.momento));
    resposta.digest = aparar(inf.texto("digVal"));
    if (resposta.desfecho == Desfecho::kOutraChave)
        resposta.chave = chaveCitada(resposta.xMotivo);
    else if (servico != Servico::kStatusServico && servico != Servico::kInutilizacao)
        resposta.chave = id;
    const No recibo = raiz.filho("infRec") ? raiz.filho("infRec") : raiz;
    if (resposta.cStat == kRecebido || resposta.cStat == kEmProcesso)
        resposta.recibo = aparar(recibo.texto("nRec"));
    resposta.espera = numeroDe(aparar(recibo.texto("tMed")), kMaiorEspera);
    // What the authority registered has a protocol; what it refused is not kept.
    if (niveis.item && !resposta.protocolo.empty())
        resposta.elemento = Documento::de(niveis.item).texto();
}

// Why it says too little to go by; empty when it does not.
std::string_view falta(Servico servico, const Niveis &niveis, const Resposta &resposta) {
    if (resposta.cStat == 0) return "a resposta não traz cStat";
    if (!niveis.inf && (resposta.cStat == kLoteProcessado || resposta.cStat == kEventosProcessados))
        return "a resposta é de um lote processado, e não diz nada do documento";
    const bool feito =
        resposta.desfecho == Desfecho::kAutorizado ||
        (servico != Servico::kConsultaProtocolo && (resposta.desfecho == Desfecho::kCancelado ||
                                                    resposta.desfecho == Desfecho::kInutilizado));
    return feito && resposta.protocolo.empty() ? "a resposta diz que foi feito, sem protocolo"
                                               : std::string_view();
}

} // namespace

// "Duplicidade de NF-e, com diferença na Chave de Acesso [chNFe:3526...][nRec:...]", with blanks
// or without.
std::string chaveCitada(std::string_view motivo) {
    constexpr std::string_view kMarca = "chNFe:";
    const std::size_t marca = motivo.find(kMarca);
    if (marca == motivo.npos) return {};
    const std::size_t inicio = motivo.find_first_not_of(' ', marca + kMarca.size());
    if (inicio == motivo.npos) return {};
    const auto chave = ChaveAcesso::ler(motivo.substr(inicio, ChaveAcesso::kDigitos));
    return chave && chave->integra() ? std::string(chave->texto()) : std::string();
}

std::optional<Resposta> lerResposta(Servico servico, std::string_view corpo, std::string_view id,
                                    Recusas &recusas) {
    const auto recusar = [&](std::string_view valor, std::string_view motivo) {
        recusas.juntar("resposta", valor, motivo);
        return std::nullopt;
    };
    const auto qual = static_cast<std::size_t>(servico);
    if (qual >= kFormas.size()) return recusar("", "este endereço não é de um serviço");
    const Forma &forma = kFormas[qual];
    std::string motivo;
    const auto documento = Documento::ler(corpo, motivo);
    if (!documento) return recusar("", motivo);
    Niveis niveis{documento->raiz(), {}, {}};
    if (niveis.raiz.nome() != forma.raiz)
        return recusar(niveis.raiz.nome(),
                       "não é resposta deste serviço, que seria " + std::string(forma.raiz));
    if (!acharItem(servico, forma, id, niveis))
        return recusar(forma.raiz, "a resposta é sobre outra coisa que a perguntada");
    Resposta resposta;
    lerDesfecho(servico, niveis, id, resposta);
    lerCampos(servico, forma, niveis, id, resposta);
    const std::string_view pouco = falta(servico, niveis, resposta);
    if (!pouco.empty()) return recusar(std::to_string(resposta.cStat), pouco);
    return resposta;
}

// ---- what is kept ----

namespace {

struct Guardado {
    std::string_view elemento, assinado, raiz, versao;
};
constexpr std::array<Guardado, 3> kGuardados{{
    {"protNFe", "NFe", "nfeProc", "4.00"},
    {"retEvento", "evento", "procEventoNFe", "1.00"},
    {"retInutNFe", "inutNFe", "ProcInutNFe", "4.00"},
}};

// The element's bytes, from its "<" to its last ">". Empty when there is none.
std::string_view recortar(std::string_view texto, std::string_view nome) {
    const std::string abre = '<' + std::string(nome), fecha = "</" + std::string(nome) + '>';
    std::size_t inicio = texto.find(abre);
    while (inicio != texto.npos && inicio + abre.size() < texto.size() &&
           std::string_view(" >\t\r\n").find(texto[inicio + abre.size()]) == std::string_view::npos)
        inicio = texto.find(abre, inicio + 1);
    const std::size_t fim = texto.rfind(fecha);
    if (inicio == texto.npos || fim == texto.npos || fim < inicio) return {};
    return texto.substr(inicio, fim + fecha.size() - inicio);
}

} // namespace

std::string guardadoDe(std::string_view mensagem, std::string_view elemento) {
    std::string motivo;
    const auto lido = Documento::ler(elemento, motivo);
    const auto *forma = std::find_if(kGuardados.begin(), kGuardados.end(), [&](const Guardado &g) {
        return lido && lido->raiz().nome() == g.elemento;
    });
    if (forma == kGuardados.end()) return {};
    const std::string_view assinado = recortar(mensagem, forma->assinado);
    if (assinado.empty()) return {};
    std::string texto = '<' + std::string(forma->raiz);
    texto.append(" xmlns=\"").append(kEspacoNfe).append("\" versao=\"").append(forma->versao);
    return texto.append("\">").append(assinado).append(elemento).append("</").append(forma->raiz) +
           '>';
}

std::optional<NotaGuardada> notaDe(std::string_view guardado, std::string_view chave) {
    const Guardado &forma = kGuardados[0];
    const std::string_view assinada = recortar(guardado, forma.assinado),
                           elemento = recortar(guardado, forma.elemento);
    std::string motivo;
    const auto lida = Documento::ler(assinada, motivo);
    const No nfe = lida ? lida->raiz() : No();
    if (nfe.filho("infNFe").atributo("Id") != "NFe" + std::string(chave)) return {};
    // As the service of receipts would answer it today.
    constexpr std::string_view kResposta = "retConsReciNFe";
    std::string resposta = '<' + std::string(kResposta) + " xmlns=\"" + std::string(kEspacoNfe);
    resposta.append("\">").append(elemento).append("</").append(kResposta).append(">");
    Recusas recusas;
    auto dita = lerResposta(Servico::kRetAutorizacao, resposta, chave, recusas);
    if (!dita || dita->protocolo.empty() ||
        dita->digest != nfe.texto("Signature/SignedInfo/Reference/DigestValue"))
        return {};
    dita->elemento = elemento;
    return NotaGuardada{std::string(assinada), *std::move(dita)};
}

} // namespace zel::envio
