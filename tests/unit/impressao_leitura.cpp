// Reading documents and returns: what is required, what is optional, which word of which
// vocabulary counts, and that no value is taken from a neighbour.
#include "impressao/LeituraXml.h"
#include "impressao_apoio.h"
#include "util/Codificacao.h"

using namespace impressao;

namespace {

using Leitura = Teste;

std::string sem(const std::string &xml, std::string_view tag, std::string_view marco = "") {
    return trocar(xml, tag, "<x>", marco);
}

} // namespace

TEST_F(Leitura, document_without_a_required_element_is_refused) {
    const auto resultado = [this](const std::string &xml) {
        CupomFiscal cf;
        return ler(xml, retornoEnvio, cf);
    };
    for (const std::string_view tag :
         {"Id=\"",     "<cUF>",  "<serie>", "<nNF>",   "<dhEmi>",     "<tpEmis>", "<cDV>",
          "<tpAmb>",   "<emit>", "<CNPJ>",  "<xNome>", "<enderEmit>", "<xLgr>",   "<nro>",
          "<xBairro>", "<xMun>", "<UF>",    "<IE>",    "<CPF>",       "<total>",  "<vDesc>",
          "<vOutro>",  "<vNF>",  "nItem='", "<cProd>", "<xProd>",     "<uCom>",   "<qCom>",
          "<vUnCom>",  "<tPag>", "<vPag>"})
        EXPECT_EQ(resultado(sem(cheia, tag)), 0) << tag;
    for (const auto &[tag, marco] : Pares{{"<vICMS>", "<total>"}, {"<vUnCom>", "Caderno"}})
        EXPECT_EQ(resultado(sem(cheia, tag, marco)), 0) << tag;
    for (const std::string_view unico : {"<det ", "<pag>"})
        EXPECT_EQ(resultado(sem(simples, unico)), 0) << unico;
}

// Environment, protocol, time, digest and link, of what was read before a refusal too.
TEST_F(Leitura, returns_are_read_in_both_vocabularies) {
    const std::string link = "<LinkNFCe>http://x/?a=1&amp;b=2</LinkNFCe>";
    const std::string sefaz = "<dhRecbto>D</dhRecbto><nProt>P</nProt><digVal>V</digVal>";
    const std::string outro = sefaz + "<ProtocoloSefaz>q</ProtocoloSefaz>";
    const std::tuple<std::string, std::string, int, std::string_view> casos[] = {
        {"1", sefaz, 1, "2|P|D|V||"},
        // The sender's own words come first, wherever they stand.
        {"1", outro + "<DocDhAut>d</DocDhAut><DocDigestValue>v</DocDigestValue>", 1, "2|q|d|v||"},
        {"1", outro + "<DocProtocolo>p</DocProtocolo>", 1, "2|p|D|V||"},
        {"1", sem(sefaz, "<nProt>"), 0, "|||||"},
        {"1", sem(sefaz, "<dhRecbto>"), 0, "2|P||||"},
        {"1", sem(sefaz, "<digVal>"), 0, "2|P|D|||"},
        {"1", sefaz + link, 1, "3|P|||http://x/?a=1&b=2|"},
        {"1", sefaz + link + "<LinkXML>y</LinkXML>", 1, "3|P|||y|"},
        {"9", sefaz, 1, "2|||V||"},
        {"9", "<x/>", 0, "2|||||"},
        {"6", "<x/>", 1, "2|||||"},
    };
    for (const auto &[tpEmis, retorno, resultado, esperado] : casos) {
        G_stDadosImpressao = {};
        const std::string xml = trocar(simples, "<tpEmis>1", "<tpEmis>" + tpEmis);
        CupomFiscal cf;
        EXPECT_EQ(ler(trocar(xml, "<tpAmb>1", "<tpAmb>2"), retorno, cf), resultado) << retorno;
        EXPECT_EQ(juntar({G_stDadosImpressao.TipoAmbiente, cf.ProtocoloSefaz,
                          cf.DataHoraAutorizacao, cf.DigestValueAutorizado, cf.LinkNFCe}),
                  esperado);
    }
}

TEST_F(Leitura, other_forms_of_a_document_are_read) {
    const std::string dest = "<CPF>191</CPF><xNome>Ana</xNome><nro>1</nro><xBairro>B</xBairro>";
    std::string xml = trocar(fnParseToUtf8(simples), "nItem='1'", "nItem=\"1\"");
    xml = trocar(xml, "</emit>", "</emit><dest>" + dest + "</dest>"); // ends at its first hole
    CupomFiscal cf;
    EXPECT_EQ(ler(trocar(xml, "</NFe>", "<DigestValue>abc=</DigestValue></NFe>"), "", cf), 1);
    EXPECT_EQ(juntar({cf.Nome, cf.IdDest, cf.DestNome, cf.DestBairro, cf.DigestValueAutorizado}),
              "Pão & Cia Ltda|000.000.001-91|Ana||abc=|"_l1);
    EXPECT_EQ(cf.Itens.at(0).NumeroItem, 1);
}

TEST(LeituraXml, utf8_is_told_from_latin1) {
    for (const auto &[texto, esperado] :
         Pares{{"\xC3\xA7\xE2\x82\xAC\xF0\x9F\x98\x80z", "\xE7??z"},
               {"\xE7\xC3\xA7", "\xE7\xC3\xA7"}, // not UTF-8 throughout
               {"\xC3", "\xC3"},                 // cut
               {"\xC1\xA1", "\xC1\xA1"},         // overlong
               {"\xED\xA0\x80", "\xED\xA0\x80"}, // surrogate
               {"\xEF\xBB\xBF\xE7\xC3\xA7", "\xE7\xE7"},
               {"<?xml encoding=\"utf-8\"?>\xE7\xC3\xA7", "<?xml encoding=\"utf-8\"?>\xE7\xE7"}})
        EXPECT_EQ(emLatin1(texto), esperado) << texto;
}

TEST_F(Leitura, cancellation_takes_series_and_number_from_the_key) {
    const std::string pedido = "<ChaAcesso>" + kChave + "</ChaAcesso>";
    const std::string sefaz = "<chNFe>" + kChave + "</chNFe>";
    const std::tuple<std::string, std::string, int, std::string_view> casos[] = {
        {pedido, "<nProt>77</nProt>", 1, "001|000000123|77|"},
        {sefaz, "", 1, "001|000000123||"},
        {"<ChaAcesso>123</ChaAcesso>", "", 0, "|||"},
        {pedido, "<x/>", 0, "001|000000123||"}, // no protocol in it
    };
    for (const auto &[xml, retorno, resultado, esperado] : casos) {
        CupomFiscal cf;
        const std::string arquivo = gravar("p.xml", xml), volta = gravar("r.xml", retorno);
        EXPECT_EQ(parseXMLCupomFiscalCancelamento(arquivo, volta, cf), resultado) << xml;
        EXPECT_EQ(juntar({cf.Serie, cf.NumeroNotaFiscal, cf.ProtocoloSefaz}), esperado) << xml;
    }
}
