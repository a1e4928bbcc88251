// SPDX-License-Identifier: MIT
// Documents and returns (files beside the golden receipts), and a till of its own for each test.
#pragma once

#include "apoio/ComDados.h"
#include "apoio/Trecho.h"
#include "emcurso/Persistencia.h"
#include "imposto/Presets.h"
#include "impressao/CupomFiscal.h"
#include "impressao/GerenciadorImpressao.h"
#include "texto/Latin1.h"

#include <tuple>

namespace impressao {

using namespace zel;

inline const std::string kChave = "35140111222333000181650010000001231171025446";
inline const std::string kId = "NFe" + kChave;

inline std::filesystem::path ouro(std::string_view nome) {
    return std::filesystem::path(ZEL_OURO) / nome;
}

inline std::string dado(std::string_view nome) {
    return lerTudo(ouro(nome)).value_or("");
}

// Fields side by side, to be compared at once.
inline std::string juntar(std::initializer_list<std::string_view> campos) {
    std::string texto;
    for (const std::string_view campo : campos)
        texto.append(campo).append("|");
    return texto;
}

class Teste : public ComDados {
protected:
    // The path of a file with that text; "OFFLINE" for none.
    std::string gravar(std::string_view nome, std::string_view texto) const {
        pasta.gravar(nome, texto);
        return texto.empty() ? std::string(kOffline) : pasta / nome;
    }
    int ler(std::string_view xml, std::string_view retorno, CupomFiscal &cf) {
        return parseXMLCupomFiscal(total, gravar("nota.xml", xml), gravar("retorno.xml", retorno),
                                   cf);
    }

    const std::string cheia = dado("nota_cheia.xml");
    const std::string simples = dado("nota_simples.xml");
    const std::string retornoEnvio = dado("retorno_envio.xml"); // the sending component's words
    const std::string retornoSefaz = dado("retorno_sefaz.xml"); // the authorizer's record
    ST_PersitenceXML_ZEL emCurso;
    DadosImpressao dados;
    TotalImposto total;
};

} // namespace impressao
