// SPDX-License-Identifier: MIT
// Whose the receipt is: of the process that changes it, to the receipt's end; of several, one call
// at a time, where they are told to share it. And what a process knows of a receipt that another
// one has moved on.
#include "apoio/Ambiente.h"
#include "apoio/Passos.h"
#include "apoio/Trecho.h"
#include "blackbox/Caixa.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <vector>

namespace fs = std::filesystem;

namespace {

int cancelar(const Funcoes &f) {
    return f.tCFCancelar_ZEL("", "", "", "", "");
}
int zerar(const Funcoes &f) {
    return f.regAlterarValor_ZEL("CONFIGURACAO\\estadoCFe", "0");
}

struct Fim {
    const char *nome;
    int (*acabar)(const Funcoes &primeiro, const Funcoes &segundo);
};
constexpr Fim kFins[] = {
    {"closed", [](const Funcoes &f, const Funcoes &) { return fechar(f); }},
    {"cancelled", [](const Funcoes &f, const Funcoes &) { return cancelar(f); }},
    {"reset", [](const Funcoes &f, const Funcoes &) { return zerar(f); }},
    {"reset by the other", [](const Funcoes &, const Funcoes &g) { return zerar(g); }},
};

// A worker of a web server waits for its next request, perhaps for good; another till goes on.
TEST(PosseDoCupom, acaba_com_o_cupom) {
    for (const Fim &fim : kFins) {
        SCOPED_TRACE(fim.nome);
        const Caixa primeiro;
        ASSERT_EQ(avancar(primeiro, 2), 2);
        const Caixa segundo(primeiro);
        EXPECT_EQ(vender(segundo), ZEL_ARQUIVO_INDISPONIVEL);
        ASSERT_EQ(fim.acabar(primeiro, segundo), ZEL_OK);
        ASSERT_EQ(abrir(segundo), ZEL_OK);
        ASSERT_EQ(vender(segundo, "7.00"), ZEL_OK);
        EXPECT_EQ(vender(primeiro), ZEL_ARQUIVO_INDISPONIVEL);
        EXPECT_EQ(primeiro.info("1"), "1") << "read from what the other one sold";
        EXPECT_EQ(primeiro.info("3"), "7.00");
        ASSERT_EQ(fechar(segundo), ZEL_OK);
        EXPECT_EQ(elemento(primeiro.lerArquivo("documentosEnvio.xml"), "vNF"), "7.00");
        const std::string numero = segundo.config("IDE\\nNF");
        ASSERT_EQ(avancar(primeiro, 5), 5);
        EXPECT_EQ(std::stoi(primeiro.config("IDE\\nNF")), std::stoi(numero) + 1);
    }
}

// PHP: each request of one receipt may be served by another process.
TEST(PosseDoCupom, compartilhada_dura_uma_chamada) {
    const Ambiente compartilhado("ZEL_COMPARTILHADO", "1");
    const Caixa um;
    const Caixa dois(um), tres(um);
    for (const Caixa *caixa : {&um, &dois, &tres})
        ASSERT_EQ((*caixa)->rCFVerificarStatus_ZEL(), 0);
    ASSERT_EQ(abrir(um), ZEL_OK);
    EXPECT_EQ(vender(dois), ZEL_OK);
    EXPECT_EQ(vender(tres, "5.00"), ZEL_OK);
    EXPECT_EQ(um->aCFLancarDescontoItem_ZEL(2, "D$", "1.00"), ZEL_OK);
    EXPECT_EQ(dois.info("1"), "2");
    EXPECT_EQ(totalizar(dois), ZEL_OK);
    EXPECT_EQ(pagar(tres), ZEL_OK);
    EXPECT_EQ(encerrar(um), ZEL_OK);
    EXPECT_EQ(elemento(dois.lerArquivo("documentosEnvio.xml"), "vNF"), "14.00");
    EXPECT_EQ(abrir(tres), ZEL_OK);
    EXPECT_EQ(vender(um), ZEL_OK);
    EXPECT_EQ(cancelar(tres), ZEL_OK) << "it knows that it is in progress";
    // One that does not share has it for good.
    const Ambiente sozinho("ZEL_COMPARTILHADO", "0");
    const Caixa quatro(um);
    ASSERT_EQ(avancar(quatro, 2), 2);
    EXPECT_EQ(vender(um), ZEL_ARQUIVO_INDISPONIVEL);
    ASSERT_EQ(fechar(quatro), ZEL_OK);
    EXPECT_EQ(abrir(um), ZEL_OK);
}

// "Cancel what is in progress" means what its process takes to be so, never a sale that another one
// has closed and been paid for meanwhile.
TEST(EstadoDeOutro, nao_se_cancela_o_que_nao_se_sabe) {
    for (const char *compartilhado : {"0", "1"}) {
        SCOPED_TRACE(compartilhado);
        const Ambiente ambiente("ZEL_COMPARTILHADO", compartilhado);
        const Caixa primeiro;
        ASSERT_EQ(avancar(primeiro, 2), 2);
        const Caixa segundo(primeiro);
        ASSERT_EQ(segundo->rCFVerificarStatus_ZEL(), 2);
        ASSERT_EQ(fechar(primeiro), ZEL_OK);
        const std::string documento = primeiro.lerArquivo("documentosEnvio.xml");
        const std::string config = primeiro.lerArquivo("ZEL_Framework.xml");
        for (int vez = 0; vez < 2; ++vez)
            EXPECT_EQ(cancelar(segundo), ZEL_ARQUIVO_INDISPONIVEL);
        EXPECT_EQ(primeiro.lerArquivo("documentosEnvio.xml"), documento);
        EXPECT_TRUE(primeiro.lerArquivo("ZEL_Framework.xml") == config);
        EXPECT_EQ(segundo->rCFVerificarStatus_ZEL(), 5);
        EXPECT_EQ(segundo.info("2"), primeiro.config("IDE\\nNF"));
        EXPECT_EQ(cancelar(segundo), ZEL_CANCELAMENTO_GRAVADO);
        // Nor a receipt that was begun since.
        ASSERT_EQ(avancar(primeiro, 2), 2);
        EXPECT_EQ(cancelar(segundo), ZEL_ARQUIVO_INDISPONIVEL);
        EXPECT_EQ(fechar(primeiro), ZEL_OK);
    }
}

// The same state, of something else.
TEST(EstadoDeOutro, o_mesmo_estado_de_outro_documento) {
    const struct {
        const char *nome;
        int ate, depois; // what the first one tells of its receipt; what the second one gets to
        bool offline;
        int repetido; // once it has asked again
    } casos[] = {
        {"another document", 5, 5, false, ZEL_CANCELAMENTO_GRAVADO},
        {"another receipt", 2, 2, false, ZEL_OK},
        {"another document, offline", 5, 5, true, ZEL_OK},
        {"the next one in progress, offline", 2, 2, true, ZEL_OK},
    };
    for (const char *compartilhado : {"0", "1"})
        for (const auto &caso : casos) {
            SCOPED_TRACE(std::string(caso.nome) + compartilhado);
            const Ambiente ambiente("ZEL_COMPARTILHADO", compartilhado);
            const Caixa sabe;
            Caixa muda(sabe);
            ASSERT_EQ(avancar(caso.ate == 5 ? sabe : muda, caso.ate), caso.ate);
            ASSERT_EQ(sabe->rCFVerificarStatus_ZEL(), caso.ate);
            if (caso.ate < 5) {
                ASSERT_EQ(fechar(muda), ZEL_OK);
            }
            ASSERT_EQ(avancar(muda, caso.depois), caso.depois);
            muda.parar();
            const auto cancelar = [&] {
                std::string onde = sabe.diretorio();
                onde.resize(ZEL_TAMANHO_DIRETORIOS);
                return caso.offline ? sabe->tCFCancelarOffline_ZEL("", "", "", "", onde.data())
                                    : ::cancelar(sabe);
            };
            const auto arquivos = [&] {
                std::map<std::string, std::string> bytes;
                for (const auto &entrada : fs::directory_iterator(sabe.diretorio())) {
                    const std::string nome = entrada.path().filename();
                    if (nome.ends_with(".xml") || nome.ends_with(".bin") ||
                        nome.ends_with(".ctgCanc"))
                        bytes[nome] = sabe.lerArquivo(nome);
                }
                return bytes;
            };
            const auto antes = arquivos();
            for (int vez = 0; vez < 2; ++vez)
                EXPECT_EQ(cancelar(), ZEL_ARQUIVO_INDISPONIVEL);
            EXPECT_TRUE(arquivos() == antes);
            EXPECT_EQ(sabe->rCFVerificarStatus_ZEL(), caso.depois);
            EXPECT_EQ(cancelar(), caso.repetido);
        }
}

// Nor is what a process does itself, or others to a receipt that is its own, a reason to refuse it.
TEST(EstadoDeOutro, o_proprio_cupom_se_cancela) {
    const Caixa caixa;
    const Caixa outro(caixa);
    EXPECT_LT(caixa->aCFAbrirNumSerie_ZEL(7, 3, "", "x", "Rua", "", "", "", "", "", ""), 0);
    EXPECT_EQ(cancelar(caixa), ZEL_OK);
    ASSERT_EQ(avancar(caixa, 2), 2);
    caixa.config("IDE\\nNF", "70");
    EXPECT_EQ(caixa->aCFInicializar_ZEL(), ZEL_OK);
    outro.config("IDE\\Serie", "4");
    EXPECT_EQ(cancelar(caixa), ZEL_OK);
}

std::string imprimir(const Caixa &c, const std::string &nome) {
    std::vector<char> saida(ZEL_TAMANHO_CUPOM);
    EXPECT_EQ(c->GerarArquivoFormatadoNF_ZEL((c.diretorio() + nome).c_str(), "OFFLINE", "", 42, 1,
                                             "", saida.data()),
              ZEL_OK);
    return saida.data();
}

// A receipt with what another customer was told at the closing gives away his name and document.
TEST(EstadoDeOutro, cada_cupom_com_a_sua_mensagem) {
    for (const char *compartilhado : {"0", "1"}) {
        SCOPED_TRACE(compartilhado);
        const Ambiente ambiente("ZEL_COMPARTILHADO", compartilhado);
        const Caixa um;
        const Caixa dois(um);
        const auto emitir = [&](const Caixa &caixa, const char *mensagem) {
            ASSERT_EQ(avancar(caixa, 2), 2);
            ASSERT_EQ(fechar(caixa, mensagem), ZEL_OK);
        };
        ASSERT_NO_FATAL_FAILURE(emitir(um, "MARIA"));
        EXPECT_EQ(dois.info("2"), "2");
        ASSERT_NO_FATAL_FAILURE(emitir(um, "<b>JOS\xC9</b>  \nvolte"));
        const std::string cupom = imprimir(dois, "documentosEnvio.xml");
        EXPECT_TRUE(contem(cupom, "<b>JOS\xC9</b> \r\nvolte", 1));
        EXPECT_TRUE(contem(cupom, "MARIA", 0));
        // What a till closed itself it prints so, whatever the other one has begun or closed since.
        fs::copy(um.diretorio() + "documentosEnvio.xml", um.diretorio() + "nota.xml");
        ASSERT_EQ(avancar(dois, 2), 2);
        EXPECT_TRUE(contem(imprimir(um, "nota.xml"), "<b>JOS\xC9</b>", 1));
        ASSERT_EQ(fechar(dois, "ANA"), ZEL_OK);
        const std::string dele = imprimir(um, "nota.xml");
        EXPECT_TRUE(contem(dele, "<b>JOS\xC9</b>", 1));
        EXPECT_TRUE(contem(dele, "ANA", 0));
    }
}

} // namespace
