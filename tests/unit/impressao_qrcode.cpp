// Consultation addresses and the QR-code content: one character off, and the authority's page says
// that the receipt does not exist.
#include "impressao/LayoutImpressao.h"
#include "impressao_apoio.h"

using namespace impressao;

namespace {

using Qrcode = Teste;

CupomFiscal cupom(std::string_view uf, std::string_view consumidor) {
    CupomFiscal cf;
    cf.ChaveDeAcesso = kChave;
    cf.EmitUF = uf;
    cf.IdDest = consumidor;
    cf.DataHora = "2014-01-31T23:59:59-02:00";
    cf.ValorTotal = 10.5;
    cf.TotalICMS = "1.80";
    cf.DigestValueAutorizado = "FBFUQdZijVXNc2cxuJ9xHnx0Chc=";
    return cf;
}

} // namespace

// The hashes were made on the command line, with the token behind the parameters:
//   printf '%s' 'chNFe=...&cIdToken=000001senha-é-01' | sha1sum | tr a-f A-F
// in a UTF-8 terminal, for every state but SP, RS and MT with "?" in front.
TEST_F(Qrcode, parameters_and_hash) {
    configurar({{R"(CONFIGURACAO\TokenSefaz)", "senha-é-01"_l1}});
    const std::string inicio = "http://a?chNFe=" + std::string(kChave) + "&nVersao=100&tpAmb=";
    const std::string fim = "&dhEmi=323031342d30312d33315432333a35393a35392d30323a3030&vNF=10.50"
                            "&vICMS=1.80&digVal="
                            "4642465551645a696a56584e63326378754a3978486e78304368633d"
                            "&cIdToken=000001&cHashQRCode=";
    const struct {
        std::string_view uf, consumidor;
        int ambiente;
        std::string esperado;
    } casos[] = {
        {"SP", "123.456.789-09", kProducao,
         inicio + "1&cDest=12345678909" + fim + "A99EF63C9D71DB0A05AB04ED58DB17471694B0A1"},
        {"AM", "123.456.789-09", kProducao,
         inicio + "1&cDest=12345678909" + fim + "70FA52EBB0E2F8017AB2F55E66120E4B0D6F4908"},
        {"AM", "", kHomologacao, inicio + "2" + fim + "2327C696A0888B5052D4E46338BA2CA739C31984"},
        {"AM", "", kLinkPronto, "http://a"},
    };
    for (const auto &caso : casos) {
        G_stDadosImpressao.TipoAmbiente = std::to_string(caso.ambiente);
        EXPECT_EQ(gerarUrlQrcode(cupom(caso.uf, caso.consumidor), "http://a", caso.ambiente),
                  caso.esperado);
    }
    // Only the three states hash the parameters alone.
    for (const std::string_view uf : {"RS", "MT"})
        EXPECT_EQ(calcularHashCodeFromURL("x", uf), calcularHashCodeFromURL("x", "SP")) << uf;
    EXPECT_NE(calcularHashCodeFromURL("x", "MS"), calcularHashCodeFromURL("x", "SP"));
}

TEST_F(Qrcode, address_of_state_and_environment) {
    configurar({{R"(URLS\SP\ChaveConsultaProducao)", "chave.sp"},
                {R"(URLS\SP\Producao)", "qr.sp"},
                {R"(URLS\BA\Homologacao)", "hom.ba"}});
    const struct {
        std::string_view uf;
        int ambiente;
        bool porChave;
        int resultado;
        std::string_view esperado;
    } casos[] = {
        {"SP", 1, true, 1, "chave.sp"},
        {"SP", 1, false, 1, "qr.sp"},
        {"BA", 2, true, 1, "hom.ba"}, // no page for keys: the portal
        {"BA", 2, false, 1, "hom.ba"},
        {"AM", 2, true, 1, "homnfce.sefaz.am.gov.br/nfceweb/formConsulta.do"},
        {"BA", 1, true, 1, ""},
        {"EX", 1, true, -1, ""},
        {"SP", 3, true, 1, "http://link"},
        {"SP", 0, false, 1, "http://link"},
    };
    for (const auto &caso : casos) {
        CupomFiscal cf = cupom(caso.uf, "");
        cf.LinkNFCe = "http://link";
        std::string endereco = "?";
        EXPECT_EQ(retornarEnderecoConsulta(cf, caso.ambiente, endereco, caso.porChave),
                  caso.resultado);
        EXPECT_EQ(endereco, caso.esperado) << caso.uf << caso.ambiente;
    }
}

TEST(Cupom, derived_values) {
    EXPECT_EQ(retornaCnpjCpfFormatado("12345678909"), "CPF- 123.456.789-09");
    EXPECT_EQ(retornaCnpjCpfFormatado("11222333000181"), "CNPJ-11.222.333/0001-81");
    CupomFiscal cf;
    EXPECT_EQ(cf.getValorTotalPago(), 0.0);
    cf.Pagamentos = {{1, 10.0}, {2, 5.5}};
    EXPECT_EQ(cf.getValorTotalPago(), 15.5);
    cf.ChaveDeAcesso = kChave;
    EXPECT_EQ(cf.getChaveDeAcessoFormatado(),
              "3514 0111 2223 3300 0181 6500 1000 0001 2311 7102 5446 ");
}
