// SPDX-License-Identifier: MIT
// Whether a receipt may be given to a customer: of a document that the authority authorized, or of
// one of contingency; without fiscal value nothing is promised.
#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

namespace zel_felbor {

namespace detalhe {

// Of the sending component's form, or of the authority's, whose last status is the document's.
inline std::string situacaoDe(std::string retorno) {
    std::transform(retorno.begin(), retorno.end(), retorno.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
    });
    for (const std::string_view marca : {"<sitcodigo>", "<cstat>"}) {
        std::size_t lugar = retorno.rfind(marca);
        if (lugar == retorno.npos) continue;
        lugar =
            std::min(retorno.find_first_not_of(" \t\r\n", lugar + marca.size()), retorno.size());
        const std::size_t fim =
            std::min(retorno.find_first_not_of("0123456789", lugar), retorno.size());
        return retorno.substr(lugar, fim - lugar);
    }
    return "";
}

inline bool deContingencia(std::string_view documento) {
    constexpr std::string_view marca = "Id=\"NFe";
    constexpr std::size_t emissao = 34; // digits of the key in front of the kind of emission
    if (documento.empty() || documento.front() != '<') return true;
    const std::size_t lugar = documento.find(marca);
    return lugar != documento.npos && documento.size() > lugar + marca.size() + emissao &&
           documento[lugar + marca.size() + emissao] == '9';
}

} // namespace detalhe

// Why the receipt may not be given; empty when it may. No `retorno` is "OFFLINE".
inline std::string recusaDeImpressao(std::string_view documento,
                                     const std::optional<std::string> &retorno, bool cancelamento) {
    const std::string contorno = "; para um ensaio, semAutorizacao";
    if (!retorno) {
        const bool producao = documento.find("<tpAmb>1</tpAmb>") != documento.npos;
        if (!producao || detalhe::deContingencia(documento)) return "";
        return "retorno: OFFLINE só serve a um documento de contingência; este ainda não tem a "
               "resposta da SEFAZ" +
               contorno;
    }
    const std::string situacao = detalhe::situacaoDe(*retorno);
    if (cancelamento ? situacao == "135" || situacao == "155"
                     : situacao == "100" || situacao == "150")
        return "";
    return std::string("retorno: a SEFAZ não ") +
           (cancelamento ? "registrou o cancelamento" : "autorizou a venda") + " (SitCodigo " +
           (situacao.empty() ? "ausente" : situacao) + ")" + contorno;
}

} // namespace zel_felbor
