// SPDX-License-Identifier: MIT
// From a sale to paper, and to its cancellation: the documents that the library wrote are the ones
// that it prints, requests and cancels.
#include "apoio/Chamadas.h"
#include "apoio/Passos.h"
#include "apoio/Retorno.h"
#include "apoio/Trecho.h"
#include "blackbox/Caixa.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

void fecharCupom(const Caixa &c) {
    ASSERT_EQ(c->aCFAbrir_ZEL("12345678909", "Jos\xE9 & Filhos", "", "", "", "", "", "", ""),
              ZEL_OK);
    ASSERT_EQ(c->aCFVender_ZEL("T1800", "2", "5.25", "", "", "1", "UN", "P\xE3o <doce>"), ZEL_OK);
    ASSERT_EQ(totalizar(c, "D$", "0,50"), ZEL_OK);
    ASSERT_EQ(pagar(c, "dinheiro", "20"), ZEL_OK);
    ASSERT_EQ(encerrar(c, "Volte <b>sempre</b>\nsim"), ZEL_OK);
}

std::string retorno(const Caixa &c) {
    return retornoAutorizado(c.config("NFCE\\ChaveDeAcesso"));
}

std::string imprimir(const Caixa &c, const std::string &xml, const std::string &ret, int colunas,
                     int tipo = 1, int esperado = ZEL_OK) {
    std::vector<char> saida(ZEL_TAMANHO_CUPOM, '?');
    const std::string caminho = c.diretorio() + xml;
    const std::string volta = ret == "OFFLINE" ? ret : c.diretorio() + ret;
    EXPECT_EQ(c->GerarArquivoFormatadoNF_ZEL(caminho.c_str(), volta.c_str(), "", colunas, tipo, "",
                                             saida.data()),
              esperado);
    return saida.data();
}

TEST(Impressao, do_documento_ao_papel) {
    Caixa caixa;
    ASSERT_NO_FATAL_FAILURE(fecharCupom(caixa));
    caixa.escreverArquivo("retorno.xml", retorno(caixa));
    ASSERT_EQ(caixa->aCFValorLeiImposto_ZEL("1,23"), ZEL_OK);
    for (const int colunas : {42, 48}) {
        const std::string cupom = imprimir(caixa, "documentosEnvio.xml", "retorno.xml", colunas);
        EXPECT_EQ(cupom.find(" 1.23</c>") != std::string::npos, colunas == 42) << "printed once";
        std::vector<char> ultimo(ZEL_TAMANHO_CUPOM);
        EXPECT_EQ(caixa->RetornarUltimoBufferFormatadoNF_ZEL(ultimo.data()), ZEL_OK);
        EXPECT_EQ(cupom, ultimo.data());
        char url[ZEL_TAMANHO_VALOR];
        EXPECT_EQ(caixa->rURLQrcode_ZEL(url), ZEL_OK);
        EXPECT_EQ(vezesEm(cupom, "\n"), vezesEm(cupom, "\r\n") + 1) << "under the consumer alone";
        EXPECT_TRUE(contem(cupom, "<qrcode>" + std::string(url) + "<lmodulo>"));
    }
    EXPECT_EQ(caixa.info("4"), "143260000000001");
    EXPECT_EQ(caixa.info("6"), "2026-11-24T10:20:30-03:00");
    EXPECT_EQ(caixa.info("7"), "abc=");
    EXPECT_EQ(caixa.config("CONFIGURACAO\\TipoAmbiente"), "3") << "the file keeps its own";
}

struct CupomDeServico {
    std::string xml;                 // sold first, as tag text
    const char *desconto;            // on the service of 100.00, which is sold last; null: not sold
    const char *ajuste[2];           // of the receipt
    std::string forma;               // of the totals
    std::string desc, acresc, total; // printed; empty: no such line
};

std::vector<CupomDeServico> cuponsDeServico() {
    const std::string comST = kItemComST;
    const std::string semICMS =
        comST.substr(0, comST.find("<ICMS>")) + "<PIS><PISNT><CST>07</CST></PISNT></PIS></imposto>";
    return {
        {"", "0", {"", ""}, "ISSQNTot", "", "", "100.00"},
        {"", "2,50", {"D$", "5"}, "ISSQNTot", "7.50", "", "92.50"},
        {comST, "2,50", {"", ""}, "ISSQNTot", "2.50", "", "104.00"},
        {semICMS, "0", {"A$", "10,70"}, "ISSQNTot", "", "10.70", "117.70"},
        {semICMS, nullptr, {"", ""}, "retTrib", "", "", "7.00"},
    };
}

void fecharCupom(const Caixa &c, const CupomDeServico &cupom) {
    c.config("IMPOSTO\\ISSQN\\cMunFG", "12");
    c.config("IMPOSTO\\ISSQN\\cListServ", "101");
    c.config("IMPOSTO\\ISSQN\\cSitTrib", "N");
    ASSERT_EQ(abrir(c), ZEL_OK);
    if (!cupom.xml.empty()) {
        ASSERT_EQ(c->aCFVenderXml_ZEL(cupom.xml.c_str()), ZEL_OK);
    }
    if (cupom.desconto != nullptr) {
        ASSERT_EQ(c->aCFVender_ZEL("S0500", "1", "100", "D$", cupom.desconto, "1", "UN", "B"),
                  ZEL_OK);
    }
    ASSERT_EQ(totalizar(c, cupom.ajuste[0], cupom.ajuste[1]), ZEL_OK);
    ASSERT_EQ(pagar(c), ZEL_OK);
    ASSERT_EQ(encerrar(c), ZEL_OK);
}

// The amount after the first such label of a line; empty when there is none.
std::string valorDe(const std::string &cupom, const std::string &rotulo) {
    const std::size_t inicio = cupom.find(rotulo + "  ");
    if (inicio == cupom.npos) return {};
    const std::size_t valor = cupom.find_first_not_of(' ', inicio + rotulo.size());
    return cupom.substr(valor, cupom.find_first_not_of("0123456789.", valor) - valor);
}

// The totals of a receipt that ends in a service are of a form without a receipt total: it was
// sold, paid and closed, and could not be printed. What it prints is what was paid.
TEST(Impressao, cupom_que_termina_em_servico) {
    for (const CupomDeServico &caso : cuponsDeServico()) {
        Caixa caixa;
        ASSERT_NO_FATAL_FAILURE(fecharCupom(caixa, caso));
        const std::string documento = caixa.lerArquivo("documentosEnvio.xml");
        ASSERT_NE(elemento(documento, caso.forma), "");
        EXPECT_EQ(elemento(documento, "vPag"), caso.total);
        caixa.escreverArquivo("retorno.xml", retorno(caixa));
        for (const int colunas : {42, 48}) {
            caixa.escreverArquivo("nota.xml", documento);
            const std::string cupom = imprimir(caixa, "nota.xml", "retorno.xml", colunas);
            EXPECT_TRUE(contem(cupom, "&vNF=" + caso.total + "&vICMS=0.00&"));
            EXPECT_EQ(valorDe(cupom, "DESCONTO"), caso.desc) << cupom;
            EXPECT_EQ(valorDe(cupom, "ACRESCIMO"), caso.acresc) << cupom;
            EXPECT_EQ(valorDe(cupom, "VALOR TOTAL R$"), caso.total) << cupom;
        }
    }
}

TEST(Impressao, contingencia_imprime_duas_vias_do_arquivo_embaralhado) {
    Caixa caixa;
    caixa.config("IDE\\tpEmis", "9");
    ASSERT_NO_FATAL_FAILURE(fecharCupom(caixa));
    char texto[ZEL_TAMANHO_DIRETORIOS] = {};
    caixa.diretorio().copy(texto, sizeof texto - 1);
    ASSERT_EQ(caixa->aCFContingenciaUltimaNota_ZEL(4, texto), ZEL_OK);
    const std::string nome = fs::path(texto).filename();
    const std::string cupom = imprimir(caixa, nome, "OFFLINE", 42);
    EXPECT_EQ(vezesEm(cupom, "<sl>4</sl><gui></gui>"), 2);
    EXPECT_LT(cupom.find("consumidor</c>"), cupom.find("Estabelecimento</c>"));
    EXPECT_FALSE(contem(cupom, "Protocolo"));
}

TEST(Cancelamento, do_cupom_em_andamento_e_do_ultimo_documento) {
    Caixa caixa;
    ASSERT_EQ(abrir(caixa), ZEL_OK);
    EXPECT_EQ(caixa->tCFCancelar_ZEL("", "", "", "", ""), ZEL_OK);
    EXPECT_EQ(caixa->rCFVerificarStatus_ZEL(), 6);
    EXPECT_FALSE(caixa.existe("documentosEnvio.xml"));

    ASSERT_NO_FATAL_FAILURE(fecharCupom(caixa));
    const std::string antiga = caixa.lerArquivo("documentosEnvio.xml");
    ASSERT_NO_FATAL_FAILURE(fecharCupom(caixa));
    caixa.escreverArquivo("retorno.xml", retorno(caixa));
    imprimir(caixa, "documentosEnvio.xml", "retorno.xml", 48); // learns the protocol
    caixa.reiniciar();
    EXPECT_EQ(caixa->tCFCancelar_ZEL("", "", "", "", ""), ZEL_CANCELAMENTO_GRAVADO);
    const std::string evento = caixa.lerArquivo("documentosEnvio.xml");
    EXPECT_EQ(elemento(evento, "ChaAcesso"), caixa.config("NFCE\\ChaveDeAcesso"));
    EXPECT_EQ(elemento(evento, "EvenProt"), "143260000000001");
    EXPECT_EQ(elemento(evento, "NtfNumero"), "3");
    EXPECT_EQ(elemento(evento, "EvexJust"), "Cancelamento de NFCe");
    EXPECT_EQ(caixa->rCFVerificarStatus_ZEL(), 5);

    // A reprint of an older document stores its key: nothing may be voided without naming it.
    caixa.escreverArquivo("antiga.xml", antiga);
    imprimir(caixa, "antiga.xml", "OFFLINE", 48);
    EXPECT_EQ(caixa->tCFCancelar_ZEL("", "", "", "", ""), -1);

    const std::string cupom = imprimir(caixa, "documentosEnvio.xml", "retorno.xml", 48, 5);
    EXPECT_TRUE(contem(cupom, "Cancelamento:143260000000001\r\n"));
    EXPECT_TRUE(contem(imprimir(caixa, "documentosEnvio.xml", "OFFLINE", 42, 5), "OFF-LINE"));
}

TEST(Cancelamento, offline_em_cada_diretorio) {
    Caixa caixa;
    ASSERT_NO_FATAL_FAILURE(fecharCupom(caixa));
    fs::create_directory(caixa.diretorio() + "b");
    char texto[ZEL_TAMANHO_DIRETORIOS] = {};
    (caixa.diretorio() + "|" + caixa.diretorio() + "b/").copy(texto, sizeof texto - 1);
    ASSERT_EQ(caixa->tCFCancelarOffline_ZEL("", "", "", "", texto), ZEL_OK);
    const std::string nome = "11111111111111_001000000002.ctgCanc";
    EXPECT_EQ(texto, caixa.diretorio() + "b/" + nome);
    EXPECT_EQ(caixa.lerArquivo(nome), caixa.lerArquivo("b/" + nome));
    EXPECT_TRUE(contem(imprimir(caixa, nome, "OFFLINE", 48, 5), "S\xE9rie: 001"));
}

TEST(Requisicoes, consulta_como_primeira_chamada_do_processo) {
    Caixa caixa;
    EXPECT_EQ(caixa->GeraXMLConsulta_ZEL("NUM", "0", "0", "1", nullptr), ZEL_OK);
    EXPECT_EQ(elemento(caixa.lerArquivo("documentosEnvio.xml"), "dhUF"), "43");
    EXPECT_EQ(elemento(caixa.lerArquivo("parametrosEnvio.xml"), "Situacao"), "S");
}

} // namespace
