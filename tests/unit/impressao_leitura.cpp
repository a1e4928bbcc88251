// Reading documents and returns: what is required, what is optional, which word of which
// vocabulary counts, and that no value is taken from a neighbour.
#include "impressao/LeituraXml.h"
#include "impressao_apoio.h"
#include "util/Codificacao.h"
#include "util/Cripto.h"

#include <filesystem>

using namespace impressao;

namespace {

using Leitura = Teste;

std::string sem(const std::string &xml, std::string_view tag, std::string_view marco = "") {
    return trocar(xml, tag, "<x>", marco);
}

} // namespace

// Fields that no receipt shows, and those that a neighbour has too.
TEST_F(Leitura, fields_from_their_places) {
    CupomFiscal cf;
    ASSERT_EQ(ler(cheia, retornoEnvio, cf), 1);
    EXPECT_EQ(juntar({cf.UF, cf.CDV, cf.TpAmp, cf.DestCodMunicipio, cf.DestUF, cf.DestCEP}),
              "35|6|1|3550308|SP|01002000|");
    EXPECT_EQ(cf.TotalICMS.texto(), "1.80"); // the total's, not an item's
    EXPECT_EQ(std::string_view(cf.MsgPromocional), "Volte <sempre>");
    EXPECT_EQ(cf.Itens.size(), 3U);
    EXPECT_EQ(cf.Itens[1].NumeroItem, 2);
    EXPECT_EQ(juntar({cf.Itens[1].CodigoProduto, cf.Itens[1].Quantidade, cf.Itens[1].Unidade}),
              "7891000100103|1.5000|CX|");
}

// A receipt printed with a hole in it, or with the neighbour's value in the hole.
TEST_F(Leitura, a_required_element_is_missing) {
    const std::pair<std::string_view, std::string_view> casos[] = {
        {"Id=\"", ""},   {"<cUF>", ""},          {"<serie>", ""},         {"<nNF>", ""},
        {"<dhEmi>", ""}, {"<tpEmis>", ""},       {"<cDV>", ""},           {"<tpAmb>", ""},
        {"<emit>", ""},  {"<CNPJ>", ""},         {"<xNome>", ""},         {"<enderEmit>", ""},
        {"<xLgr>", ""},  {"<nro>", ""},          {"<xBairro>", ""},       {"<xMun>", ""},
        {"<UF>", ""},    {"<IE>", ""},           {"<CPF>", ""},           {"<total>", ""},
        {"<vDesc>", ""}, {"<vICMS>", "<total>"}, {"<vOutro>", ""},        {"<vNF>", ""},
        {"nItem='", ""}, {"<cProd>", ""},        {"<xProd>", ""},         {"<uCom>", ""},
        {"<qCom>", ""},  {"<vUnCom>", ""},       {"<vUnCom>", "Caderno"}, {"<tPag>", ""},
        {"<vPag>", ""},
    };
    for (const auto &[tag, marco] : casos) {
        CupomFiscal cf;
        EXPECT_EQ(ler(sem(cheia, tag, marco), retornoEnvio, cf), 0) << tag << marco;
    }
    CupomFiscal cf;
    for (const std::string_view unico : {"<det ", "<pag>"})
        EXPECT_EQ(ler(sem(simples, unico), retornoEnvio, cf), 0) << unico;
    EXPECT_EQ(parseXMLCupomFiscal(pasta / "nenhuma.xml", kOffline, cf), 0);
    EXPECT_EQ(parseXMLCupomFiscal(gravar("nota.xml", simples), pasta / "nenhum.xml", cf), 0);
}

// A consumer's address that goes on behind a hole; an id taken from the emitter.
TEST_F(Leitura, consumer_ends_at_the_first_missing_element) {
    const std::pair<std::string_view, std::string_view> casos[] = {
        {"", "||||"},
        {"<CPF>191</CPF><xNome>Ana</xNome>", "000.000.001-91|Ana|||"},
        {"<CNPJ>11222333000181</CNPJ>", "11.222.333/0001-81||||"},
        {"<idEstrangeiro>A-1</idEstrangeiro><xNome>Bob</xNome><nro>1</nro>", "A-1|Bob|||"},
        {"<CPF>191</CPF><xLgr>Rua B</xLgr>", "000.000.001-91||||"},
        {"<CPF>1</CPF><xNome>A</xNome><xLgr>B</xLgr><xBairro>C</xBairro>", "000.000.000-01|A|B||"},
    };
    for (const auto &[dest, esperado] : casos) {
        std::string xml = simples;
        if (!dest.empty())
            xml = trocar(xml, "</emit>", "</emit><dest>" + std::string(dest) + "</dest>");
        CupomFiscal cf;
        EXPECT_EQ(ler(xml, retornoSefaz, cf), 1) << dest;
        EXPECT_EQ(juntar({cf.IdDest, cf.DestNome, cf.DestLogradouro, cf.DestBairro}), esperado);
    }
}

// Environment, protocol, time, digest and link, of what was read before a refusal too.
TEST_F(Leitura, returns_of_both_vocabularies) {
    const std::string link = "<LinkNFCe>http://x/?a=1&amp;b=2</LinkNFCe>";
    const std::string sefaz = "<dhRecbto>D</dhRecbto><nProt>P</nProt><digVal>V</digVal>";
    const struct {
        std::string tpEmis, retorno;
        int resultado;
        std::string_view esperado;
    } casos[] = {
        {"1", sefaz, 1, "2|P|D|V||"},
        // The sender's own words come first, wherever they stand.
        {"1", sefaz + "<ProtocoloSefaz>q</ProtocoloSefaz><DocDhAut>d</DocDhAut>", 1, "2|q|d|V||"},
        {"1", sefaz + "<ProtocoloSefaz>q</ProtocoloSefaz><DocProtocolo>p</DocProtocolo>", 1,
         "2|p|D|V||"},
        {"1", sefaz + "<DocDigestValue>v</DocDigestValue>", 1, "2|P|D|v||"},
        {"1", sem(sefaz, "<nProt>"), 0, "|||||"},
        {"1", sem(sefaz, "<dhRecbto>"), 0, "2|P||||"},
        {"1", sem(sefaz, "<digVal>"), 0, "2|P|D|||"},
        {"1", sefaz + link, 1, "3|P|||http://x/?a=1&b=2|"},
        {"1", sefaz + link + "<LinkXML>y</LinkXML>", 1, "3|P|||y|"},
        {"9", sefaz, 1, "2|||V||"},
        {"9", link, 1, "3||||http://x/?a=1&b=2|"},
        {"9", "<x/>", 0, "2|||||"},
        {"6", "<x/>", 1, "2|||||"},
    };
    for (const auto &caso : casos) {
        G_stDadosImpressao = {};
        const std::string xml = trocar(simples, "<tpEmis>1", "<tpEmis>" + caso.tpEmis);
        CupomFiscal cf;
        EXPECT_EQ(ler(trocar(xml, "<tpAmb>1", "<tpAmb>2"), caso.retorno, cf), caso.resultado);
        EXPECT_EQ(juntar({G_stDadosImpressao.TipoAmbiente, cf.ProtocoloSefaz,
                          cf.DataHoraAutorizacao, cf.DigestValueAutorizado, cf.LinkNFCe}),
                  caso.esperado)
            << caso.retorno;
    }
    EXPECT_EQ(valorConfig(R"(CONFIGURACAO\TipoAmbiente)"_chave), "3"); // the file's own
}

// The digest of a document that no return describes: its signature's, or computed.
TEST_F(Leitura, offline_digest) {
    std::string xml = simples;
    std::erase(xml, '\n');
    CupomFiscal calculado;
    ASSERT_EQ(ler(xml, "", calculado), 1);
    // Made apart: the canonical form of infNFe in UTF-8, sha1sum, base64.
    EXPECT_EQ(calculado.DigestValueAutorizado.texto(), "8RgLvAiCMECGVaxEVKste2bIVO8=");
    CupomFiscal assinado;
    ASSERT_EQ(ler(trocar(simples, "</NFe>", "<DigestValue>abc=</DigestValue></NFe>"), "", assinado),
              1);
    EXPECT_EQ(assinado.DigestValueAutorizado.texto(), "abc=");
}

TEST_F(Leitura, values_are_cut_to_their_fields) {
    const std::string longa(1100, 'd');
    const std::string link = "<LinkXML>" + longa + "</LinkXML>";
    const std::string xml = trocar(simples, "Caneta azul", longa);
    CupomFiscal cf;
    ASSERT_EQ(ler(trocar(xml, ">100<", ">99999999999<"), retornoSefaz + link, cf), 1);
    EXPECT_EQ(std::string_view(cf.Itens.at(0).DescricaoProduto), longa.substr(0, 1023));
    EXPECT_EQ(cf.LinkNFCe.texto(), longa.substr(0, 199));
    EXPECT_EQ(cf.EmitNumero, 2147483647);
}

// A contingency copy that may only be read, another writer's quotes, another encoding.
TEST_F(Leitura, other_forms_of_the_same_document) {
    ASSERT_EQ(fnCriarArquivoContigencia(pasta / "nota.ctg", simples), ZEL_OK);
    std::filesystem::permissions(pasta / "nota.ctg", std::filesystem::perms::owner_read);
    CupomFiscal cf;
    EXPECT_EQ(parseXMLCupomFiscal(pasta / "nota.ctg", kOffline, cf), 1);
    CupomFiscal comAspas;
    EXPECT_EQ(ler(trocar(simples, "nItem='1'", "nItem=\"1\""), retornoEnvio, comAspas), 1);
    EXPECT_EQ(comAspas.Itens.at(0).NumeroItem, 1);
    CupomFiscal utf8;
    EXPECT_EQ(ler(fnParseToUtf8(cheia), retornoEnvio, utf8), 1);
    EXPECT_EQ(utf8.DestNome.texto(), "José da Silva"_l1);
}

TEST(LeituraXml, utf8_is_told_from_latin1) {
    const std::pair<std::string_view, std::string_view> casos[] = {
        {"a", "a"},
        {"\xC3\xA7\xE2\x82\xAC\xF0\x9F\x98\x80z", "\xE7??z"},
        {"\xE7\xC3\xA7", "\xE7\xC3\xA7"},                 // not UTF-8 throughout
        {"\xC3", "\xC3"},                                 // cut
        {"\xC1\xA1\xED\xA0\x80", "\xC1\xA1\xED\xA0\x80"}, // overlong, surrogate
        {"\xEF\xBB\xBF\xE7\xC3\xA7", "\xE7\xE7"},
        {"<?xml encoding=\"utf-8\"?>\xE7\xC3\xA7", "<?xml encoding=\"utf-8\"?>\xE7\xE7"},
    };
    for (const auto &[texto, esperado] : casos)
        EXPECT_EQ(emLatin1(texto), esperado) << texto;
    EXPECT_EQ(
        valorDoRetorno("<a><SitCodigos>1</SitCodigos><sitCODIGO>150</sitCODIGO></a>", "SITCODIGO"),
        "150");
    EXPECT_EQ(valorDoRetorno("<a><SITCODIGO", "SITCODIGO"), std::nullopt);
}

TEST_F(Leitura, cancellation_takes_series_and_number_from_the_key) {
    const std::string pedido = "<ChaAcesso>" + std::string(kChave) + "</ChaAcesso>";
    pasta.gravar("pedido.xml", pedido);
    pasta.gravar("sefaz.xml", "<chNFe>" + std::string(kChave) + "</chNFe>");
    pasta.gravar("curta.xml", "<ChaAcesso>123</ChaAcesso>");
    pasta.gravar("retorno.xml", "<nProt>77</nProt>");
    ASSERT_EQ(fnCriarArquivoContigencia(pasta / "pedido.ctgCanc", pedido), ZEL_OK);
    const struct {
        std::string arquivo, retorno;
        int resultado;
        std::string_view esperado;
    } casos[] = {
        {"pedido.xml", pasta / "retorno.xml", 1, "001|000000123|77|"},
        {"sefaz.xml", "OFFLINE", 1, "001|000000123||"},
        {"pedido.ctgCanc", "OFFLINE", 1, "001|000000123||"},
        {"curta.xml", "OFFLINE", 0, "|||"},
        {"pedido.xml", pasta / "sefaz.xml", 0, "001|000000123||"}, // no protocol in it
        {"pedido.xml", pasta / "nenhum.xml", 0, "|||"},
        {"nenhum.xml", "OFFLINE", 0, "|||"},
    };
    for (const auto &caso : casos) {
        CupomFiscal cf;
        EXPECT_EQ(parseXMLCupomFiscalCancelamento(pasta / caso.arquivo, caso.retorno, cf),
                  caso.resultado);
        EXPECT_EQ(juntar({cf.Serie, cf.NumeroNotaFiscal, cf.ProtocoloSefaz}), caso.esperado)
            << caso.arquivo << caso.retorno;
    }
}
