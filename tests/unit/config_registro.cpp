// SPDX-License-Identifier: MIT
// The registry and its file: what is written when, what is read again when, and that a failure
// leaves both as they were.
#include "ZEL_FelborFramework.h"
#include "apoio/DiretorioDeDados.h"
#include "config/Registro.h"
#include "util/Texto.h"

#include <gtest/gtest.h>

using namespace zel;

namespace {

constexpr std::string_view kNome = "ZEL_Framework.xml";
constexpr Chave kNatOP = R"(IDE\natOP)"_chave;
constexpr Chave kNNF = R"(IDE\nNF)"_chave;

class ConfigRegistro : public testing::Test {
protected:
    void SetUp() override {
        serDiretorioDeDados(pasta_);
        ASSERT_EQ(inicializarConfig(), ZEL_OK);
    }
    void TearDown() override { ::unsetenv("ZEL_DIRETORIO"); }

    void esperarNoArquivo(std::string_view texto) const {
        EXPECT_NE(pasta_.ler(kNome).find(texto), std::string::npos) << texto;
    }
    // As a person with an editor: one piece of the file, which must be there, for another.
    void editar(std::string_view de, std::string_view para) const {
        esperarNoArquivo(de);
        pasta_.gravar(kNome, substituirAll(pasta_.ler(kNome), de, para));
    }
    // A directory stands where the save would write first: it fails, for root too.
    void impedirGravacao(const std::string &nome) const {
        std::filesystem::create_directory(pasta_ / (nome + ".novo"));
    }
    static int alterarNNF(std::string_view valor) {
        return fnRegAlterarValor_ZEL(R"(IDE\nNF)", valor);
    }

    PastaTemporaria pasta_;
};

} // namespace

TEST_F(ConfigRegistro, missing_file_is_made_from_memory) {
    ASSERT_EQ(alterarNNF("77"), ZEL_OK);
    std::filesystem::remove(pasta_ / kNome);
    ASSERT_EQ(fnXML_CarregarXML_ZEL(), ZEL_OK);
    esperarNoArquivo("<nNF>77</nNF>");
}

TEST_F(ConfigRegistro, equal_or_refused_values_are_not_written) {
    impedirGravacao("ZEL_Framework.xml");
    const Alteracao iguais[] = {{kNNF, "1"}, {kNatOP, "Venda"}};
    EXPECT_EQ(alterarConfig(iguais), ZEL_OK);
    const Alteracao recusadas[] = {{kNNF, "2"}, {kNatOP, "</"}};
    EXPECT_EQ(alterarConfig(recusadas), ZEL_RECUSADO);
    EXPECT_EQ(valorConfig(kNNF), "1");
}

TEST_F(ConfigRegistro, change_of_another_process_is_not_lost) {
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

TEST_F(ConfigRegistro, values_of_a_file_that_cannot_be_completed_do_not_count) {
    editar("    <cUF>43</cUF>\r\n", "");
    editar("<nNF>1<", "<nNF>5<");
    impedirGravacao("ZEL_Framework.xml");
    EXPECT_EQ(fnXML_CarregarXML_ZEL(), ZEL_ARQUIVO_INDISPONIVEL);
    EXPECT_EQ(inicializarConfig(), ZEL_ARQUIVO_INDISPONIVEL);
    EXPECT_EQ(valorConfig(kNNF), "1");
    std::filesystem::remove(pasta_ / "ZEL_Framework.xml.novo");
    EXPECT_EQ(fnXML_CarregarXML_ZEL(), ZEL_OK);
    EXPECT_EQ(valorConfig(kNNF), "5");
    esperarNoArquivo("<cUF>43<");
}

TEST_F(ConfigRegistro, damaged_file_is_never_replaced_without_a_copy) {
    ASSERT_EQ(alterarNNF("2"), ZEL_OK);
    const std::string_view danificado = "<FRAMEWORKZEL><IDE><nNF>7</nNF>";
    pasta_.gravar(kNome, danificado);
    EXPECT_EQ(alterarNNF("3"), ZEL_CONFIG_ILEGIVEL);
    impedirGravacao("ZEL_Framework.xml.danificado");
    EXPECT_EQ(inicializarConfig(), ZEL_ARQUIVO_INDISPONIVEL);
    EXPECT_EQ(pasta_.ler(kNome), danificado);
    EXPECT_EQ(valorConfig(kNNF), "2");
}
