// SPDX-License-Identifier: MIT
#include "assinatura/FormaAssinatura.h"

#include <algorithm>
#include <array>
#include <libxml/tree.h>
#include <string_view>

namespace zel::envio {

namespace {

constexpr std::size_t kMaiorId = 64;
constexpr int kMaisEspacos = 16;   // declared from the root down to a place
constexpr int kMaisAtributos = 64; // of an element

// What is signed, by the element that holds it.
constexpr std::array<std::array<std::string_view, 2>, 3> kAssinados{{
    {"NFe", "infNFe"},
    {"evento", "infEvento"},
    {"inutNFe", "infInut"},
}};

// An element of the signature: its children, all of them in that order, and its algorithm. Source:
// xmldsig-core-schema_v1.01.xsd of the layout's package.
struct Forma {
    const char *caminho; // below Signature; "" is itself
    std::array<const char *, 4> filhos;
    const char *algoritmo;
};
constexpr Forma kFormas[] = {
    {"", {"SignedInfo", "SignatureValue", "KeyInfo"}, nullptr},
    {"SignedInfo", {"CanonicalizationMethod", "SignatureMethod", "Reference"}, nullptr},
    {"SignedInfo/CanonicalizationMethod", {}, kC14n},
    {"SignedInfo/SignatureMethod", {}, kRsaSha1},
    {"SignedInfo/Reference", {"Transforms", "DigestMethod", "DigestValue"}, nullptr},
    {"SignedInfo/Reference/Transforms", {"Transform", "Transform"}, nullptr},
    {"SignedInfo/Reference/DigestMethod", {}, kSha1},
    {"SignedInfo/Reference/DigestValue", {}, nullptr},
    {"SignatureValue", {}, nullptr},
    {"KeyInfo", {"X509Data"}, nullptr},
    {"KeyInfo/X509Data", {"X509Certificate"}, nullptr},
    {"KeyInfo/X509Data/X509Certificate", {}, nullptr},
};
constexpr std::array<const char *, 2> kTransformacoes{kEnvelopada, kC14n};

// Elements and text alone: a comment or an instruction would be read differently by each reader.
bool soElementosETexto(const No &no) {
    for (const xmlNode *filho = no.cru()->children; filho != nullptr; filho = filho->next)
        if (filho->type != XML_ELEMENT_NODE && filho->type != XML_TEXT_NODE) return false;
    return true;
}

bool temFilhos(const No &no, const std::array<const char *, 4> &nomes) {
    const std::vector<No> filhos = no.filhos();
    std::size_t i = 0;
    for (; i < filhos.size() && i < nomes.size() && nomes[i] != nullptr; ++i)
        if (filhos[i].nome() != nomes[i] || filhos[i].espaco() != kEspacoAssinatura) return false;
    return i == filhos.size() && nomes[i] == nullptr;
}

bool conferirForma(const No &assinatura, Recusas &recusas) {
    bool certa = true;
    for (const auto &[caminho, filhos, algoritmo] : kFormas) {
        const No no = assinatura.filho(caminho);
        // Its parent's row has complained.
        if (!no) return false;
        if (!soElementosETexto(no) || !temFilhos(no, filhos))
            certa = recusas.juntar(no.caminho(), "",
                                   "não tem os elementos que o leiaute fixa, ou tem outros");
        if (algoritmo != nullptr && no.atributo("Algorithm") != algoritmo)
            certa = recusas.juntar(no.caminho(), no.atributo("Algorithm"),
                                   "o leiaute fixa " + std::string(algoritmo));
    }
    const auto passos = assinatura.filho("SignedInfo/Reference/Transforms").filhos();
    for (std::size_t i = 0; certa && i < passos.size(); ++i)
        if (passos[i].atributo("Algorithm") != kTransformacoes.at(i) ||
            !soElementosETexto(passos[i]) || !passos[i].filhos().empty())
            certa = recusas.juntar(passos[i].caminho(), passos[i].atributo("Algorithm"),
                                   "o leiaute fixa " + std::string(kTransformacoes.at(i)));
    return certa;
}

bool ehNomeDeId(std::string_view nome) {
    return nome.size() == 2 && (nome[0] | 0x20) == 'i' && (nome[1] | 0x20) == 'd';
}

bool ehLetraDeId(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

// How many attributes of that value could be taken for the Id of an element at or below this one.
int quantosTem(const No &no, const std::string &id) {
    int quantos = 0;
    for (const xmlAttr *a = no.cru()->properties; a != nullptr; a = a->next) {
        xmlChar *valor = xmlNodeListGetString(no.cru()->doc, a->children, 1);
        const auto texto = [](const xmlChar *t) {
            return t == nullptr ? "" : reinterpret_cast<const char *>(t);
        };
        quantos += ehNomeDeId(texto(a->name)) && id == texto(valor) ? 1 : 0;
        xmlFree(valor);
    }
    for (const No &filho : no.filhos())
        quantos += quantosTem(filho, id);
    return quantos;
}

// The first element at or below this one that breaks a bound.
No semForma(const No &no, int espacos) {
    for (const xmlNs *ns = no.cru()->nsDef; ns != nullptr; ns = ns->next) {
        const std::string_view href =
            ns->href == nullptr ? "" : reinterpret_cast<const char *>(ns->href);
        if (++espacos > kMaisEspacos || (!href.empty() && href.find(':') == href.npos)) return no;
    }
    int atributos = 0;
    for (const xmlAttr *a = no.cru()->properties; a != nullptr; a = a->next)
        if (++atributos > kMaisAtributos) return no;
    for (xmlNode *filho = no.cru()->children; filho != nullptr; filho = filho->next)
        if (filho->type == XML_ELEMENT_NODE)
            if (const No achado = semForma(No(filho), espacos)) return achado;
    return {};
}

// Of that name anywhere below, at most 2.
int assinaturas(const No &no) {
    int quantas = no.nome() == "Signature" ? 1 : 0;
    for (const No &filho : no.filhos())
        if (quantas < 2) quantas += assinaturas(filho);
    return quantas;
}

std::string_view assinadoEm(const No &pai) {
    for (const auto &[nome, assinado] : kAssinados)
        if (pai.nome() == nome && pai.espaco() == kEspacoNfe) return assinado;
    return {};
}

} // namespace

bool conferirCanonico(const Documento &documento, Recusas &recusas) {
    const No no = semForma(documento.raiz(), 0);
    return !no || recusas.juntar(no.caminho(), "",
                                 "tem espaços de nomes relativos, ou espaços de nomes ou atributos "
                                 "demais, para ser posto em forma canônica");
}

bool conferirId(const Documento &documento, const No &elemento, Recusas &recusas) {
    const std::string id = elemento.atributo("Id");
    const bool nome = !id.empty() && id.size() <= kMaiorId && !(id[0] >= '0' && id[0] <= '9') &&
                      std::all_of(id.begin(), id.end(), ehLetraDeId);
    if (!nome)
        return recusas.juntar(elemento.caminho() + "/@Id", id,
                              "falta, ou não é um Id de letras e dígitos");
    return quantosTem(documento.raiz(), id) == 1 ||
           recusas.juntar(elemento.caminho() + "/@Id", id,
                          "outro elemento do arquivo tem o mesmo Id");
}

std::optional<FormaAssinatura> formaDe(const Documento &documento, const No &pai,
                                       Recusas &recusas) {
    const auto recusar = [&](const No &no, const char *motivo) {
        recusas.juntar(no.caminho(), "", motivo);
        return std::nullopt;
    };
    if (!conferirCanonico(documento, recusas)) return {};
    const std::string_view nome = assinadoEm(pai);
    if (nome.empty()) return recusar(pai, "não é NFe, evento nem inutNFe da NF-e");
    const std::vector<No> assinados = pai.filhos(nome);
    if (assinados.size() != 1 || assinados[0].espaco() != kEspacoNfe)
        return recusar(pai, "não tem um só elemento que se assina");
    const No assinatura = pai.filho("Signature");
    if (!assinatura) return recusar(pai, "não está assinado");
    if (assinatura.espaco() != kEspacoAssinatura || assinaturas(pai) != 1)
        return recusar(pai, "tem mais de uma assinatura, ou uma de outro lugar");
    if (!conferirForma(assinatura, recusas)) return {};
    FormaAssinatura forma{assinados[0], assinatura, assinados[0].atributo("Id")};
    if (!conferirId(documento, forma.assinado, recusas)) return {};
    const No referencia = assinatura.filho("SignedInfo/Reference");
    if (referencia.atributo("URI") == '#' + forma.id) return forma;
    recusas.juntar(referencia.caminho() + "/@URI", referencia.atributo("URI"),
                   "a assinatura não é a deste documento, " + forma.id);
    return {};
}

} // namespace zel::envio
