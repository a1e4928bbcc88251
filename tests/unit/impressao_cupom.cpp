// Whole receipts against golden files, and the entry of printing: what is stored when, and what a
// refusal leaves. ZEL_REGENERAR=1 rewrites the golden receipts; look at the difference.
#include "impressao/Impressao.h"
#include "impressao_apoio.h"
#include "util/Cripto.h"

#include <tuple>

using namespace impressao;

namespace {

class Cupons : public Teste {
protected:
    int imprimir(std::string_view xml, std::string_view retorno, int colunas,
                 std::string_view urlQrcode = "") {
        return fnGerarArquivoFormatadoNF(gravar("nota.xml", xml), gravar("retorno.xml", retorno),
                                         urlQrcode, colunas, 1, "", saida);
    }
    std::string guardado(std::string_view caminho) const {
        std::string valor;
        EXPECT_EQ(fnRegRetornarValor_ZEL(caminho, valor), ZEL_OK);
        return valor;
    }
    static std::string ultima() {
        std::string texto = "none";
        fnLerArquivoCriptUltimaDanfe(texto);
        return texto;
    }
    void compararComOuro(const std::string &nome) const {
        const char *regenerar = std::getenv("ZEL_REGENERAR");
        if (regenerar != nullptr && std::string_view(regenerar) == "1")
            std::ofstream(ouro(nome), std::ios::binary) << saida;
        EXPECT_EQ(dado(nome), saida) << nome;
        EXPECT_EQ(ultima(), saida);
    }

    const std::string contingencia = trocar(simples, "<tpEmis>1", "<tpEmis>9");
    std::string saida = "earlier";
};

} // namespace

// A literal, a width or an order that changes unnoticed.
TEST_F(Cupons, golden_receipts) {
    configurar({{R"(CONFIGURACAO\TokenSefaz)", "segredo"},
                {R"(CONFIGURACAO\ArredondarTruncar)", "T"},
                {R"(URLS\SP\Producao)", "http://qr.sp"},
                {R"(NFCE\MsgLeiDoImposto)", "Tributos: | (Lei 12.741)"}});
    const struct {
        std::string nome, xml, retorno;
        std::string_view completa, logotipo, promocional, troco;
    } casos[] = {
        {"normal", cheia, retornoEnvio, "1", "", "1", "3.00"},
        {"resumo_homologacao", trocar(simples, "<tpAmb>1", "<tpAmb>2"), retornoSefaz, "0", "L", "0",
         "0"},
        {"contingencia",
         trocar(contingencia, "</emit>",
                "</emit><dest><idEstrangeiro>AB-12</idEstrangeiro></dest>"),
         "", "0", "", "0", "0.00"},
        {"link", simples, retornoSefaz + "<LinkNFCe>http://l?a=1&amp;b=2</LinkNFCe>", "1", "L", "0",
         ""},
        {"offline", simples, "", "1", "", "0", ""}, // blanks where there is no authorization
    };
    for (const auto &caso : casos) {
        configurar({{R"(CONFIGURACAO\ImpressaoCompleta)", caso.completa},
                    {R"(NFCE\Logotipo)", caso.logotipo},
                    {R"(NFCE\MSGPROMOCIONAL\Imprimir)", caso.promocional},
                    {R"(CONFIGURACAO\TrocoUltimaNFCe)", caso.troco}});
        G_stDadosImpressao.IndicadorTroco = caso.nome == "normal";
        G_stXML_Persistencia.fnLimpar();
        if (caso.nome == "normal") encerrarCom("[ce][b]Volte[/b] sempre[/ce]");
        for (const int colunas : {42, 48}) {
            ASSERT_EQ(imprimir(caso.xml, caso.retorno, colunas), ZEL_OK) << caso.nome;
            compararComOuro("cupom_" + caso.nome + "_" + std::to_string(colunas) + ".txt");
        }
    }
}

TEST_F(Cupons, golden_cancellations) {
    const std::string pedido =
        gravar("p.xml", "<ChaAcesso>" + std::string(kChave) + "</ChaAcesso>");
    const std::string retorno = gravar("r.xml", "<nProt>135140000000077</nProt>");
    const struct {
        std::string nome, retorno;
        std::string_view cnpj, logotipo;
        int colunas; // the text is the same for all
    } casos[] = {{"online", retorno, "11222333000181", "", 42},
                 {"online", retorno, "11222333000181", "", 7},
                 {"online_logotipo", retorno, "12345678909", "L", 48},
                 {"offline", "OFFLINE", "11222333000181", "", 48},
                 {"offline_logotipo", "OFFLINE", "12345678909", "L", 42}};
    for (const auto &caso : casos) {
        configurar({{R"(EMIT\CNPJ)", caso.cnpj}, {R"(NFCE\Logotipo)", caso.logotipo}});
        ASSERT_EQ(fnGerarArquivoFormatadoNF(pedido, caso.retorno, "", caso.colunas, 5, "", saida),
                  ZEL_OK);
        compararComOuro("cancelamento_" + caso.nome + ".txt");
    }
}

TEST_F(Cupons, stored_with_the_receipt) {
    ASSERT_EQ(imprimir(cheia, retornoEnvio, 48), ZEL_OK);
    EXPECT_EQ(guardado(R"(NFCE\ChaveDeAcesso)"), kChave);
    EXPECT_EQ(guardado(R"(NFCE\ProtocoloAutorizacao)"), "135140000000001");
    EXPECT_EQ(autorizacaoUltimoDocumento().digest, "FBFUQdZijVXNc2cxuJ9xHnx0Chc=");
    EXPECT_EQ(autorizacaoUltimoDocumento().dataHora, "2014-02-01T00:00:03-02:00");
    const std::string url = guardado(R"(NFCE\UrlQrcode)");
    EXPECT_TRUE(contem(url, "&cHashQRCode="));
    EXPECT_TRUE(contem(saida, "<qrcode>" + url + "<lmodulo>3</lmodulo></qrcode>"));

    const std::string longo(600, 'q');
    const std::pair<std::string, std::string> dados[] = {
        {"http://x?2<lmodulo>4</lmodulo>", "http://x?2"},
        {"<a></a>", ""}, // cannot be kept
        {longo, longo.substr(0, 499)},
    };
    for (const auto &[conteudo, esperado] : dados) {
        ASSERT_EQ(imprimir(cheia, retornoEnvio, 42, conteudo), ZEL_OK) << conteudo;
        EXPECT_TRUE(contem(saida, "<qrcode>" + conteudo + "</qrcode>"));
        EXPECT_EQ(guardado(R"(NFCE\UrlQrcode)"), esperado);
    }
    ASSERT_EQ(imprimir(simples, "", 42), ZEL_OK);
    EXPECT_EQ(guardado(R"(NFCE\ProtocoloAutorizacao)"), ""); // not the sale's before
}

// The application's total of taxes prints in both copies, and never on the next receipt.
TEST_F(Cupons, taxes_given_by_the_application) {
    const std::tuple<std::string, std::string_view, int> casos[] = {
        {contingencia, "7,5", 2}, {simples, "", 0}, {cheia, "7.5", 0}};
    for (const auto &[xml, texto, vezes] : casos) {
        G_szTotalImposto = texto;
        ASSERT_EQ(imprimir(xml, retornoEnvio, 48), ZEL_OK);
        EXPECT_TRUE(contem(saida, "12.741/2012) 7.50</c>", vezes));
        EXPECT_TRUE(G_szTotalImposto.vazio());
    }
}

TEST_F(Cupons, refusals_store_nothing) {
    const std::string nota = gravar("nota.xml", simples);
    const std::string retorno = gravar("retorno.xml", retornoEnvio);
    const std::string nenhum = pasta / "nenhum.xml";
    const std::string antes = pasta.ler("ZEL_Framework.xml");
    const struct {
        std::string_view xml, retorno;
        int colunas, tipo;
    } casos[] = {
        {nota, retorno, 40, 1}, {nota, retorno, 42, 2}, {{}, retorno, 42, 1},
        {nota, {}, 42, 1},      {nota, nenhum, 42, 1},  {nota, retorno, 42, 5},
    };
    for (const auto &[xml, doRetorno, colunas, tipo] : casos) {
        saida = "earlier";
        EXPECT_EQ(fnGerarArquivoFormatadoNF(xml, doRetorno, "", colunas, tipo, "", saida),
                  ZEL_RECUSADO);
        EXPECT_EQ(saida, "");
    }
    EXPECT_EQ(pasta.ler("ZEL_Framework.xml"), antes);
    EXPECT_EQ(ultima(), "none");
}

TEST_F(Cupons, without_text_the_last_receipt_stays) {
    ASSERT_EQ(imprimir(simples, retornoEnvio, 48), ZEL_OK);
    const std::string antes = saida;
    configurar({{R"(CONFIGURACAO\ImpressaoCompleta)", "2"}});
    EXPECT_EQ(imprimir(cheia, retornoEnvio, 48), ZEL_OK);
    EXPECT_EQ(saida, "");
    EXPECT_EQ(ultima(), antes);
    // One that cannot be kept is no success.
    configurar({{R"(CONFIGURACAO\ImpressaoCompleta)", "1"}});
    std::filesystem::remove(pasta / "ultimadanfe.bin");
    std::filesystem::create_directory(pasta / "ultimadanfe.bin");
    EXPECT_EQ(imprimir(simples, retornoEnvio, 48), ZEL_ARQUIVO_INDISPONIVEL);
}

// A PDF of a document that was refused, or written where the return's key leads.
TEST_F(Cupons, pdf_depends_on_the_return) {
    configurar({{R"(CONFIGURACAO\SalvarDanfePDF)", "1"}});
    const std::string outra = "9" + std::string(kChave.substr(1));
    const auto pdf = [this](std::string_view chave) {
        return pasta / ("NFe" + std::string(chave) + "_DANFE.pdf");
    };
    const struct {
        std::string_view de, para; // in the return
        int codigo;
        std::string_view chave; // of the file
    } casos[] = {
        {">100<", ">150<", ZEL_OK, kChave},
        {">100<", ">204<", ZEL_FALHA_IMPRESSAO, kChave},
        {"SitCodigo", "Outro", ZEL_FALHA_IMPRESSAO, kChave},
        {"DocChaAcesso>", "docCHAACESSO>", ZEL_OK, kChave},
        {"<DocChaAcesso>", "<Outra>", ZEL_OK, kChave},
        {kChave, outra, ZEL_OK, outra},
        {kChave, "../fora", ZEL_RECUSADO, "../fora"},
    };
    for (const auto &[de, para, codigo, chave] : casos) {
        EXPECT_EQ(imprimir(simples, trocar(retornoEnvio, de, para), 48), codigo) << para;
        EXPECT_TRUE(contem(saida, "<gui></gui>"));
        EXPECT_EQ(std::filesystem::remove(pdf(chave)), codigo == ZEL_OK) << para;
    }
    EXPECT_EQ(imprimir(simples, "", 48), ZEL_RECUSADO); // "OFFLINE" names no file
    // The listing comes first, and its failure is answered at once.
    configurar({{R"(CONFIGURACAO\SalvarXMLPDF)", "1"}});
    EXPECT_EQ(imprimir(simples, retornoEnvio, 48), ZEL_RECUSADO);
    EXPECT_FALSE(std::filesystem::exists(pdf(kChave)));
}

TEST_F(Cupons, print_parameters) {
    CupomFiscal cf;
    cf.ValorTotal = 10.5;
    const struct {
        int modo;
        std::string parametros;
        std::string_view troco;
        bool indicador;
    } casos[] = {
        {1, "ValorPgto=20,00;TXTLIVRE=oi;", "9.50", true},
        {1, "", "9.50", true},
        {1, "VALORPGTO=30", "9.50", true},
        {1, "VALORPGTO=;", "9.50", true},
        {1, std::string(90, ' ') + "VALORPGTO=30;", "9.50", true}, // cut in front of the ";"
        {0, "txtlivre=x;valorpgto=30.00;", "0.00", false},
        {1, "valorpgto=10.5;", "0.00", true},
    };
    for (const auto &[modo, parametros, troco, indicador] : casos) {
        EXPECT_EQ(fnAnalisarParametrosImpressao(cf, modo, parametros), ZEL_OK);
        EXPECT_EQ(guardado(R"(CONFIGURACAO\TrocoUltimaNFCe)"), troco) << parametros;
        EXPECT_EQ(G_stDadosImpressao.IndicadorTroco, indicador) << parametros;
    }
}
