// SPDX-License-Identifier: MIT
// Documents and returns (files beside the golden receipts), and a till of its own for each test.
#pragma once

#include "ZEL_FelborFramework.h"
#include "apoio/DiretorioDeDados.h"
#include "config/Registro.h"
#include "documento/Persistencia.h"
#include "imposto/TotalImposto.h"
#include "impressao/DadosImpressao.h"
#include "impressao/GerenciadorImpressao.h"
#include "util/Latin1.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <tuple>
#include <utility>

namespace impressao {

using namespace zel;
using Pares = std::initializer_list<std::pair<std::string_view, std::string_view>>;

inline const std::string kChave = "35140111222333000181650010000001231171025446";
inline const std::string kId = "NFe" + kChave;

inline std::filesystem::path ouro(std::string_view nome) {
    return std::filesystem::path(ZEL_OURO) / nome;
}

inline std::string dado(std::string_view nome) {
    return lerTudo(ouro(nome)).value_or("");
}

// Replaces the first `de` after `marco`; both must be there.
inline std::string trocar(std::string texto, std::string_view de, std::string_view para,
                          std::string_view marco = "") {
    const std::size_t lugar = texto.find(de, texto.find(marco));
    EXPECT_NE(lugar, texto.npos) << marco << " " << de;
    return lugar == texto.npos ? texto : texto.replace(lugar, de.size(), para);
}

// The text has the piece exactly `vezes` times.
inline testing::AssertionResult contem(std::string_view texto, std::string_view trecho,
                                       int vezes = 1) {
    for (std::size_t i = 0; (i = texto.find(trecho, i)) != texto.npos; i += trecho.size())
        --vezes;
    if (vezes == 0) return testing::AssertionSuccess();
    return testing::AssertionFailure() << -vezes << " too many of " << trecho << " in\n" << texto;
}

// Fields side by side, to be compared at once.
inline std::string juntar(std::initializer_list<std::string_view> campos) {
    std::string texto;
    for (const std::string_view campo : campos)
        texto.append(campo).append("|");
    return texto;
}

class Teste : public testing::Test {
protected:
    void SetUp() override {
        serDiretorioDeDados(pasta);
        ASSERT_EQ(inicializarConfig(), ZEL_OK);
        G_szTotalImposto.limpar();
    }

    static void configurar(Pares valores) {
        for (const auto &[caminho, valor] : valores)
            ASSERT_EQ(fnRegAlterarValor_ZEL(caminho, valor), ZEL_OK) << caminho;
    }
    bool existe(std::string_view nome) const { return std::filesystem::exists(pasta / nome); }
    // The path of a file with that text; "OFFLINE" for none.
    std::string gravar(std::string_view nome, std::string_view texto) const {
        pasta.gravar(nome, texto);
        return texto.empty() ? std::string(kOffline) : pasta / nome;
    }
    int ler(std::string_view xml, std::string_view retorno, CupomFiscal &cf) {
        return parseXMLCupomFiscal(dados, gravar("nota.xml", xml), gravar("retorno.xml", retorno),
                                   cf);
    }

    const std::string cheia = dado("nota_cheia.xml");
    const std::string simples = dado("nota_simples.xml");
    const std::string retornoEnvio = dado("retorno_envio.xml"); // the sending component's words
    const std::string retornoSefaz = dado("retorno_sefaz.xml"); // the authorizer's record
    PastaTemporaria pasta;
    ST_PersitenceXML_ZEL emCurso;
    DadosImpressao dados;
};

} // namespace impressao
