// SPDX-License-Identifier: MIT
// The registry and its file: what is written when, what is read again when, and that a failure
// leaves both as they were.
#include "apoio/ComDados.h"
#include "apoio/Trecho.h"
#include "texto/Texto.h"

using namespace zel;

namespace {

constexpr std::string_view kNome = "ZEL_Framework.xml";
constexpr Chave kNatOP = R"(IDE\natOP)"_chave;
constexpr Chave kNNF = R"(IDE\nNF)"_chave;

class ConfigRegistro : public ComDados {
protected:
    void esperarNoArquivo(std::string_view texto) const {
        EXPECT_TRUE(contem(pasta.ler(kNome), texto));
    }
    // As a person with an editor: one piece of the file, which must be there, for another.
    void editar(std::string_view de, std::string_view para) const {
        esperarNoArquivo(de);
        pasta.gravar(kNome, substituirAll(pasta.ler(kNome), de, para));
    }
    static int alterarNNF(std::string_view valor) {
        return fnRegAlterarValor_ZEL(R"(IDE\nNF)", valor);
    }
};

} // namespace

TEST_F(ConfigRegistro, arquivo_perdido_e_refeito_da_memoria) {
    ASSERT_EQ(alterarNNF("77"), ZEL_OK);
    std::filesystem::remove(pasta / kNome);
    ASSERT_EQ(fnXML_CarregarXML_ZEL(), ZEL_OK);
    esperarNoArquivo("<nNF>77</nNF>");
}

TEST_F(ConfigRegistro, valores_iguais_ou_recusados_nao_sao_gravados) {
    impedirGravacao("ZEL_Framework.xml");
    const Alteracao iguais[] = {{kNNF, "1"}, {kNatOP, "Venda"}};
    EXPECT_EQ(alterarConfig(iguais), ZEL_OK);
    const Alteracao recusadas[] = {{kNNF, "2"}, {kNatOP, "</"}};
    EXPECT_EQ(alterarConfig(recusadas), ZEL_RECUSADO);
    EXPECT_EQ(valorConfig(kNNF), "1");
}

TEST_F(ConfigRegistro, mudanca_de_outro_processo_nao_se_perde) {
    editar("<natOP>Venda<", "<natOP>Troca<");
    ASSERT_EQ(alterarNNF("2"), ZEL_OK);
    ASSERT_EQ(inicializarConfig(), ZEL_OK);
    EXPECT_EQ(valorConfig(kNatOP), "Troca");
    esperarNoArquivo("<natOP>Troca<");
    // Back to what memory holds already, and again where the file's value is not even read.
    for (const std::string_view cUF : {"cUF", "cuf"}) {
        editar("cUF>", std::string(cUF) + ">");
        editar("<nNF>2<", "<nNF>9<");
        ASSERT_EQ(alterarNNF("2"), ZEL_OK);
        esperarNoArquivo("<nNF>2<");
    }
    // Begun anew, from the defaults where the file is not read.
    EXPECT_EQ(inicializarConfig(), ZEL_OK);
    EXPECT_EQ(valorConfig(kNNF), "1");
}

TEST_F(ConfigRegistro, arquivo_que_nao_se_completa_nao_vale) {
    editar("    <cUF>43</cUF>\r\n", "");
    editar("<nNF>1<", "<nNF>5<");
    impedirGravacao("ZEL_Framework.xml");
    EXPECT_EQ(fnXML_CarregarXML_ZEL(), ZEL_ARQUIVO_INDISPONIVEL);
    EXPECT_EQ(inicializarConfig(), ZEL_ARQUIVO_INDISPONIVEL);
    EXPECT_EQ(valorConfig(kNNF), "1");
    std::filesystem::remove(pasta / "ZEL_Framework.xml.novo");
    EXPECT_EQ(fnXML_CarregarXML_ZEL(), ZEL_OK);
    EXPECT_EQ(valorConfig(kNNF), "5");
    esperarNoArquivo("<cUF>43<");
}

TEST_F(ConfigRegistro, danificado_nunca_e_substituido_sem_copia) {
    ASSERT_EQ(alterarNNF("2"), ZEL_OK);
    const std::string_view danificado = "<FRAMEWORKZEL><IDE><nNF>7</nNF>";
    pasta.gravar(kNome, danificado);
    EXPECT_EQ(alterarNNF("3"), ZEL_CONFIG_ILEGIVEL);
    impedirGravacao("ZEL_Framework.xml.danificado");
    EXPECT_EQ(inicializarConfig(), ZEL_ARQUIVO_INDISPONIVEL);
    EXPECT_EQ(pasta.ler(kNome), danificado);
    EXPECT_EQ(valorConfig(kNNF), "2");
    std::filesystem::remove(pasta / "ZEL_Framework.xml.danificado.novo");
    EXPECT_EQ(inicializarConfig(), ZEL_OK);
    EXPECT_EQ(pasta.ler("ZEL_Framework.xml.danificado"), danificado);
    EXPECT_EQ(valorConfig(kNNF), "1");
}
