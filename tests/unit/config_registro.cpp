// The registry and its file: what is written when, what is read again when, and that a failure
// leaves both as they were.
#include "PastaTemporaria.h"
#include "ZEL_FelborFramework.h"
#include "config/Arredondamento.h"
#include "config/Registro.h"
#include "util/Texto.h"

#include <csignal>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace zel;

namespace {

constexpr std::string_view kNome = "ZEL_Framework.xml";
constexpr Chave kNatOP = R"(IDE\natOP)"_chave;
constexpr Chave kNNF = R"(IDE\nNF)"_chave;

// No file grows while this stands: every save fails, for root too.
class SemEspaco {
public:
    SemEspaco() {
        std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &antes_);
        const rlimit nada{0, antes_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &nada);
    }
    ~SemEspaco() { ::setrlimit(RLIMIT_FSIZE, &antes_); }

private:
    rlimit antes_{};
};

class ConfigRegistro : public testing::Test {
protected:
    void SetUp() override {
        ::setenv("ZEL_DIRETORIO", (pasta_ / "").c_str(), 1);
        ASSERT_EQ(inicializarConfig(), ZEL_OK);
    }
    void TearDown() override { ::unsetenv("ZEL_DIRETORIO"); }

    bool noArquivo(std::string_view texto) const {
        return pasta_.ler(kNome).find(texto) != std::string::npos;
    }
    // As a person with an editor: one piece of the file, which must be there, for another.
    void editar(std::string_view de, std::string_view para) const {
        ASSERT_TRUE(noArquivo(de)) << de;
        pasta_.gravar(kNome, substituirAll(pasta_.ler(kNome), de, para));
    }
    // Every save makes a new file.
    struct stat situacao() const {
        struct stat dados {};
        ::stat((pasta_ / kNome).c_str(), &dados);
        return dados;
    }

    PastaTemporaria pasta_;
};

} // namespace

TEST_F(ConfigRegistro, criaPrivadoComOsValoresDaMemoria) {
    EXPECT_EQ(situacao().st_mode & 0777, 0600U);
    EXPECT_EQ(pasta_.ler(kNome), fnXML_CriarArquivo(ValoresConfig{}));
    ASSERT_EQ(fnRegAlterarValor_ZEL(R"(ide\NF)", "77"), ZEL_OK);
    std::filesystem::remove(pasta_ / kNome);
    ASSERT_EQ(fnXML_CarregarXML_ZEL(), ZEL_OK);
    EXPECT_TRUE(noArquivo("<nNF>77</nNF>"));
    std::filesystem::remove(pasta_ / kNome);
    ASSERT_EQ(inicializarConfig(), ZEL_OK); // from the defaults
    EXPECT_EQ(valorConfig(kNNF), "1");
}

TEST_F(ConfigRegistro, alteraPorCaminho) {
    const std::string longo(60, 'x');
    const struct {
        std::string caminho, valor;
        int codigo;
        std::string esperado; // natOP afterwards
    } casos[] = {
        {R"(IDE\natOP)", longo, ZEL_OK, longo},
        {R"(IDE\natOP)", "a</b", ZEL_RECUSADO, longo},
        {R"(IDE\natOP)", longo.substr(1) + "y</", ZEL_OK, longo.substr(1) + "y"}, // cut first
        {R"(IDE\natOPX)", "a", ZEL_RECUSADO, longo.substr(1) + "y"},
        {R"(ide\NATOP)", "", ZEL_OK, ""},
    };
    std::string valor;
    for (const auto &caso : casos) {
        EXPECT_EQ(fnRegAlterarValor_ZEL(caso.caminho, caso.valor), caso.codigo) << caso.valor;
        EXPECT_EQ(fnRegRetornarValor_ZEL(R"(IDE\NATOP)", valor), ZEL_OK);
        EXPECT_EQ(valor, caso.esperado);
        EXPECT_TRUE(noArquivo("<natOP>" + caso.esperado + "</natOP>"));
    }
    EXPECT_EQ(fnRegRetornarValor_ZEL(R"(IDE\natOPX)", valor), ZEL_RECUSADO);
}

TEST_F(ConfigRegistro, gravaSoQuandoMuda) {
    const auto antes = situacao();
    const Alteracao iguais[] = {{kNNF, "1"}, {kNatOP, "Venda"}};
    EXPECT_EQ(alterarConfig(iguais), ZEL_OK);
    // One refused value among several: none is stored.
    const Alteracao recusadas[] = {{kNNF, "2"}, {kNatOP, "</"}};
    EXPECT_EQ(alterarConfig(recusadas), ZEL_RECUSADO);
    EXPECT_EQ(valorConfig(kNNF), "1");
    EXPECT_EQ(situacao().st_ino, antes.st_ino);
}

// Another process changes one value while this one changes another: neither is lost.
TEST_F(ConfigRegistro, veOqueOutroProcessoMudou) {
    editar("<natOP>Venda<", "<natOP>Troca<");
    ASSERT_EQ(fnRegAlterarValor_ZEL(R"(IDE\nNF)", "2"), ZEL_OK);
    EXPECT_EQ(valorConfig(kNatOP), "Troca");
    EXPECT_TRUE(noArquivo("<natOP>Troca<"));
    // Back to what memory holds already, and again where the file's value is not even read.
    editar("<nNF>2<", "<nNF>9<");
    ASSERT_EQ(fnRegAlterarValor_ZEL(R"(IDE\nNF)", "2"), ZEL_OK);
    EXPECT_TRUE(noArquivo("<nNF>2<"));
    editar("<cUF>43</cUF>", "<cuf>43</cuf>");
    editar("<nNF>2<", "<nNF>9<");
    ASSERT_EQ(fnRegAlterarValor_ZEL(R"(IDE\nNF)", "2"), ZEL_OK);
    EXPECT_TRUE(noArquivo("<nNF>2<"));
    // Begun anew from the defaults, although the file's bytes are those known.
    EXPECT_EQ(inicializarConfig(), ZEL_OK);
    EXPECT_EQ(valorConfig(kNNF), "1");
}

TEST_F(ConfigRegistro, falhaDeGravacaoNadaMuda) {
    {
        const SemEspaco semEspaco;
        EXPECT_EQ(fnRegAlterarValor_ZEL(R"(IDE\nNF)", "2"), ZEL_ARQUIVO_INDISPONIVEL);
    }
    EXPECT_EQ(valorConfig(kNNF), "1");
    EXPECT_TRUE(noArquivo("<nNF>1<"));
    // The completion of a foreign file cannot be saved: its values do not count either.
    editar("    <cUF>43</cUF>\r\n", "");
    editar("<nNF>1<", "<nNF>5<");
    {
        const SemEspaco semEspaco;
        EXPECT_EQ(fnXML_CarregarXML_ZEL(), ZEL_ARQUIVO_INDISPONIVEL);
        EXPECT_EQ(inicializarConfig(), ZEL_ARQUIVO_INDISPONIVEL);
    }
    EXPECT_EQ(valorConfig(kNNF), "1");
    EXPECT_EQ(fnXML_CarregarXML_ZEL(), ZEL_OK);
    EXPECT_EQ(valorConfig(kNNF), "5");
    EXPECT_TRUE(noArquivo("<cUF>43<"));
}

TEST_F(ConfigRegistro, arquivoDanificado) {
    ASSERT_EQ(fnRegAlterarValor_ZEL(R"(IDE\nNF)", "2"), ZEL_OK);
    for (const std::string_view texto : {"", "<FRAMEWORKZEL><IDE><nNF>7</nNF>"}) {
        pasta_.gravar(kNome, texto);
        EXPECT_EQ(fnRegAlterarValor_ZEL(R"(IDE\nNF)", "3"), ZEL_CONFIG_ILEGIVEL);
        EXPECT_EQ(valorConfig(kNNF), "2");
        EXPECT_EQ(pasta_.ler(kNome), texto);
    }
    {
        const SemEspaco semEspaco; // it cannot be kept, so it must not be replaced
        EXPECT_EQ(inicializarConfig(), ZEL_ARQUIVO_INDISPONIVEL);
        EXPECT_TRUE(noArquivo("<nNF>7<"));
    }
    EXPECT_EQ(inicializarConfig(), ZEL_OK);
    EXPECT_EQ(valorConfig(kNNF), "1");
    EXPECT_EQ(pasta_.ler("ZEL_Framework.xml.danificado"), "<FRAMEWORKZEL><IDE><nNF>7</nNF>");
    // A thing in the file's place that cannot be read is left alone.
    std::filesystem::remove(pasta_ / kNome);
    std::filesystem::create_directory(pasta_ / kNome);
    EXPECT_EQ(inicializarConfig(), ZEL_ARQUIVO_INDISPONIVEL);
    EXPECT_EQ(fnXML_CarregarXML_ZEL(), ZEL_ARQUIVO_INDISPONIVEL);
    EXPECT_TRUE(std::filesystem::is_directory(pasta_ / kNome));
}

// The first successful load of a process is the only one that garantirConfig makes; a failed one
// is tried again.
TEST_F(ConfigRegistro, primeiraCarga) {
    fnInicializarEstruturaDadosZEL_AUX();
    const std::string inteiro = pasta_.ler(kNome);
    pasta_.gravar(kNome, "");
    EXPECT_EQ(garantirConfig(), ZEL_CONFIG_ILEGIVEL);
    pasta_.gravar(kNome, substituirAll(inteiro, "<nNF>1<", "<nNF>2<"));
    EXPECT_EQ(garantirConfig(), ZEL_OK);
    editar("<nNF>2<", "<nNF>3<");
    EXPECT_EQ(garantirConfig(), ZEL_OK);
    EXPECT_EQ(valorConfig(kNNF), "2");
    EXPECT_EQ(inicializarConfig(), ZEL_OK);
    EXPECT_EQ(valorConfig(kNNF), "3");
}

TEST_F(ConfigRegistro, regraDoDinheiro) {
    const struct {
        std::string_view modo;
        double valor, esperado;
    } casos[] = {{"A", 2.999, 3.00}, {"T", 2.999, 2.99}, {"t", -2.999, -2.99},
                 {"t", 0.29, 0.28},  {"", 0.29, 0.29},   {"x", 1.005, 1.00}};
    for (const auto &caso : casos) {
        ASSERT_EQ(fnRegAlterarValor_ZEL(R"(CONFIGURACAO\ArredondarTruncar)", caso.modo), ZEL_OK);
        EXPECT_EQ(fnArredondarTruncar(caso.valor), caso.esperado) << caso.modo << caso.valor;
    }
}
