// The catalogue: look-up of keys by path, and the lengths and defaults that are easily got wrong.
#include "config/ArquivoConfig.h"

#include <gtest/gtest.h>

using namespace zel;

namespace {

std::string caminhoDe(Chave chave) {
    std::string caminho(stZELTAGs[chave.indice].nome);
    for (auto grupo = kLugares[chave.indice].grupo; grupo != 0; grupo = kLugares[grupo].grupo)
        caminho = std::string(stZELTAGs[grupo].nome).append("\\").append(caminho);
    return caminho;
}

} // namespace

// A path that is split, compared or descended wrongly finds nothing, or another key.
TEST(ConfigCatalogo, caminhos) {
    const struct {
        std::string_view caminho;
        std::string_view esperado; // empty: names no key
    } casos[] = {
        {R"(configuracao\ESTADOCFE)", R"(CONFIGURACAO\estadoCFe)"},
        {R"(emit\enderemit\uf)", R"(EMIT\ENDEREMIT\UF)"},
        {R"(IMPOSTO\ICMS\ICMSPART\ufst)", R"(IMPOSTO\ICMS\ICMSPART\UFST)"},
        {R"(ide\nf)", R"(IDE\nNF)"},
        {R"(IDE\UF)", ""},
        {R"(IMPOSTO\ICMS\vBC)", ""}, // lies deeper
        {R"(ICMS\ICMS00\vBC)", ""},  // the outer group is missing
        {R"(IMPOSTO\ICMS\ICMS00)", ""},
        {R"(IDE\\cUF)", ""},
        {R"(IDE\cUF\)", ""},
        {R"(FRAMEWORKZEL\IDE\cUF)", ""},
        {"cUF", ""},
        {"/IDE", ""},
        {"\\", ""},
        {"", ""},
    };
    for (const auto &caso : casos) {
        const auto chave = procurarChave(caso.caminho);
        EXPECT_EQ(chave ? caminhoDe(*chave) : "", caso.esperado) << caso.caminho;
    }
}

// Every key is reached by its path; of two of one name, the path names the first.
TEST(ConfigCatalogo, todaChaveTemCaminho) {
    int repetidas = 0;
    for (std::uint16_t i = 0; i < kTotalEntradas; ++i) {
        if (stZELTAGs[i].tipo != TipoEntrada::kChave) continue;
        const auto chave = procurarChave(caminhoDe(Chave{i}));
        ASSERT_TRUE(chave);
        if (*chave == Chave{i}) continue;
        ++repetidas;
        EXPECT_EQ(caminhoDe(Chave{i}), R"(PROD\MED\dFab)");
        EXPECT_EQ(chave->indice, i - 2);
    }
    EXPECT_EQ(repetidas, 1);
}

// Lengths and defaults that a rule, an exception or the encoding could spoil.
TEST(ConfigCatalogo, tamanhosEPadroes) {
    const struct {
        std::string_view caminho;
        std::size_t tamanho;
        std::string_view padrao;
    } casos[] = {
        {R"(CONFIGURACAO\estadoCFe)", 1, ""},
        {R"(CONFIGURACAO\ValorMaxIdeCliente)", 15, "10000.00"},
        {R"(NFCE\MsgLeiDoImposto)", 200,
         "Informa\xE7\xE3o dos Tributos Totais Incidentes (Lei Federal 12.741/2012)"},
        {R"(URLS\TO\ChaveConsultaProducao)", 200, ""},
        {R"(URLS\RS\Producao)", 200, "http://www.sefaznet.ac.gov.br/nfce/qrcode"},
        {R"(IMPOSTO\ICMS\ICMS00\CST)", 2, "00"},
        {R"(IMPOSTO\ICMS\ICMS10\CST)", 7, ""},
        {R"(IMPOSTO\ICMS\ICMS40\motDesICMS)", 1, ""},
        {R"(IMPOSTO\ICMS\ICMS70\pMVAST)", 7, ""},
        {R"(IMPOSTO\ICMS\ICMS90\pMVAST)", 5, ""},
        {R"(IMPOSTO\ICMS\ICMSPART\pMVAST)", 7, ""},
        {R"(IMPOSTO\ICMS\ICMSPART\UFST)", 2, ""},
        {R"(IMPOSTO\ICMS\ICMSSN900\vCredICMSSN)", 15, ""},
        {R"(IMPOSTO\PIS\PISQTDE\qBCProd)", 16, ""},
        {R"(IMPOSTO\COFINS\COFINSST\pCOFINS)", 7, ""},
        {R"(IMPOSTO\ISSQN\vAliq)", 7, ""},
    };
    const ValoresConfig padroes;
    for (const auto &caso : casos) {
        const auto chave = procurarChave(caso.caminho);
        ASSERT_TRUE(chave) << caso.caminho;
        EXPECT_EQ(stZELTAGs[chave->indice].tamanho, caso.tamanho) << caso.caminho;
        EXPECT_EQ(padroes[*chave], caso.padrao) << caso.caminho;
    }
}
