// SPDX-License-Identifier: MIT
#include "secao/Digest.h"

#include "comum/Base64.h"
#include "recusa/Recusa.h"
#include "secao/Parser.h"
#include "texto/Codificacao.h"
#include "zel_felbor/codigos.h"

#include <cstddef>

namespace zel {

namespace {

constexpr std::string_view kFimNFe = "</NFe>";

// The document element without its signature; the whole text when nothing stands around it.
std::string recortarNFe(std::string_view xml) {
    if (xml.find("<?xml") == xml.npos && xml.find("<enviNFe") == xml.npos) return std::string(xml);
    const std::size_t inicio = xml.find("<NFe");
    if (inicio == xml.npos) return {};
    std::size_t fim = xml.find("<Signature", inicio);
    // Not signed yet: the same element ends at its own end tag.
    if (fim == xml.npos) fim = xml.find(kFimNFe, inicio);
    return std::string(xml.substr(inicio, fim - inicio)).append(kFimNFe);
}

} // namespace

int fnGerarDigestValue(std::string_view xml, std::string &digest, Codificacao codificacao) {
    ST_tagZEL documento;
    std::size_t posicao = 0;
    const int lido = fnProximaTag_ZEL(documento, recortarNFe(xml), posicao);
    if (lido != ZEL_OK) return lido;
    auto canonico = documento.canonicalizeNFSubTree();
    if (!canonico) return recusar(Motivo::kDocumentoSemForma);
    if (codificacao == Codificacao::kLatin1) canonico = fnParseToUtf8(*canonico);
    digest = comum::base64(fnConvertToSHA1(*canonico));
    return ZEL_OK;
}

} // namespace zel
