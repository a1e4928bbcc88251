// SPDX-License-Identifier: MIT
#include "traducao/Pedidos.h"

#include "base/Texto.h"
#include "comum/ChaveAcesso.h"
#include "comum/Digitos.h"
#include "comum/Estados.h"
#include "comum/Zeros.h"

#include <algorithm>
#include <initializer_list>
#include <set>
#include <span>

namespace zel::envio {

namespace {

using Parte = ChaveAcesso::Parte;

struct Elemento {
    std::string_view nome;
    std::string valor;
};

void acrescentar(No &no, std::initializer_list<Elemento> elementos) {
    for (const auto &[nome, valor] : elementos)
        no.acrescentar(nome, valor);
}

// What a request says, element by element: each question answers with a value that the message can
// hold, or adds why not.
class Leitor {
public:
    Leitor(const No &pedido, Recusas &recusas) : pedido_(pedido), recusas_(recusas) {}

    std::string texto(std::string_view caminho) const { return aparar(pedido_.texto(caminho)); }

    void recusar(std::string_view caminho, std::string_view valor, std::string_view motivo) {
        recusas_.juntar(std::string(pedido_.nome()) + "/" + std::string(caminho), valor, motivo);
    }

    // The factory's 3 is homologation.
    std::string tpAmb(std::string_view caminho) {
        std::string valor = texto(caminho);
        if (valor == "1" || valor == "2") return valor;
        if (valor != "3")
            recusar(caminho, valor,
                    "o ambiente é 1, 2 ou 3: acerte CONFIGURACAO\\TipoAmbiente do caixa");
        return "2";
    }

    std::string justificativa(std::string_view caminho) {
        std::string valor = texto(caminho);
        if (!ehTexto(valor, 15, 255))
            recusar(caminho, valor,
                    "a justificativa tem de 15 a 255 caracteres: peça de novo com uma mais longa");
        return valor;
    }

    // Of up to nine digits, without zeros in front; at least `minimo`.
    std::string numero(std::string_view caminho, std::size_t largura, bool zero) {
        const std::string valor = texto(caminho);
        std::string digitos = valor;
        digitos.erase(0, std::min(digitos.find_first_not_of('0'), digitos.size()));
        if (digitos.empty() && !valor.empty() && zero) digitos = "0";
        if (!soDigitos(digitos) || digitos.size() > largura) {
            recusar(caminho, valor,
                    zero ? "não é uma série, de 0 a 999"
                         : "não é um número de NFC-e, de 1 a 999999999");
            return {};
        }
        return digitos;
    }

    // An NFC-e's key that holds together.
    std::optional<ChaveAcesso> chave(std::string_view caminho) {
        const std::string valor = texto(caminho);
        const auto lida = ChaveAcesso::ler(valor);
        if (!lida || !lida->integra())
            recusar(caminho, valor, "não é uma chave de acesso: 44 dígitos, o último verificador");
        else if (lida->parte(Parte::kMod) != "65" ||
                 procurarEstadoPorCodigo(lida->parte(Parte::kCUF)) == nullptr)
            recusar(caminho, valor, "a chave não é de NFC-e (modelo 65) de um estado");
        else
            return lida;
        return {};
    }

private:
    const No &pedido_;
    Recusas &recusas_;
};

// ---- what the till writes, and nothing else ----

// An element of a request, by its path below the root; what is always the same is said here.
struct ElementoDoPedido {
    std::string_view caminho, fixo = {};
};
constexpr ElementoDoPedido kDoEvento[] = {
    {"ModeloDocumento", "NFCe"},
    {"Versao", "1.00"},
    {"Evento"},
    {"Evento/NtfCnpjEmissor"},
    {"Evento/NtfNumero"},
    {"Evento/NtfSerie"},
    {"Evento/tpAmb"},
    {"Evento/ChaAcesso"},
    {"Evento/EveInf"},
    {"Evento/EveInf/EveDh"},
    {"Evento/EveInf/EveFusoHorario"},
    {"Evento/EveInf/EveTp", "110111"},
    {"Evento/EveInf/EvenSeq", "1"},
    {"Evento/EveInf/Evedet"},
    {"Evento/EveInf/Evedet/EveDesc", "Cancelamento"},
    {"Evento/EveInf/Evedet/EvenProt"},
    {"Evento/EveInf/Evedet/EvexJust"},
};
constexpr ElementoDoPedido kDaInutilizacao[] = {
    {"ModeloDocumento", "NFCe"}, {"Versao", "3.10"}, {"CnpjEmissor"}, {"tpAmb"},
    {"NumeroInicial"},           {"NumeroFinal"},    {"Serie"},       {"Justificativa"},
};
constexpr ElementoDoPedido kDaConsulta[] = {
    {"ModeloDocumento", "NFCe"}, {"Versao", "3.10"},   {"tpAmb"}, {"CnpjEmissor"},
    {"NumeroInicial"},           {"NumeroFinal"},      {"Serie"}, {"ChaveAcesso"},
    {"DataEmissaoInicial"},      {"DataEmissaoFinal"}, {"dhUF"},
};

struct PedidoDoCaixa {
    std::string_view raiz;
    std::span<const ElementoDoPedido> elementos;
};
constexpr PedidoDoCaixa kPedidos[] = {
    {"EnvioEvento", kDoEvento}, {"Inutilizacao", kDaInutilizacao}, {"Consulta", kDaConsulta}};

class Forma {
public:
    Forma(std::span<const ElementoDoPedido> elementos, Recusas &recusas)
        : elementos_(elementos), recusas_(recusas) {}

    // What no message would hold is refused by name, never lost in silence.
    void conferir(const No &pai, const std::string &caminho) {
        recusarSe(pai.misturado() || !pai.atributos().empty(), pai,
                  "tem texto ou atributos que o caixa não escreve");
        std::set<std::string_view> vistos;
        for (const No &filho : pai.filhos()) {
            if (recusas_.cheias()) return;
            const std::string este =
                caminho + (caminho.empty() ? "" : "/") + std::string(filho.nome());
            const auto linha = std::ranges::find(elementos_, este, &ElementoDoPedido::caminho);
            const bool conhecido = linha != elementos_.end();
            recusarSe(!conhecido || filho.espaco() != pai.espaco(), filho,
                      "o caixa não escreve este elemento, e o pedido não o teria");
            if (!conhecido) continue;
            recusarSe(!vistos.insert(filho.nome()).second, filho, "está mais de uma vez");
            const std::string valor = aparar(filho.texto());
            recusarSe(!linha->fixo.empty() && valor != linha->fixo, filho,
                      "o caixa escreve " + std::string(linha->fixo));
            conferir(filho, este);
        }
    }

private:
    void recusarSe(bool errado, const No &no, const std::string &motivo) {
        if (errado)
            recusas_.juntar(no.caminho(), no.texto(),
                            motivo + ": peça de novo, e envie o pedido como o caixa o gravou");
    }

    std::span<const ElementoDoPedido> elementos_;
    Recusas &recusas_;
};

// ---- cancellation: Manual de Orientação do Contribuinte 7.0, group "Evento de Cancelamento"; by
// substitution: Nota Técnica 2018.004 ----

// The number and series beside the key are the application's word for what it means to cancel.
void conferirNumero(Leitor &leitor, const ChaveAcesso &chave) {
    const struct {
        std::string_view caminho;
        Parte parte;
    } kPartes[] = {{"Evento/NtfNumero", Parte::kNNF}, {"Evento/NtfSerie", Parte::kSerie}};
    for (const auto &[caminho, parte] : kPartes) {
        const std::string valor = leitor.texto(caminho);
        const std::string_view daChave = chave.parte(parte);
        if (!valor.empty() && comZeros(valor, daChave.size()) != daChave)
            leitor.recusar(caminho, valor, "a chave é de outro documento: " + std::string(daChave));
    }
}

// Author of the event: the issuer that the key names, a CPF there with three zeros in front.
Elemento autor(Leitor &leitor, const ChaveAcesso &chave) {
    const std::string_view caminho = "Evento/NtfCnpjEmissor";
    const std::string valor = leitor.texto(caminho);
    const bool cpf = valor.size() == 11;
    if (!soDigitos(valor) || (!cpf && valor.size() != 14) ||
        comZeros(valor, 14) != chave.parte(Parte::kCNPJ))
        leitor.recusar(caminho, valor,
                       "o emitente não é o da chave, " + std::string(chave.parte(Parte::kCNPJ)) +
                           ": acerte EMIT\\CNPJ do caixa");
    return {cpf ? "CPF" : "CNPJ", valor};
}

std::string momento(Leitor &leitor) {
    std::string quando =
        leitor.texto("Evento/EveInf/EveDh") + leitor.texto("Evento/EveInf/EveFusoHorario");
    if (!ehMomento(quando))
        leitor.recusar("Evento/EveInf/EveDh", quando,
                       "não é data, hora e fuso (EveFusoHorario), como "
                       "2026-01-31T12:00:00-03:00");
    return quando;
}

std::string protocolo(Leitor &leitor, const ContextoPedido &contexto) {
    const std::string_view caminho = "Evento/EveInf/Evedet/EvenProt";
    std::string valor = leitor.texto(caminho);
    if (valor.empty()) valor = contexto.protocolo;
    if (!soDigitos(valor) || (valor.size() != 15 && valor.size() != 17))
        leitor.recusar(caminho, valor,
                       valor.empty()
                           ? "o pedido não diz o protocolo da autorização: informe-o (15 dígitos)"
                           : "o protocolo da autorização tem 15 dígitos");
    return valor;
}

void acrescentarDetalhe(No &infEvento, bool substituicao, const ChaveAcesso &chave,
                        std::string_view nProt, std::string_view xJust, const Configuracao &config,
                        const ContextoPedido &contexto) {
    No det = infEvento.acrescentar("detEvento");
    det.definirAtributo("versao", "1.00");
    det.acrescentar("descEvento", substituicao ? "Cancelamento por substituicao" : "Cancelamento");
    if (substituicao)
        acrescentar(det, {{"cOrgaoAutor", std::string(chave.parte(Parte::kCUF))},
                          {"tpAutor", "1"},
                          {"verAplic", config.verAplic}});
    acrescentar(det, {{"nProt", std::string(nProt)}, {"xJust", std::string(xJust)}});
    if (substituicao) det.acrescentar("chNFeRef", contexto.substituta);
}

Documento traduzirEvento(Leitor &leitor, const Configuracao &config, const ContextoPedido &contexto,
                         Recusas &recusas) {
    const bool substituicao = !contexto.substituta.empty();
    const std::string tpEvento = substituicao ? "110112" : "110111";
    if (leitor.texto("Evento/EveInf/EveTp").empty())
        leitor.recusar("Evento/EveInf/EveTp", "", "falta: só 110111, cancelamento, é conhecido");
    const std::string tpAmb = leitor.tpAmb("Evento/tpAmb"), quando = momento(leitor),
                      nProt = protocolo(leitor, contexto),
                      xJust = leitor.justificativa("Evento/EveInf/Evedet/EvexJust");
    if (!soDigitos(contexto.idLote) || contexto.idLote.size() > 15)
        recusas.juntar("idLote", contexto.idLote, "tem de 1 a 15 dígitos");
    const auto chave = leitor.chave("Evento/ChaAcesso");
    if (!chave) return {};
    conferirNumero(leitor, *chave);
    if (substituicao) conferirSubstituta(*chave, contexto.substituta, "substituta", recusas);

    Documento lote = Documento::novo("envEvento", kEspacoNfe);
    lote.raiz().definirAtributo("versao", "1.00");
    lote.raiz().acrescentar("idLote", contexto.idLote);
    No evento = lote.raiz().acrescentar("evento");
    evento.definirAtributo("versao", "1.00");
    No infEvento = evento.acrescentar("infEvento");
    infEvento.definirAtributo("Id", "ID" + tpEvento + std::string(chave->texto()) + "01");
    acrescentar(infEvento, {{"cOrgao", std::string(chave->parte(Parte::kCUF))},
                            {"tpAmb", tpAmb},
                            autor(leitor, *chave),
                            {"chNFe", std::string(chave->texto())},
                            {"dhEvento", quando},
                            {"tpEvento", tpEvento},
                            {"nSeqEvento", "1"},
                            {"verEvento", "1.00"}});
    acrescentarDetalhe(infEvento, substituicao, *chave, nProt, xJust, config, contexto);
    return lote;
}

// ---- inutilization: Manual de Orientação do Contribuinte 7.0, group DP ----

Documento traduzirInutilizacao(Leitor &leitor, const Configuracao &config,
                               const ContextoPedido &contexto, Recusas &recusas) {
    const std::string tpAmb = leitor.tpAmb("tpAmb"), CNPJ = leitor.texto("CnpjEmissor"),
                      serie = leitor.numero("Serie", 3, true),
                      nNFIni = leitor.numero("NumeroInicial", 9, false),
                      nNFFin = leitor.numero("NumeroFinal", 9, false),
                      xJust = leitor.justificativa("Justificativa");
    if (!soDigitos(CNPJ) || CNPJ.size() != 14)
        leitor.recusar("CnpjEmissor", CNPJ, "não é um CNPJ: acerte EMIT\\CNPJ do caixa");
    conferirFaixa(nNFIni, nNFFin, "Inutilizacao/NumeroFinal", recusas);
    if (config.cUF.empty())
        recusas.juntar("cUF", "", "o pedido não diz o estado: configure cUF em zel-envio.toml");
    if (!ehData(contexto.data))
        recusas.juntar("data", contexto.data, "diga o dia do pedido, \"AAAA-MM-DD\"");
    if (!recusas.nenhuma()) return {};

    const std::string ano = contexto.data.substr(2, 2);
    Documento pedido = Documento::novo("inutNFe", kEspacoNfe);
    pedido.raiz().definirAtributo("versao", "4.00");
    No infInut = pedido.raiz().acrescentar("infInut");
    infInut.definirAtributo("Id", "ID" + config.cUF + ano + CNPJ + "65" + comZeros(serie, 3) +
                                      comZeros(nNFIni, 9) + comZeros(nNFFin, 9));
    acrescentar(infInut, {{"tpAmb", tpAmb},
                          {"xServ", "INUTILIZAR"},
                          {"cUF", config.cUF},
                          {"ano", ano},
                          {"CNPJ", CNPJ},
                          {"mod", "65"},
                          {"serie", serie},
                          {"nNFIni", nNFIni},
                          {"nNFFin", nNFFin},
                          {"xJust", xJust}});
    return pedido;
}

// ---- consultation: Manual de Orientação do Contribuinte 7.0, group EP ----

Documento traduzirConsulta(Leitor &leitor) {
    if (leitor.texto("ChaveAcesso").empty()) {
        leitor.recusar("ChaveAcesso", "",
                       "a autoridade só responde por chave: uma consulta por número ou por data "
                       "se responde com o que foi guardado");
        return {};
    }
    const std::string tpAmb = leitor.tpAmb("tpAmb");
    const auto chave = leitor.chave("ChaveAcesso");
    if (!chave) return {};
    Documento consulta = Documento::novo("consSitNFe", kEspacoNfe);
    No raiz = consulta.raiz();
    raiz.definirAtributo("versao", "4.00");
    acrescentar(raiz,
                {{"tpAmb", tpAmb}, {"xServ", "CONSULTAR"}, {"chNFe", std::string(chave->texto())}});
    return consulta;
}

} // namespace

void conferirSubstituta(const ChaveAcesso &chave, const std::string &substituta,
                        std::string_view campo, Recusas &recusas) {
    const auto recusar = [&](std::string_view motivo) {
        recusas.juntar(campo, substituta, motivo);
    };
    const auto lida = ChaveAcesso::ler(substituta);
    if (!lida || !lida->integra() || lida->parte(Parte::kMod) != "65")
        return recusar("não é a chave de uma NFC-e: 44 dígitos, o último verificador");
    if (lida->parte(Parte::kCNPJ) != chave.parte(Parte::kCNPJ) ||
        lida->parte(Parte::kCUF) != chave.parte(Parte::kCUF))
        recusar("é de outro emitente do que a cancelada");
    if (lida->parte(Parte::kSerie) == chave.parte(Parte::kSerie) &&
        lida->parte(Parte::kNNF) == chave.parte(Parte::kNNF))
        recusar("tem a série e o número da cancelada: o que a substitui tem outro número");
    if (lida->parte(Parte::kTpEmis) != "9")
        recusar("o documento que substitui é emitido offline (tpEmis 9)");
    if (chave.parte(Parte::kTpEmis) != "1")
        recusar("só um documento de emissão normal (tpEmis 1) é cancelado por substituição");
}

void conferirFaixa(const std::string &nNFIni, const std::string &nNFFin, std::string_view campo,
                   Recusas &recusas) {
    constexpr std::size_t kLargura = ChaveAcesso::digitos(Parte::kNNF);
    constexpr long kMaisNumeros = 10000;
    const auto numero = [](const std::string &texto) {
        return soDigitos(texto) && texto.size() <= kLargura ? std::stol(texto) : 0;
    };
    const long primeiro = numero(nNFIni), ultimo = numero(nNFFin);
    if (primeiro == 0 || ultimo == 0) return; // refused where they stand
    if (ultimo < primeiro)
        recusas.juntar(campo, nNFFin, "vem antes do primeiro número, " + nNFIni);
    else if (ultimo - primeiro >= kMaisNumeros)
        recusas.juntar(campo, nNFFin,
                       "a faixa desde " + nNFIni +
                           " passa de 10000 números: peça-a em mais de um pedido");
}

std::optional<Documento> traduzirPedido(const No &pedido, const Configuracao &config,
                                        const ContextoPedido &contexto, Recusas &recusas) {
    Recusas minhas;
    Leitor leitor(pedido, minhas);
    Documento mensagem;
    for (const auto &[raiz, elementos] : kPedidos)
        if (raiz == pedido.nome()) Forma(elementos, minhas).conferir(pedido, "");
    if (pedido.nome() == "EnvioEvento")
        mensagem = traduzirEvento(leitor, config, contexto, minhas);
    else if (pedido.nome() == "Inutilizacao")
        mensagem = traduzirInutilizacao(leitor, config, contexto, minhas);
    else if (pedido.nome() == "Consulta")
        mensagem = traduzirConsulta(leitor);
    else
        minhas.juntar(pedido.nome(), "", "não é um pedido do caixa");
    recusas.juntar(minhas);
    if (!minhas.nenhuma()) return {};
    return mensagem;
}

} // namespace zel::envio
