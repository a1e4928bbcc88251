// The registry and its file: what is written when, what is read again when, and that a failure
// leaves both as they were.
#include "ZEL_FelborFramework.h"
#include "config/Arredondamento.h"
#include "config/Registro.h"
#include "util/Arquivo.h"
#include "util/Texto.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace zel;

namespace {

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
        std::string modelo = (std::filesystem::temp_directory_path() / "zel-XXXXXX").string();
        ASSERT_NE(::mkdtemp(modelo.data()), nullptr);
        diretorio_ = modelo;
        ::setenv("ZEL_DIRETORIO", diretorio_.c_str(), 1);
        caminho_ = diretorio_ + "/ZEL_Framework.xml";
        ASSERT_EQ(inicializarConfig(), ZEL_OK);
    }
    void TearDown() override { std::filesystem::remove_all(diretorio_); }

    static std::string ler(const std::string &caminho) {
        std::string texto;
        return lerArquivo(caminho, texto) == Leitura::kLido ? texto : "none";
    }
    std::string arquivo() const { return ler(caminho_); }
    void escrever(std::string_view texto) const {
        ASSERT_EQ(substituirArquivo(caminho_, texto, Acesso::kPrivado), ZEL_OK);
    }
    // As a person with an editor: one piece of the file, which must be there, for another.
    void editar(std::string_view de, std::string_view para) const {
        ASSERT_NE(arquivo().find(de), std::string::npos);
        escrever(substituirAll(arquivo(), de, para));
    }
    // Every save makes a new file.
    struct stat situacao() const {
        struct stat dados {};
        ::stat(caminho_.c_str(), &dados);
        return dados;
    }

    std::string diretorio_;
    std::string caminho_;
};

} // namespace

TEST_F(ConfigRegistro, criaPrivadoComOsValoresDaMemoria) {
    EXPECT_EQ(situacao().st_mode & 0777, 0600U);
    EXPECT_EQ(arquivo(), fnXML_CriarArquivo(ValoresConfig{}));
    ASSERT_EQ(fnRegAlterarValor_ZEL(R"(ide\NF)", "77"), ZEL_OK);
    std::filesystem::remove(caminho_);
    ASSERT_EQ(fnXML_CarregarXML_ZEL(), ZEL_OK);
    EXPECT_NE(arquivo().find("<nNF>77</nNF>"), std::string::npos);
    std::filesystem::remove(caminho_);
    ASSERT_EQ(inicializarConfig(), ZEL_OK); // from the defaults
    EXPECT_EQ(valorConfig(kNNF), "1");
}

TEST_F(ConfigRegistro, alteraPorCaminho) {
    const std::string sessenta(60, 'x');
    const struct {
        std::string caminho, valor;
        int codigo;
        std::string esperado; // natOP afterwards
    } casos[] = {
        {R"(IDE\natOP)", sessenta, ZEL_OK, sessenta},
        {R"(IDE\natOP)", sessenta + "y", ZEL_OK, sessenta},
        {R"(IDE\natOP)", "a</b", ZEL_RECUSADO, sessenta},
        {R"(IDE\natOP)", sessenta + "</", ZEL_OK, sessenta}, // cut first, then judged
        {R"(IDE\natOPX)", "a", ZEL_RECUSADO, sessenta},
        {R"(IDE\natOP)" + std::string(100, ' '), "a", ZEL_RECUSADO, sessenta},
        {R"(ide\NATOP)", "", ZEL_OK, ""},
    };
    for (const auto &caso : casos) {
        EXPECT_EQ(fnRegAlterarValor_ZEL(caso.caminho, caso.valor), caso.codigo) << caso.valor;
        std::string valor = "?";
        EXPECT_EQ(fnRegRetornarValor_ZEL(R"(IDE\NATOP)", valor), ZEL_OK);
        EXPECT_EQ(valor, caso.esperado);
        EXPECT_NE(arquivo().find("<natOP>" + caso.esperado + "</natOP>"), std::string::npos);
    }
    std::string valor = "?";
    EXPECT_EQ(fnRegRetornarValor_ZEL(R"(IDE\natOPX)", valor), ZEL_RECUSADO);
    EXPECT_EQ(valor, "?");
}

TEST_F(ConfigRegistro, gravaUmaVezEsoOqueMuda) {
    const auto antes = situacao();
    const Alteracao iguais[] = {{kNNF, "1"}, {kNatOP, "Venda"}};
    EXPECT_EQ(alterarConfig(iguais), ZEL_OK);
    EXPECT_EQ(situacao().st_ino, antes.st_ino);
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
    EXPECT_NE(arquivo().find("<natOP>Troca<"), std::string::npos);
    // Setting back what this process holds already: the file says something else.
    editar("<nNF>2<", "<nNF>9<");
    ASSERT_EQ(fnRegAlterarValor_ZEL(R"(IDE\nNF)", "2"), ZEL_OK);
    EXPECT_NE(arquivo().find("<nNF>2<"), std::string::npos);
    // Behind an element that is not understood the file's value is not the one in memory.
    editar("<cUF>43</cUF>", "<cuf>43</cuf>");
    editar("<nNF>2<", "<nNF>9<");
    ASSERT_EQ(fnRegAlterarValor_ZEL(R"(IDE\nNF)", "2"), ZEL_OK);
    EXPECT_NE(arquivo().find("<nNF>2<"), std::string::npos);
}

TEST_F(ConfigRegistro, falhaDeGravacaoNadaMuda) {
    const std::string antes = arquivo();
    {
        const SemEspaco semEspaco;
        EXPECT_EQ(fnRegAlterarValor_ZEL(R"(IDE\nNF)", "2"), ZEL_ARQUIVO_INDISPONIVEL);
    }
    EXPECT_EQ(valorConfig(kNNF), "1");
    EXPECT_EQ(arquivo(), antes);
    // The completion of a foreign file cannot be saved: its values do not count either.
    editar("    <cUF>43</cUF>\r\n", "");
    editar("<nNF>1<", "<nNF>5<");
    {
        const SemEspaco semEspaco;
        EXPECT_EQ(fnXML_CarregarXML_ZEL(), ZEL_ARQUIVO_INDISPONIVEL);
        EXPECT_EQ(inicializarConfig(), ZEL_ARQUIVO_INDISPONIVEL);
    }
    EXPECT_EQ(valorConfig(kNNF), "1");
    EXPECT_EQ(garantirConfig(), ZEL_OK); // was loaded once
    EXPECT_EQ(fnXML_CarregarXML_ZEL(), ZEL_OK);
    EXPECT_EQ(valorConfig(kNNF), "5");
    EXPECT_NE(arquivo().find("<cUF>43<"), std::string::npos);
}

TEST_F(ConfigRegistro, arquivoDanificado) {
    ASSERT_EQ(fnRegAlterarValor_ZEL(R"(IDE\nNF)", "2"), ZEL_OK);
    for (const std::string_view texto : {"", "<FRAMEWORKZEL><IDE><nNF>7</nNF>"}) {
        escrever(texto);
        EXPECT_EQ(fnXML_CarregarXML_ZEL(), ZEL_CONFIG_ILEGIVEL);
        EXPECT_EQ(fnRegAlterarValor_ZEL(R"(IDE\nNF)", "3"), ZEL_CONFIG_ILEGIVEL);
        EXPECT_EQ(valorConfig(kNNF), "2");
        EXPECT_EQ(arquivo(), texto);
    }
    {
        const SemEspaco semEspaco; // the only copy must not be lost
        EXPECT_EQ(inicializarConfig(), ZEL_ARQUIVO_INDISPONIVEL);
        EXPECT_NE(arquivo().find("<nNF>7<"), std::string::npos);
    }
    EXPECT_EQ(inicializarConfig(), ZEL_OK);
    EXPECT_EQ(valorConfig(kNNF), "1");
    EXPECT_EQ(ler(caminho_ + ".danificado"), "<FRAMEWORKZEL><IDE><nNF>7</nNF>");

    // A thing in the file's place that cannot be read is left alone.
    std::filesystem::remove(caminho_);
    std::filesystem::create_directory(caminho_);
    EXPECT_EQ(inicializarConfig(), ZEL_ARQUIVO_INDISPONIVEL);
    EXPECT_EQ(fnXML_CarregarXML_ZEL(), ZEL_ARQUIVO_INDISPONIVEL);
    EXPECT_TRUE(std::filesystem::is_directory(caminho_));
}

// Defaults in memory must not hide that the file was read before.
TEST_F(ConfigRegistro, padroesNaMemoriaDepoisArquivo) {
    ASSERT_EQ(fnRegAlterarValor_ZEL(R"(IDE\nNF)", "2"), ZEL_OK);
    fnInicializarEstruturaDadosZEL_AUX();
    EXPECT_EQ(valorConfig(kNNF), "1");
    escrever("");
    EXPECT_EQ(garantirConfig(), ZEL_CONFIG_ILEGIVEL); // a passing reason: tried again
    escrever(substituirAll(fnXML_CriarArquivo(ValoresConfig{}), "<nNF>1<", "<nNF>2<"));
    EXPECT_EQ(garantirConfig(), ZEL_OK);
    EXPECT_EQ(valorConfig(kNNF), "2");
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

TEST_F(ConfigRegistro, autorizacaoCortada) {
    definirAutorizacao({std::string(45, 'd'), "2014-01-31T23:59:59-02:00"});
    EXPECT_EQ(autorizacaoUltimoDocumento().digest, std::string(44, 'd'));
    EXPECT_EQ(autorizacaoUltimoDocumento().dataHora, "2014-01-31T23:59:59-02:00");
}
