// SPDX-License-Identifier: MIT
// From a sale to paper, and to its cancellation: the documents that the library wrote are the ones
// that it prints, requests and cancels.
#include "apoio/Passos.h"
#include "apoio/Retorno.h"
#include "blackbox/Caixa.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

void fecharCupom(const Caixa &c) {
    ASSERT_EQ(c->aCFAbrir_ZEL("12345678909", "Jos\xE9 & Filhos", "", "", "", "", "", "", ""),
              ZEL_OK);
    ASSERT_EQ(c->aCFVender_ZEL("T1800", "2", "5.25", "", "", "1", "UN", "P\xE3o <doce>"), ZEL_OK);
    ASSERT_EQ(c->aCFTotalizar_ZEL("D$", "0,50"), ZEL_OK);
    ASSERT_EQ(c->aCFEfetuarPagamento_ZEL("dinheiro", "20"), ZEL_OK);
    ASSERT_EQ(c->tCFEncerrar_ZEL("Volte <b>sempre</b>\nsim"), ZEL_OK);
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
        EXPECT_NE(cupom.find("<qrcode>" + std::string(url) + "<lmodulo>"), std::string::npos);
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
    const std::string produto =
        "<PROD><cProd>7</cProd><cEAN>7891234567895</cEAN><xProd>A</xProd><NCM>22011000</NCM>"
        "<CFOP>5405</CFOP><uCom>UN</uCom><qCom>2</qCom><vUnCom>3.50</vUnCom><vProd>7.00</vProd>"
        "<cEANTrib>7891234567895</cEANTrib><uTrib>UN</uTrib><qTrib>2</qTrib><vUnTrib>3.50</vUnTrib>"
        "<indTot>1</indTot></PROD><imposto>";
    const std::string comST =
        produto + "<ICMS><ICMS10><orig>0</orig><CST>10</CST><modBC>3</modBC><vBC>7.00</vBC><pICMS>"
                  "18.00</pICMS><vICMS>1.26</vICMS><modBCST>4</modBCST><pMVAST>0.40</pMVAST>"
                  "<pRedBCST>0.00</pRedBCST><vBCST>9.80</vBCST><pICMSST>0.18</pICMSST>"
                  "<vICMSST>0.50</vICMSST></ICMS10></ICMS></imposto>";
    const std::string semICMS = produto + "<PIS><PISNT><CST>07</CST></PISNT></PIS></imposto>";
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
    ASSERT_EQ(abrirSemConsumidor(c.funcoes()), ZEL_OK);
    if (!cupom.xml.empty()) {
        ASSERT_EQ(c->aCFVenderXml_ZEL(cupom.xml.c_str()), ZEL_OK);
    }
    if (cupom.desconto != nullptr) {
        ASSERT_EQ(c->aCFVender_ZEL("S0500", "1", "100", "D$", cupom.desconto, "1", "UN", "B"),
                  ZEL_OK);
    }
    ASSERT_EQ(c->aCFTotalizar_ZEL(cupom.ajuste[0], cupom.ajuste[1]), ZEL_OK);
    ASSERT_EQ(c->aCFEfetuarPagamento_ZEL("dinheiro", ""), ZEL_OK);
    ASSERT_EQ(c->tCFEncerrar_ZEL(""), ZEL_OK);
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
            EXPECT_NE(cupom.find("&vNF=" + caso.total + "&vICMS=0.00&"), cupom.npos) << cupom;
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
    char texto[ZEL_TAMANHO_DIRETORIOS];
    texto[caixa.diretorio().copy(texto, ZEL_TAMANHO_DIRETORIOS)] = '\0';
    ASSERT_EQ(caixa->aCFContingenciaUltimaNota_ZEL(4, texto), ZEL_OK);
    const std::string nome = fs::path(texto).filename();
    const std::string cupom = imprimir(caixa, nome, "OFFLINE", 42);
    std::size_t vias = 0;
    for (std::size_t i = 0; (i = cupom.find("<sl>4</sl><gui></gui>", i)) != std::string::npos; ++i)
        ++vias;
    EXPECT_EQ(vias, 2U);
    EXPECT_LT(cupom.find("consumidor</c>"), cupom.find("Estabelecimento</c>"));
    EXPECT_EQ(cupom.find("Protocolo"), std::string::npos);
}

TEST(Impressao, recusas) {
    Caixa caixa;
    ASSERT_NO_FATAL_FAILURE(fecharCupom(caixa));
    caixa.escreverArquivo("retorno.xml", retorno(caixa));
    const std::string chave = caixa.config("NFCE\\ChaveDeAcesso");
    imprimir(caixa, "documentosEnvio.xml", "retorno.xml", 40, 1, -1);
    imprimir(caixa, "documentosEnvio.xml", "retorno.xml", 48, 2, -1);
    imprimir(caixa, "nada.xml", "retorno.xml", 48, 1, -1);
    imprimir(caixa, "documentosEnvio.xml", "nada.xml", 48, 1, -1);
    EXPECT_EQ(caixa->GerarArquivoFormatadoNF_ZEL("", "OFFLINE", "", 48, 1, "", nullptr), -99);
    char saida[8];
    EXPECT_EQ(caixa->GerarArquivoFormatadoNF_ZEL(nullptr, "OFFLINE", "", 48, 1, "", saida), -1);
    EXPECT_EQ(caixa->RetornarUltimoBufferFormatadoNF_ZEL(saida), -52);
    EXPECT_EQ(caixa->GeraPDF_ZEL("###"), -1);
    EXPECT_EQ(caixa->GeraPDF_DANFE_ZEL(nullptr), -1);
    // The PDF of a document that was not authorized, after its text.
    std::string negado = retorno(caixa);
    negado.replace(negado.find(">100<"), 5, ">204<");
    caixa.escreverArquivo("negado.xml", negado);
    caixa.config("CONFIGURACAO\\SalvarDanfePDF", "1");
    EXPECT_NE(imprimir(caixa, "documentosEnvio.xml", "negado.xml", 48, 1, -24), "");
    imprimir(caixa, "documentosEnvio.xml", "retorno.xml", 48);
    EXPECT_TRUE(caixa.lerArquivo("NFe" + chave + "_DANFE.pdf").starts_with("%PDF-"));
}

TEST(Cancelamento, do_cupom_em_andamento_e_do_ultimo_documento) {
    Caixa caixa;
    EXPECT_EQ(caixa->tCFCancelar_ZEL(nullptr, "", "", "", ""), -99);
    ASSERT_EQ(abrirSemConsumidor(caixa.funcoes()), ZEL_OK);
    EXPECT_EQ(caixa->tCFCancelar_ZEL("", "", "", "", ""), ZEL_OK);
    EXPECT_EQ(caixa->rCFVerificarStatus_ZEL(), 6);
    EXPECT_EQ(caixa->tCFCancelar_ZEL("", "", "", "", ""), -1) << "cancelled already";
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
    EXPECT_NE(cupom.find("Cancelamento:143260000000001\r\n"), std::string::npos);
    EXPECT_NE(imprimir(caixa, "documentosEnvio.xml", "OFFLINE", 42, 5).find("OFF-LINE"),
              std::string::npos);
}

TEST(Cancelamento, offline_em_cada_diretorio) {
    Caixa caixa;
    ASSERT_NO_FATAL_FAILURE(fecharCupom(caixa));
    fs::create_directory(caixa.diretorio() + "b");
    const std::string lista = caixa.diretorio() + "|" + caixa.diretorio() + "b/";
    char texto[ZEL_TAMANHO_DIRETORIOS];
    texto[lista.copy(texto, lista.size())] = '\0';
    ASSERT_EQ(caixa->tCFCancelarOffline_ZEL("", "", "", "", texto), ZEL_OK);
    const std::string nome = "11111111111111_001000000002.ctgCanc";
    EXPECT_EQ(texto, caixa.diretorio() + "b/" + nome);
    EXPECT_EQ(caixa.lerArquivo(nome), caixa.lerArquivo("b/" + nome));
    EXPECT_NE(imprimir(caixa, nome, "OFFLINE", 48, 5).find("S\xE9rie: 001"), std::string::npos);
    char vazio[ZEL_TAMANHO_DIRETORIOS] = "";
    EXPECT_EQ(caixa->tCFCancelarOffline_ZEL("", "", "", "", vazio), 0);
    EXPECT_EQ(caixa->tCFCancelarOffline_ZEL("1", "1", "123", "", texto), -1);
}

TEST(Requisicoes, consulta_como_primeira_chamada_do_processo) {
    Caixa caixa;
    EXPECT_EQ(caixa->GeraXMLConsulta_ZEL("NUM", "0", "0", "1", nullptr), ZEL_OK);
    EXPECT_EQ(elemento(caixa.lerArquivo("documentosEnvio.xml"), "dhUF"), "43");
    EXPECT_EQ(elemento(caixa.lerArquivo("parametrosEnvio.xml"), "Situacao"), "S");
    EXPECT_EQ(caixa->tCFInutilizar_ZEL("7", nullptr, "1", ""), -99);
}

} // namespace
