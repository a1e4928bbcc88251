// SPDX-License-Identifier: MIT
#include "documento/Impressao.h"

#include "comum/Base64.h"

#include <algorithm>
#include <iterator>

namespace zel::envio {

namespace {

// A receipt of which can be given away: authorized, in time or late.
constexpr std::string_view kAutorizados[] = {"100", "150"};

// What the library reads of a return, and where the authority's answer has it.
struct Linha {
    std::string_view nome, caminho; // below infProt
};
constexpr Linha kRetorno[] = {
    {"SitCodigo", "cStat"},    {"SitDescricao", "xMotivo"}, {"DocChaAcesso", "chNFe"},
    {"DocProtocolo", "nProt"}, {"DocDhAut", "dhRecbto"},
};

// Characters that ISO-8859-1 lacks become their plain neighbours, or a question mark: the paper
// could not show them either.
struct Vizinho {
    std::string_view de;
    char para;
};
constexpr Vizinho kVizinhos[] = {{"\u2018", '\''}, {"\u2019", '\''}, {"\u201C", '"'},
                                 {"\u201D", '"'},  {"\u2013", '-'},  {"\u2014", '-'},
                                 {"\u2022", '*'}};

std::string naFolha(std::string_view letra) {
    const auto *vizinho = std::find_if(std::begin(kVizinhos), std::end(kVizinhos),
                                       [&](const Vizinho &v) { return v.de == letra; });
    if (vizinho != std::end(kVizinhos)) return {vizinho->para};
    return latin1DeUtf8(letra).value_or("?");
}

std::string emLatin1(std::string_view utf8) {
    std::string texto;
    for (std::size_t i = 0; i < utf8.size();) {
        std::size_t fim = i + 1;
        while (fim < utf8.size() && (static_cast<unsigned char>(utf8[fim]) & 0xC0) == 0x80)
            ++fim;
        texto += naFolha(utf8.substr(i, fim - i));
        i = fim;
    }
    return texto;
}

// The library reads one `pag` a payment, as it writes them: each `detPag` becomes one.
Documento paraLer(const No &nfe) {
    Documento documento = Documento::novo("NFe", kEspacoNfe);
    const No origem = nfe.filho("infNFe");
    No infNFe = documento.raiz().acrescentar("infNFe");
    infNFe.definirAtributo("Id", origem.atributo("Id"));
    infNFe.definirAtributo("versao", origem.atributo("versao"));
    for (const No &filho : origem.filhos()) {
        if (filho.nome() != "pag") {
            infNFe.acrescentarCopia(filho);
            continue;
        }
        for (const No &detalhe : filho.filhos("detPag")) {
            No pag = infNFe.acrescentar("pag");
            pag.acrescentar("tPag", detalhe.texto("tPag"));
            pag.acrescentar("vPag", detalhe.texto("vPag"));
        }
    }
    return documento;
}

std::string digestDe(const No &nfe) {
    return nfe.texto("Signature/SignedInfo/Reference/DigestValue");
}

// Some authorities leave digVal out: the key alone says then whose answer it is.
bool conferirResposta(const No &nfe, const No &infProt, Recusas &recusas) {
    const std::string id = nfe.filho("infNFe").atributo("Id");
    const std::string chave = infProt.texto("chNFe");
    if (id != "NFe" + chave)
        return recusas.juntar("infProt/chNFe", chave, "a resposta não é deste documento");
    const std::string cStat = infProt.texto("cStat");
    if (std::find(std::begin(kAutorizados), std::end(kAutorizados), cStat) ==
        std::end(kAutorizados))
        return recusas.juntar("infProt/cStat", cStat,
                              "a autoridade não autorizou o documento: " +
                                  infProt.texto("xMotivo"));
    const std::string digest = digestDe(nfe), dito = infProt.texto("digVal");
    if (!digest.empty() && !dito.empty() && dito != digest)
        return recusas.juntar("infProt/digVal", dito,
                              "a resposta é de outro conteúdo com a mesma chave");
    return true;
}

// What is kept by law, for the library's own listing.
std::string processo(const No &nfe, const No &protNFe) {
    Documento documento = Documento::novo("nfeProc", kEspacoNfe);
    documento.raiz().definirAtributo("versao", "4.00");
    documento.raiz().acrescentarCopia(nfe);
    documento.raiz().acrescentarCopia(protNFe);
    return documento.texto();
}

} // namespace

std::optional<ParaImprimir> prepararImpressao(const No &nfe, const Documento *resposta,
                                              Recusas &recusas) {
    const std::string qrCode = nfe.texto("infNFeSupl/qrCode");
    if (qrCode.empty())
        return recusas.juntar("infNFeSupl/qrCode", "", "falta: o documento ainda não foi assinado"),
               std::nullopt;
    Documento retorno = Documento::novo("Retorno", {});
    if (resposta != nullptr) {
        const No protNFe = resposta->raiz().procurar("protNFe");
        const No infProt = protNFe.filho("infProt");
        if (!infProt)
            return recusas.juntar("resposta", resposta->raiz().nome(), "não traz protNFe"),
                   std::nullopt;
        if (!conferirResposta(nfe, infProt, recusas)) return {};
        for (const auto &[nome, caminho] : kRetorno)
            retorno.raiz().acrescentar(nome, infProt.texto(caminho));
        const std::string digest = infProt.texto("digVal");
        retorno.raiz().acrescentar("DocDigestValue", digest.empty() ? digestDe(nfe) : digest);
        retorno.raiz().acrescentar("DocXMLBase64", comum::base64(processo(nfe, protNFe)));
    }
    retorno.raiz().acrescentar("LinkXML", qrCode);
    return ParaImprimir{emLatin1(paraLer(nfe).textoComAspas()), emLatin1(retorno.textoComAspas())};
}

} // namespace zel::envio
