// Whole receipts against golden files, and the entry of printing: what is stored when, and what a
// refusal leaves. ZEL_REGENERAR=1 rewrites the golden files; look at the difference.
#include "impressao/Impressao.h"
#include "impressao_apoio.h"
#include "util/Cripto.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

using namespace impressao;

namespace {

class Cupons : public Teste {
protected:
    int imprimir(const Nota &nota, std::string_view retorno, int colunas,
                 std::string_view urlQrcode = "") {
        pasta.gravar("nota.xml", nota.xml());
        pasta.gravar("retorno.xml", retorno);
        const std::string caminho = retorno.empty() ? std::string(kOffline) : pasta / "retorno.xml";
        return fnGerarArquivoFormatadoNF(pasta / "nota.xml", caminho, urlQrcode, colunas, 1, "",
                                         saida);
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

    std::string saida = "earlier";
};

void compararComOuro(const std::string &nome, std::string_view texto) {
    const auto caminho = std::filesystem::path(__FILE__).parent_path() / "golden" / nome;
    const char *regenerar = std::getenv("ZEL_REGENERAR");
    if (regenerar != nullptr && std::string_view(regenerar) == "1")
        std::ofstream(caminho, std::ios::binary) << texto;
    std::ifstream arquivo(caminho, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(arquivo), {}), texto) << nome;
}

Nota cheia() {
    Nota nota;
    nota.dest = kConsumidor;
    nota.itens = item(1, "789", "Caneta azul", "2.0000", "UN", "5.25") +
                 item(2, "7891000100103", "Caderno universitário capa dura 200 folhas"_l1, "1.5000",
                      "CX", "1234.5") +
                 item(3, "42", std::string(120, 'x'), "0.3330", "KG", "10.00");
    nota.desconto = "1.00";
    nota.outro = "2.50";
    nota.total = "1867.08";
    nota.tributos = "<vTotTrib>123.45</vTotTrib>";
    nota.pagamentos.clear();
    for (const auto forma : {"01", "02", "03", "04", "05", "10", "11", "12", "13", "99"})
        nota.pagamentos += pagamento(forma, "186.70");
    nota.infCpl = "Volte sempre";
    return nota;
}

} // namespace

// A literal, a width or an order that changes unnoticed.
TEST_F(Cupons, golden_receipts) {
    configurar(
        {{R"(CONFIGURACAO\TokenSefaz)", "segredo"}, {R"(URLS\SP\Producao)", "http://qr.sp"}});
    Nota consumidorSemNome;
    consumidorSemNome.tpEmis = "9";
    consumidorSemNome.dest = "<dest><idEstrangeiro>AB-12</idEstrangeiro></dest>";
    Nota homologacao;
    homologacao.tpAmb = "2";
    const struct {
        std::string nome;
        Nota nota;
        std::string retorno;
        std::string_view completa, logotipo, promocional, troco;
    } casos[] = {
        {"normal", cheia(), kRetornoEnvio, "1", "", "1", "3.00"},
        {"resumo_homologacao", homologacao, kRetornoSefaz, "0", "L", "0", "0"},
        {"contingencia", consumidorSemNome, "", "0", "", "0", "0.00"},
        {"link", Nota{}, kRetornoSefaz + "<LinkNFCe>http://l?a=1&amp;b=2</LinkNFCe>", "1", "L", "0",
         ""},
    };
    for (const auto &caso : casos) {
        configurar({{R"(CONFIGURACAO\ImpressaoCompleta)", caso.completa},
                    {R"(NFCE\Logotipo)", caso.logotipo},
                    {R"(NFCE\MSGPROMOCIONAL\Imprimir)", caso.promocional},
                    {R"(NFCE\MsgLeiDoImposto)", "Tributos: | (Lei 12.741)"},
                    {R"(CONFIGURACAO\TrocoUltimaNFCe)", caso.troco}});
        G_stDadosImpressao.IndicadorTroco = caso.nome == "normal";
        G_stXML_Persistencia.fnLimpar();
        if (caso.nome == "normal") {
            ST_tagZEL infAdic("infAdic");
            infAdic.addSubTag("infCpl", "[ce][b]Volte[/b] sempre[/ce]");
            G_stXML_Persistencia.encerramento.emplace("ENCERRAMENTO").addSubTag(infAdic);
        }
        for (const int colunas : {42, 48}) {
            ASSERT_EQ(imprimir(caso.nota, caso.retorno, colunas), ZEL_OK) << caso.nome;
            compararComOuro("cupom_" + caso.nome + "_" + std::to_string(colunas) + ".txt", saida);
            EXPECT_EQ(ultima(), saida);
        }
    }
}

TEST_F(Cupons, golden_cancellations) {
    pasta.gravar("pedido.xml", "<ChaAcesso>" + std::string(kChave) + "</ChaAcesso>");
    pasta.gravar("retorno.xml", "<nProt>135140000000077</nProt>");
    const struct {
        std::string nome;
        std::string_view cnpj, logotipo;
    } casos[] = {{"", "11222333000181", ""}, {"_logotipo", "12345678909", "L"}};
    for (const auto &caso : casos)
        for (const bool online : {false, true}) {
            configurar({{R"(EMIT\CNPJ)", caso.cnpj}, {R"(NFCE\Logotipo)", caso.logotipo}});
            const std::string retorno = online ? pasta / "retorno.xml" : std::string(kOffline);
            ASSERT_EQ(
                fnGerarArquivoFormatadoNF(pasta / "pedido.xml", retorno, "", 42, 5, "", saida),
                ZEL_OK);
            compararComOuro("cancelamento_" + std::string(online ? "online" : "offline") +
                                caso.nome + ".txt",
                            saida);
            EXPECT_EQ(ultima(), saida);
            std::string outraLargura;
            ASSERT_EQ(fnGerarArquivoFormatadoNF(pasta / "pedido.xml", retorno, "", 7, 5, "",
                                                outraLargura),
                      ZEL_OK);
            EXPECT_EQ(outraLargura, saida);
        }
}

TEST_F(Cupons, stored_with_the_receipt) {
    ASSERT_EQ(imprimir(cheia(), kRetornoEnvio, 48), ZEL_OK);
    EXPECT_EQ(guardado(R"(NFCE\ChaveDeAcesso)"), kChave);
    EXPECT_EQ(guardado(R"(NFCE\ProtocoloAutorizacao)"), "135140000000001");
    EXPECT_EQ(autorizacaoUltimoDocumento().digest, kDigest);
    EXPECT_EQ(autorizacaoUltimoDocumento().dataHora, "2014-02-01T00:00:03-02:00");
    const std::string url = guardado(R"(NFCE\UrlQrcode)");
    EXPECT_TRUE(contem(url, "&cHashQRCode="));
    EXPECT_TRUE(contem(saida, "<qrcode>" + url + "<lmodulo>3</lmodulo></qrcode>"));

    const std::string longo(600, 'q');
    const std::pair<std::string, std::string> dados[] = {
        {"http://x?1", "http://x?1"},
        {"http://x?2<lmodulo>4</lmodulo>", "http://x?2"},
        {"<a></a>", ""}, // cannot be kept
        {longo, longo.substr(0, 499)},
    };
    for (const auto &[dado, esperado] : dados) {
        ASSERT_EQ(imprimir(cheia(), kRetornoEnvio, 42, dado), ZEL_OK) << dado;
        EXPECT_TRUE(contem(saida, "<qrcode>" + dado + "</qrcode>"));
        EXPECT_EQ(guardado(R"(NFCE\UrlQrcode)"), esperado);
    }
}

// Blanks in the place of a date that there is none of; an earlier sale's protocol kept.
TEST_F(Cupons, offline_normal_receipt) {
    ASSERT_EQ(imprimir(Nota{}, kRetornoEnvio, 42), ZEL_OK);
    ASSERT_EQ(imprimir(Nota{}, "", 42), ZEL_OK);
    EXPECT_TRUE(contem(saida, "Autorização: "_l1.data() + std::string(16, ' ') + "</c>\r\n<c>" +
                                  std::string(37, ' ') + "</c>"));
    EXPECT_EQ(guardado(R"(NFCE\ProtocoloAutorizacao)"), "");
}

// The application's total of taxes prints once, in both copies, and never on the next receipt.
TEST_F(Cupons, taxes_given_by_the_application) {
    Nota contingencia;
    contingencia.tpEmis = "9";
    const struct {
        Nota nota;
        std::string_view texto;
        int vezes;
    } casos[] = {{contingencia, "7,5", 2}, {Nota{}, "", 0}, {cheia(), "7.5", 0}};
    for (const auto &caso : casos) {
        G_szTotalImposto = caso.texto;
        ASSERT_EQ(imprimir(caso.nota, kRetornoEnvio, 48), ZEL_OK);
        EXPECT_TRUE(contem(saida, "12.741/2012) 7.50</c>", caso.vezes));
        EXPECT_TRUE(G_szTotalImposto.vazio());
    }
}

TEST_F(Cupons, refusals_store_nothing) {
    pasta.gravar("nota.xml", Nota{}.xml());
    pasta.gravar("retorno.xml", kRetornoEnvio);
    const std::string nota = pasta / "nota.xml";
    const std::string retorno = pasta / "retorno.xml";
    const std::string nenhum = pasta / "nenhum.xml";
    const std::string antes = pasta.ler("ZEL_Framework.xml");
    const struct {
        std::string_view xml, retorno;
        int colunas, tipo;
    } casos[] = {
        {nota, retorno, 40, 1}, {nota, retorno, 42, 2}, {{}, retorno, 42, 1},
        {nota, {}, 42, 1},      {nota, nenhum, 42, 1},  {nota, retorno, 42, 5},
    };
    for (const auto &caso : casos) {
        saida = "earlier";
        EXPECT_EQ(fnGerarArquivoFormatadoNF(caso.xml, caso.retorno, "", caso.colunas, caso.tipo, "",
                                            saida),
                  ZEL_RECUSADO);
        EXPECT_EQ(saida, "");
    }
    EXPECT_EQ(pasta.ler("ZEL_Framework.xml"), antes);
    EXPECT_EQ(ultima(), "none");
}

TEST_F(Cupons, without_text_the_last_receipt_stays) {
    ASSERT_EQ(imprimir(Nota{}, kRetornoEnvio, 48), ZEL_OK);
    const std::string antes = saida;
    configurar({{R"(CONFIGURACAO\ImpressaoCompleta)", "2"}});
    EXPECT_EQ(imprimir(cheia(), kRetornoEnvio, 48), ZEL_OK);
    EXPECT_EQ(saida, "");
    EXPECT_EQ(ultima(), antes);
    // One that cannot be kept is no success.
    configurar({{R"(CONFIGURACAO\ImpressaoCompleta)", "1"}});
    std::filesystem::remove(pasta / "ultimadanfe.bin");
    std::filesystem::create_directory(pasta / "ultimadanfe.bin");
    EXPECT_EQ(imprimir(Nota{}, kRetornoEnvio, 48), ZEL_ARQUIVO_INDISPONIVEL);
}

// A PDF of a document that was refused, or written elsewhere than the return's key may say.
TEST_F(Cupons, pdf_depends_on_the_return) {
    configurar({{R"(CONFIGURACAO\SalvarDanfePDF)", "1"}});
    const std::string outra = "9" + std::string(kChave.substr(1));
    const auto trocar = [](std::string_view de, std::string_view para) {
        std::string retorno = kRetornoEnvio;
        return retorno.replace(retorno.find(de), de.size(), para);
    };
    const struct {
        std::string retorno;
        int codigo;
        std::string_view chave; // of the file
    } casos[] = {
        {kRetornoEnvio, ZEL_OK, kChave},
        {trocar(">100<", ">150<"), ZEL_OK, kChave},
        {trocar(">100<", ">204<"), ZEL_FALHA_IMPRESSAO, ""},
        {trocar("SitCodigo", "Outro"), ZEL_FALHA_IMPRESSAO, ""},
        {trocar("DocChaAcesso>", "docCHAACESSO>"), ZEL_OK, kChave},
        {trocar("<DocChaAcesso>", "<Outra>"), ZEL_OK, kChave},
        {trocar(kChave, outra), ZEL_OK, outra},
        {trocar(kChave, "../fora"), ZEL_RECUSADO, ""},
        {"", ZEL_RECUSADO, ""}, // "OFFLINE" names no file
    };
    for (const auto &caso : casos) {
        EXPECT_EQ(imprimir(Nota{}, caso.retorno, 48), caso.codigo) << caso.retorno;
        EXPECT_TRUE(contem(saida, "<gui></gui>"));
        EXPECT_EQ(std::filesystem::remove(pasta / ("NFe" + std::string(caso.chave) + "_DANFE.pdf")),
                  caso.codigo == ZEL_OK)
            << caso.retorno;
    }
    // The listing comes first, and its failure is answered at once.
    configurar({{R"(CONFIGURACAO\SalvarXMLPDF)", "1"}});
    EXPECT_EQ(imprimir(Nota{}, kRetornoEnvio, 48), ZEL_RECUSADO);
    EXPECT_FALSE(std::filesystem::exists(pasta / ("NFe" + std::string(kChave) + "_DANFE.pdf")));
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
    for (const auto &caso : casos) {
        EXPECT_EQ(fnAnalisarParametrosImpressao(cf, caso.modo, caso.parametros), ZEL_OK);
        EXPECT_EQ(guardado(R"(CONFIGURACAO\TrocoUltimaNFCe)"), caso.troco) << caso.parametros;
        EXPECT_EQ(G_stDadosImpressao.IndicadorTroco, caso.indicador) << caso.parametros;
    }
}
