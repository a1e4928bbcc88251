// SPDX-License-Identifier: MIT
// Events of cancellation (Manual de Orientação do Contribuinte 7.0; by substitution, Nota Técnica
// 2018.004) and inutilizations (MOC 7.0, group DP), and the authority's answer beside them.
#include "base/Texto.h"
#include "comum/Ascii.h"
#include "comum/ChaveAcesso.h"
#include "comum/Digitos.h"
#include "comum/Estados.h"
#include "comum/Zeros.h"
#include "documento/Conferencia.h"
#include "documento/ConferenciaPartes.h"
#include "traducao/Pedidos.h"

#include <algorithm>
#include <array>

namespace zel::envio {

namespace {

using Parte = ChaveAcesso::Parte;

constexpr std::size_t kMaisEventos = 20; // of a lot
constexpr std::string_view kSubstituicao = "110112";

// An infEvento or infInut; the key is an event's.
struct Pedido {
    No no;
    std::optional<ChaveAcesso> chave;

    std::string_view daChave(Parte parte) const { return chave->parte(parte); }
    bool substituicao() const { return no.texto("tpEvento") == kSubstituicao; }
};

// An element, or the attribute that "@" begins, and what it must be.
struct Regra {
    std::string_view caminho;
    bool (*serve)(const std::string &valor, const Pedido &pedido);
    std::string_view motivo;
    bool soSubstituicao = false;
};

bool ambiente(const std::string &valor, const Pedido &) {
    return valor == "1" || valor == "2";
}
bool justificativa(const std::string &valor, const Pedido &) {
    return ehTexto(valor, 15, 255);
}
bool estadoDaChave(const std::string &valor, const Pedido &pedido) {
    return valor == pedido.daChave(Parte::kCUF);
}
bool versaoDoEvento(const std::string &valor, const Pedido &) {
    return valor == "1.00";
}
bool numero(const std::string &valor, const Pedido &) {
    return soDigitos(valor) && valor.size() <= 9 && valor.front() != '0';
}

constexpr std::string_view kJustificativa = "a justificativa tem de 15 a 255 caracteres";
constexpr std::string_view kAmbiente = "é 1 (produção) ou 2 (homologação)";
constexpr std::string_view kVersao = "a versão dos eventos é 1.00";
constexpr Regra kDoEvento[] = {
    {"../@versao", versaoDoEvento, kVersao},
    {"cOrgao", estadoDaChave, "não é o estado da chave"},
    {"tpAmb", ambiente, kAmbiente},
    {"CNPJ|CPF",
     [](const std::string &valor, const Pedido &pedido) {
         return comZeros(valor, ChaveAcesso::digitos(Parte::kCNPJ)) == pedido.daChave(Parte::kCNPJ);
     },
     "não é o emitente da chave"},
    {"dhEvento", [](const std::string &valor, const Pedido &) { return ehMomento(valor); },
     "não é data e hora com fuso, como 2026-01-31T12:00:00-03:00"},
    {"dhEvento",
     [](const std::string &valor, const Pedido &pedido) {
         return valor.size() < 7 ||
                valor.substr(2, 2) + valor.substr(5, 2) >= pedido.daChave(Parte::kAAMM);
     },
     "o evento é de antes do mês em que a nota foi emitida"},
    {"tpEvento",
     [](const std::string &valor, const Pedido &) {
         return valor == "110111" || valor == kSubstituicao;
     },
     "só 110111, cancelamento, e 110112, por substituição, são conferidos"},
    {"nSeqEvento",
     [](const std::string &valor, const Pedido &) {
         return soDigitos(valor) && valor.front() != '0' && comZeros(valor, 2) <= "20";
     },
     "vai de 1 a 20"},
    {"verEvento", versaoDoEvento, kVersao},
    {"detEvento/@versao", versaoDoEvento, kVersao},
    {"detEvento/descEvento",
     [](const std::string &valor, const Pedido &pedido) {
         return valor == (pedido.substituicao() ? "Cancelamento por substituicao" : "Cancelamento");
     },
     "não é o texto deste tipo de evento"},
    {"detEvento/nProt",
     [](const std::string &valor, const Pedido &) {
         return soDigitos(valor) && (valor.size() == 15 || valor.size() == 17);
     },
     "o protocolo da autorização tem 15 dígitos"},
    {"detEvento/xJust", justificativa, kJustificativa},
    {"detEvento/cOrgaoAutor", estadoDaChave, "não é o estado da chave", true},
    {"detEvento/tpAutor", [](const std::string &valor, const Pedido &) { return valor == "1"; },
     "o autor é a empresa emitente: 1", true},
    {"detEvento/verAplic",
     [](const std::string &valor, const Pedido &) { return ehTexto(valor, 1, 20); },
     "o nome do programa tem de 1 a 20 caracteres", true},
};
constexpr Regra kDaInutilizacao[] = {
    {"../@versao", [](const std::string &valor, const Pedido &) { return valor == "4.00"; },
     "a versão é 4.00"},
    {"tpAmb", ambiente, kAmbiente},
    {"xServ", [](const std::string &valor, const Pedido &) { return valor == "INUTILIZAR"; },
     "é INUTILIZAR"},
    {"cUF",
     [](const std::string &valor, const Pedido &) {
         return procurarEstadoPorCodigo(valor) != nullptr;
     },
     "não é o código de um estado"},
    {"ano",
     [](const std::string &valor, const Pedido &) { return soDigitos(valor) && valor.size() == 2; },
     "o ano tem 2 dígitos"},
    {"CNPJ", [](const std::string &valor, const Pedido &) { return ehCnpj(valor); },
     "não é um CNPJ: 14 dígitos, os dois últimos de controle"},
    {"mod", [](const std::string &valor, const Pedido &) { return valor == "65"; },
     "só o modelo 65, NFC-e, é conferido"},
    {"serie",
     [](const std::string &valor, const Pedido &) {
         return soDigitos(valor) && valor.size() <= 3 && (valor.size() == 1 || valor[0] != '0');
     },
     "a série vai de 0 a 999, sem zeros à esquerda"},
    {"nNFIni", numero, "o número vai de 1 a 999999999"},
    {"nNFFin", numero, "o número vai de 1 a 999999999"},
    {"xJust", justificativa, kJustificativa},
};

// What the answer repeats, and the codes by which it grants the request.
struct Resposta {
    std::string_view elemento;
    std::array<std::string_view, 3> concedem;
    std::array<std::string_view, 8> repete;
};
constexpr Resposta kDeEvento{
    "retEvento/infEvento", {"135", "136", "155"}, {"tpAmb", "chNFe", "tpEvento", "nSeqEvento"}};
constexpr Resposta kDeInutilizacao{
    "retInutNFe/infInut",
    {"102"},
    {"tpAmb", "cUF", "ano", "CNPJ", "mod", "serie", "nNFIni", "nNFFin"}};

struct Lido {
    No no; // of the element, or of the one that has the attribute
    std::string lugar, valor;
};

Lido ler(const Pedido &pedido, std::string_view caminho) {
    if (caminho == "CNPJ|CPF") caminho = pedido.no.filho("CPF") ? "CPF" : "CNPJ";
    const std::size_t arroba = caminho.find('@');
    if (arroba == caminho.npos)
        return {pedido.no, lugarDe(pedido.no, caminho), pedido.no.texto(caminho)};
    const std::string_view acima = caminho.substr(0, arroba - 1);
    const No dono = acima == ".." ? pedido.no.pai() : pedido.no.filho(acima);
    const std::string_view nome = caminho.substr(arroba + 1);
    return {dono, dono ? dono.caminho() + "/@" + std::string(nome) : std::string(caminho),
            dono ? dono.atributo(nome) : ""};
}

template <std::size_t N>
void conferirRegras(const Pedido &pedido, const Regra (&regras)[N], Recusas &recusas) {
    for (const Regra &regra : regras) {
        if (regra.soSubstituicao && !pedido.substituicao()) continue;
        const Lido lido = ler(pedido, regra.caminho);
        if (!regra.serve(lido.valor, pedido)) recusas.juntar(lido.lugar, lido.valor, regra.motivo);
    }
}

void conferirId(const No &no, const std::string &certo, Recusas &recusas) {
    if (no.atributo("Id") != certo)
        recusas.juntar(no.caminho() + "/@Id", no.atributo("Id"), "devia ser " + certo);
}

void conferirResposta(const No &no, const Resposta &resposta, std::vector<std::string> &olhado,
                      Recusas &recusas) {
    const No ret = no.pai().pai().filho(resposta.elemento);
    if (!ret) return;
    Recusas novas;
    for (const std::string_view nome : resposta.repete)
        if (!nome.empty() && ret.filho(nome) && ret.texto(nome) != no.texto(nome))
            novas.juntar(lugarDe(ret, nome), ret.texto(nome),
                         "a resposta é de outro pedido: " + no.texto(nome));
    const std::string cStat = ret.texto("cStat");
    if (cStat.empty() || std::ranges::find(resposta.concedem, cStat) == resposta.concedem.end())
        novas.juntar(lugarDe(ret, "cStat"), cStat,
                     "a autoridade não o registrou: " + ret.texto("xMotivo"));
    anotar(olhado, "resposta", novas.nenhuma(), cStat + ' ' + ret.texto("xMotivo"));
    recusas.juntar(novas);
}

void conferirEvento(const No &no, Recusas &recusas) {
    const std::string chNFe = no.texto("chNFe");
    const Pedido pedido{no, ChaveAcesso::ler(chNFe)};
    if (!pedido.chave || !pedido.chave->integra() || pedido.daChave(Parte::kMod) != "65") {
        recusas.juntar(lugarDe(no, "chNFe"), chNFe,
                       "não é a chave de uma NFC-e: 44 dígitos, o último verificador, modelo 65");
        return;
    }
    conferirRegras(pedido, kDoEvento, recusas);
    conferirId(no, "ID" + no.texto("tpEvento") + chNFe + comZeros(no.texto("nSeqEvento"), 2),
               recusas);
    if (pedido.substituicao())
        conferirSubstituta(*pedido.chave, no.texto("detEvento/chNFeRef"),
                           lugarDe(no, "detEvento/chNFeRef"), recusas);
}

void conferirInutilizacao(const No &no, Recusas &recusas) {
    conferirRegras({no, {}}, kDaInutilizacao, recusas);
    const std::string nNFIni = no.texto("nNFIni"), nNFFin = no.texto("nNFFin");
    conferirId(no,
               "ID" + no.texto("cUF") + no.texto("ano") + no.texto("CNPJ") + no.texto("mod") +
                   comZeros(no.texto("serie"), 3) + comZeros(nNFIni, 9) + comZeros(nNFFin, 9),
               recusas);
    conferirFaixa(nNFIni, nNFFin, lugarDe(no, "nNFFin"), recusas);
}

// What is signed in a message that is no NFC-e.
struct Assinado {
    std::string_view pai, elemento, momento;
    void (*conferir)(const No &, Recusas &);
    const Resposta &resposta;
};
constexpr Assinado kAssinados[] = {
    {"evento", "infEvento", "dhEvento", conferirEvento, kDeEvento},
    {"inutNFe", "infInut", "", conferirInutilizacao, kDeInutilizacao},
};

std::vector<No> pedidosDe(const No &raiz, const Assinado &assinado) {
    return raiz.nome() == assinado.pai ? std::vector{raiz} : raiz.filhos(assinado.pai);
}

bool servePara(const No &pai, const Assinado &assinado, Recusas &recusas) {
    const auto partes = pai.filhos(assinado.elemento);
    if (partes.size() == 1 && pai.espaco() == kEspacoNfe && partes.front().espaco() == kEspacoNfe)
        return true;
    return recusas.juntar(pai.caminho(), pai.espaco(),
                          "não tem um só " + std::string(assinado.elemento) +
                              ", ou não é do espaço de nomes " + std::string(kEspacoNfe));
}

} // namespace

bool verificarPedido(const Documento &documento, const Configuracao &config, Esquemas *esquemas,
                     std::vector<std::string> &olhado, Recusas &recusas) {
    Recusas novas;
    bool assinados = true;
    std::size_t quantos = 0;
    for (const Assinado &assinado : kAssinados)
        for (const No &pai : primeiros(pedidosDe(documento.raiz(), assinado), kMaisEventos + 1)) {
            if (++quantos > kMaisEventos || !servePara(pai, assinado, novas)) continue;
            const No no = pai.filho(assinado.elemento);
            const std::string autor = no.texto(no.filho("CPF") ? "CPF" : "CNPJ");
            conferirAssinatura(documento, pai, {autor, no.texto(assinado.momento)}, config, olhado,
                               novas);
            olhar(olhado, "pedido", novas, [&] { assinado.conferir(no, novas); });
            conferirResposta(no, assinado.resposta, olhado, novas);
            assinados = assinados && pai.filho("Signature");
        }
    if (quantos == 0 || quantos > kMaisEventos)
        novas.juntar(documento.raiz().nome(), "",
                     quantos == 0 ? "não há evento nem inutilização no documento"
                                  : "tem mais de 20 eventos");
    julgarEsquema(documento, assinados, esquemas, olhado, novas);
    recusas.juntar(novas);
    return novas.nenhuma();
}

bool conferirPedidoParaAssinar(const Documento &documento, Recusas &recusas) {
    Recusas novas;
    for (const Assinado &assinado : kAssinados)
        for (const No &pai : primeiros(pedidosDe(documento.raiz(), assinado), kMaisEventos))
            if (servePara(pai, assinado, novas))
                assinado.conferir(pai.filho(assinado.elemento), novas);
    recusas.juntar(novas);
    return novas.nenhuma();
}

} // namespace zel::envio
