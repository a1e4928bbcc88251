// The catalogue: look-up of keys by path, and the lengths and defaults that are easily got wrong.
#include "config/ArquivoConfig.h"

#include <gtest/gtest.h>

using namespace zel;

// Names, lengths and defaults that a rule, an exception or the encoding could spoil.
TEST(ConfigCatalogo, chaves) {
    const struct {
        std::string_view caminho, nome;
        std::size_t tamanho;
        std::string_view padrao;
    } casos[] = {
        {R"(configuracao\ESTADOCFE)", "estadoCFe", 1, ""},
        {R"(ide\nf)", "nNF", 9, "1"},
        {R"(emit\enderemit\uf)", "UF", 2, "SP"},
        {R"(NFCE\MsgLeiDoImposto)", "MsgLeiDoImposto", 200,
         "Informa\xE7\xE3o dos Tributos Totais Incidentes (Lei Federal 12.741/2012)"},
        {R"(URLS\RS\Producao)", "Producao", 200, "http://www.sefaznet.ac.gov.br/nfce/qrcode"},
        {R"(IMPOSTO\ICMS\ICMS00\CST)", "CST", 2, "00"},
        {R"(IMPOSTO\ICMS\ICMS10\CST)", "CST", 7, ""},
        {R"(IMPOSTO\ICMS\ICMS90\pMVAST)", "pMVAST", 5, ""},
        {R"(IMPOSTO\ICMS\ICMSPART\ufst)", "UFST", 2, ""},
        {R"(IMPOSTO\PIS\PISQTDE\qBCProd)", "qBCProd", 16, ""},
        {R"(IMPOSTO\ISSQN\vAliq)", "vAliq", 7, ""},
    };
    const ValoresConfig padroes;
    for (const auto &caso : casos) {
        const auto chave = procurarChave(caso.caminho);
        ASSERT_TRUE(chave) << caso.caminho;
        EXPECT_EQ(stZELTAGs[chave->indice].nome, caso.nome);
        EXPECT_EQ(stZELTAGs[chave->indice].tamanho, caso.tamanho) << caso.caminho;
        EXPECT_EQ(padroes[*chave], caso.padrao) << caso.caminho;
    }
}

TEST(ConfigCatalogo, caminhosQueNaoDizemChave) {
    for (const std::string_view caminho :
         {R"(IDE\UF)", R"(IMPOSTO\ICMS\vBC)", R"(ICMS\ICMS00\vBC)", R"(IMPOSTO\ICMS\ICMS00)",
          R"(IDE\\cUF)", R"(IDE\cUF\)", R"(FRAMEWORKZEL\IDE\cUF)", "cUF", "/IDE", "\\", ""})
        EXPECT_FALSE(procurarChave(caminho)) << caminho;
}
