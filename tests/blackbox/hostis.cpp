// SPDX-License-Identifier: MIT
// Callers that keep to no rule: every argument of every function null, empty, far too long, of
// every byte, nested without end, in every receipt state. A crash, a code that the header does not
// list, a refusal that changes something, a sale spoilt for good or a stack that grows with the
// input shows here: all of it runs on a stack of 256 kB and under a locale with a decimal comma, of
// which not one byte may reach a document.
#include "apoio/Chamadas.h"
#include "apoio/Passos.h"
#include "apoio/Trecho.h"
#include "blackbox/Caixa.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <clocale>
#include <functional>

namespace fs = std::filesystem;

namespace {

const std::pair<const char *, Texto> kHostis[] = {
    {"null", std::nullopt},
    {"empty", ""},
    {"long", std::string(kMaiorTexto, 'x')},
    {"digits", std::string(kMaiorTexto, '9')},
    {"every byte", todosOsBytes()},
    {"nested", repetir("<a>", kMaiorTexto / 3)},
};

void emPilhaPequena(std::function<void()> fazer) {
    pthread_attr_t atributos;
    pthread_t linha;
    pthread_attr_init(&atributos);
    ASSERT_EQ(pthread_attr_setstacksize(&atributos, std::size_t{256} * 1024), 0);
    const auto corpo = [](void *funcao) -> void * {
        (*static_cast<std::function<void()> *>(funcao))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&linha, &atributos, corpo, &fazer), 0);
    pthread_join(linha, nullptr);
    pthread_attr_destroy(&atributos);
}

// A till brought to a state, whatever it was in, by the calls that lead there; number and presets
// that a hostile caller left are replaced.
void levarAoEstado(const Caixa &c, int estado) {
    c.config("IDE\\nNF", "0");
    c.config("IDE\\Serie", "1");
    c.config("CONFIGURACAO\\estadoCFe", estado == 6 ? "6" : "0");
    if (estado % 6 == 0) return;
    ASSERT_EQ(abrir(c, "12345678909"), ZEL_OK);
    ASSERT_EQ(c->aCFConfICMS00_ZEL("0", "00", "3", "18,00"), ZEL_OK);
    ASSERT_EQ(c->aCFConfPisNT_ZEL("07"), ZEL_OK);
    ASSERT_EQ(c->aCFConfCofinsNT_ZEL("07"), ZEL_OK);
    ASSERT_EQ(avancar(c, estado, 1), estado);
}

// The document of a plain sale whose number, code and shop do not depend on what was before.
std::string venda(const Caixa &c) {
    c.config("EMIT\\xNome", "Loja");
    c.config("IDE\\cNF", "1");
    levarAoEstado(c, 5);
    return mascarar(c.lerArquivo("documentosEnvio.xml"));
}

// One function with each argument in turn, and with all of them, replaced by the text.
void maltratar(const Caixa &c, int estado, const Chamada &chamada, const Texto &texto) {
    for (std::size_t qual = 0; qual <= chamada.argumentos.size(); ++qual) {
        std::vector<Texto> textos = chamada.plausiveis();
        for (std::size_t i = 0; i < textos.size(); ++i)
            if (i == qual || qual == textos.size()) textos[i] = texto;
        const std::string antes = c.lerArquivo("ArqPersist.bin");
        const int codigo = chamada.chamar(c, textos);
        EXPECT_TRUE(chamada.responde(codigo)) << codigo << ", argument " << qual;
        const int depois = c->rCFVerificarStatus_ZEL();
        EXPECT_TRUE(codigo >= 0 || depois == estado) << codigo << ", argument " << qual;
        EXPECT_TRUE(codigo >= 0 || c.lerArquivo("ArqPersist.bin") == antes) << qual;
        if (depois == estado) continue;
        ASSERT_NO_FATAL_FAILURE(levarAoEstado(c, estado));
    }
}

class Hostis : public testing::TestWithParam<int> {
protected:
    void SetUp() override {
        ASSERT_NE(std::setlocale(LC_ALL, "pt_BR.UTF-8"), nullptr) << "./test makes it, see LOCPATH";
        fs::current_path(caixa.diretorio()); // no name that a caller makes up lands elsewhere
    }
    void TearDown() override {
        std::setlocale(LC_ALL, "C");
        fs::current_path("/");
    }
    Caixa caixa;
};

TEST_P(Hostis, cada_argumento_de_cada_funcao) {
    const int estado = GetParam();
    emPilhaPequena([&] {
        const std::string certa = venda(caixa);
        for (const auto &[nome, valor] :
             {std::pair("vNF", "10.00"), {"qCom", "1.0000"}, {"vICMS", "1.80"}})
            EXPECT_EQ(elemento(certa, nome), valor);
        ASSERT_NO_FATAL_FAILURE(levarAoEstado(caixa, estado));
        for (const Chamada &chamada : chamadas())
            for (const auto &[nome, texto] : kHostis) {
                SCOPED_TRACE(std::string(chamada.nome) + ", " + nome);
                maltratar(caixa, estado, chamada, texto);
            }
        EXPECT_EQ(venda(caixa), certa);
    });
}

INSTANTIATE_TEST_SUITE_P(Estado, Hostis, testing::Range(0, 7));

TEST_F(Hostis, cem_mil_niveis_nao_esgotam_a_pilha) {
    constexpr std::size_t kNiveis = 100'000;
    const std::string fundo = repetir("<a>", kNiveis) + repetir("</a>", kNiveis);
    const std::string base64 = repetir("PGE+", kNiveis) + repetir("PC9hPjwvYT48L2E+", kNiveis / 3);
    emPilhaPequena([&] {
        ASSERT_NO_FATAL_FAILURE(levarAoEstado(caixa, 1));
        EXPECT_EQ(caixa->aCFVenderXml_ZEL(fundo.c_str()), ZEL_RECUSADO);
        EXPECT_EQ(caixa->GeraPDF_ZEL(base64.c_str()), ZEL_RECUSADO);
        EXPECT_EQ(caixa->GeraPDF_DANFE_ZEL(base64.c_str()), ZEL_RECUSADO);
        std::vector<char> saida(ZEL_TAMANHO_CUPOM);
        caixa.escreverArquivo("fundo.xml", fundo);
        for (const int tipo : {1, 5})
            EXPECT_EQ(caixa->GerarArquivoFormatadoNF_ZEL("fundo.xml", "fundo.xml", "", 42, tipo, "",
                                                         saida.data()),
                      ZEL_RECUSADO);
        caixa.parar();
        caixa.escreverArquivo("ArqPersist.bin", "01|\r\n02|1|" + fundo + "\r\n");
        caixa.escreverArquivo("ZEL_Framework.xml", "<FRAMEWORKZEL>" + fundo + "</FRAMEWORKZEL>");
        caixa.iniciar();
        EXPECT_EQ(elemento(venda(caixa), "vNF"), "10.00");
    });
}

} // namespace
