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

// The text with the first `tag` behind `marco` renamed.
std::string sem(std::string xml, std::string_view marco, std::string_view tag) {
    const std::size_t lugar = xml.find(tag, xml.find(marco));
    EXPECT_NE(lugar, xml.npos) << marco << tag;
    return xml.replace(lugar, tag.size(), "<x>");
}

Nota completa() {
    Nota nota;
    nota.dest = kConsumidor;
    nota.itens += item(2, "790", "Lápis"_l1, "1", "CX", "3.1");
    nota.infCpl = "Volte &lt;sempre&gt;&#10;[b]sim[/b]";
    return nota;
}

} // namespace

TEST_F(Leitura, every_field_from_its_place) {
    CupomFiscal cf;
    ASSERT_EQ(ler(completa().xml(), kRetornoEnvio, cf), 1);
    const std::pair<std::string_view, std::string_view> textos[] = {
        {cf.ChaveDeAcesso, kChave},
        {cf.UF, "35"},
        {cf.Serie, "1"},
        {cf.NumeroNotaFiscal, "123"},
        {cf.DataHora, "2014-01-31T23:59:59-02:00"},
        {cf.CDV, "6"},
        {cf.TpAmp, "1"},
        {cf.CnpjCpf, "11222333000181"},
        {cf.Nome, "Pão & Cia Ltda"_l1},
        {cf.EmitLogradouro, "Rua das Flores"},
        {cf.EmitBairro, "Jardim"},
        {cf.EmitMunicipio, "São Paulo"_l1},
        {cf.EmitUF, "SP"},
        {cf.EmitInscricaoEstadual, "111222333444"},
        {cf.IdDest, "123.456.789-09"},
        {cf.DestNome, "José da Silva"_l1},
        {cf.DestLogradouro, "Rua A"},
        {cf.DestBairro, "Centro"},
        {cf.DestCodMunicipio, "3550308"},
        {cf.DestMunicipio, "São Paulo"_l1},
        {cf.DestUF, "SP"},
        {cf.DestCEP, "01001000"},
        {cf.TotalICMS, "1.80"}, // the total's, not an item's
        {cf.ProtocoloSefaz, "135140000000001"},
        {cf.DataHoraAutorizacao, "2014-02-01T00:00:03-02:00"},
        {cf.DigestValueAutorizado, kDigest},
        {cf.MsgPromocional, "Volte <sempre>\n[b]sim[/b]"},
        {cf.Itens.at(1).CodigoProduto, "790"},
        {cf.Itens.at(1).DescricaoProduto, "Lápis"_l1},
        {cf.Itens.at(1).Quantidade, "1"},
        {cf.Itens.at(1).Unidade, "CX"},
    };
    for (const auto &[lido, esperado] : textos)
        EXPECT_EQ(lido, esperado);
    EXPECT_EQ(cf.TipoEmissao, 1);
    EXPECT_EQ(cf.EmitNumero, 100);
    EXPECT_EQ(cf.DestNumero, 12);
    EXPECT_EQ(cf.Itens.size(), 2U);
    EXPECT_EQ(cf.Itens[1].NumeroItem, 2);
    EXPECT_EQ(cf.Itens[1].ValorUnitario, 3.1);
    EXPECT_EQ(cf.ValorTotal, 10.5);
    EXPECT_EQ(cf.Pagamentos.at(0).FormaPgto, 1);
    EXPECT_EQ(G_stDadosImpressao.ambiente(), kProducao);
}

// A receipt printed with a hole in it, or with the neighbour's value in the hole.
TEST_F(Leitura, a_required_element_is_missing) {
    const std::pair<std::string_view, std::string_view> casos[] = {
        {"", "Id=\""},         {"", "<cUF>"},          {"", "<serie>"},    {"", "<nNF>"},
        {"", "<dhEmi>"},       {"", "<tpEmis>"},       {"", "<cDV>"},      {"", "<tpAmb>"},
        {"", "<emit>"},        {"<emit", "<CNPJ>"},    {"", "<xNome>"},    {"", "<enderEmit>"},
        {"<enderE", "<xLgr>"}, {"<enderE", "<nro>"},   {"", "<xBairro>"},  {"<enderE", "<xMun>"},
        {"<enderE", "<UF>"},   {"", "<IE>"},           {"<dest", "<CPF>"}, {"", "<total>"},
        {"<total", "<vICMS>"}, {"", "<vDesc>"},        {"", "<vOutro>"},   {"", "<vNF>"},
        {"", "nItem='"},       {"<det", "<cProd>"},    {"", "<xProd>"},    {"", "<uCom>"},
        {"", "<qCom>"},        {"", "<vUnCom>"},       {"", "<pag>"},      {"", "<tPag>"},
        {"", "<vPag>"},        {"Lápis"_l1, "<uCom>"},
    };
    const std::string xml = completa().xml();
    for (const auto &[marco, tag] : casos) {
        CupomFiscal cf;
        EXPECT_EQ(ler(sem(xml, marco, tag), kRetornoEnvio, cf), 0) << marco << " " << tag;
    }
    Nota semItens = completa();
    semItens.itens.clear();
    CupomFiscal cf;
    EXPECT_EQ(ler(semItens.xml(), kRetornoEnvio, cf), 0);
    EXPECT_EQ(parseXMLCupomFiscal(pasta / "nenhuma.xml", kOffline, cf), 0);
    EXPECT_EQ(parseXMLCupomFiscal(pasta / "nota.xml", pasta / "nenhum.xml", cf), 0);
}

// A consumer's address that goes on behind a hole; an id taken from the emitter.
TEST_F(Leitura, consumer_ends_at_the_first_missing_element) {
    const struct {
        std::string_view dest, id, nome, logradouro, bairro;
    } casos[] = {
        {"", "", "", "", ""},
        {"<dest><CPF>191</CPF><xNome>Ana</xNome></dest>", "000.000.001-91", "Ana", "", ""},
        {"<dest><CNPJ>11222333000181</CNPJ></dest>", "11.222.333/0001-81", "", "", ""},
        {"<dest><idEstrangeiro>AB-12</idEstrangeiro><xNome>Bob</xNome><xBairro>Sul</xBairro></"
         "dest>",
         "AB-12", "Bob", "", ""},
        {"<dest><CPF>191</CPF><xLgr>Rua B</xLgr></dest>", "000.000.001-91", "", "", ""},
        {"<dest><CPF>191</CPF><xNome>Ana</xNome><xLgr>Rua B</xLgr><xBairro>Sul</xBairro></dest>",
         "000.000.001-91", "Ana", "Rua B", ""},
    };
    for (const auto &caso : casos) {
        Nota nota;
        nota.dest = caso.dest;
        CupomFiscal cf;
        EXPECT_EQ(ler(nota.xml(), kRetornoSefaz, cf), 1) << caso.dest;
        EXPECT_EQ(cf.IdDest.texto(), caso.id);
        EXPECT_EQ(cf.DestNome.texto(), caso.nome);
        EXPECT_EQ(cf.DestLogradouro.texto(), caso.logradouro);
        EXPECT_EQ(cf.DestBairro.texto(), caso.bairro);
    }
}

TEST_F(Leitura, returns_of_both_vocabularies) {
    const std::string link = "<LinkNFCe>http://x/?a=1&amp;b=2</LinkNFCe>";
    const struct {
        std::string tpEmis, retorno;
        int resultado;
        std::string_view ambiente, protocolo, autorizacao, digest, link;
    } casos[] = {
        {"1", kRetornoSefaz, 1, "2", "135140000000001", "2014-02-01T00:00:03-02:00", kDigest, ""},
        // The sender's own words come first, wherever they stand.
        {"1",
         kRetornoSefaz + "<ProtocoloSefaz>2</ProtocoloSefaz><DocProtocolo>1</DocProtocolo>"
                         "<DocDhAut>d</DocDhAut><DocDigestValue>v</DocDigestValue>",
         1, "2", "1", "d", "v", ""},
        {"1", sem(kRetornoSefaz, "", "<nProt>"), 0, "", "", "", "", ""},
        {"1", sem(kRetornoSefaz, "", "<dhRecbto>"), 0, "2", "135140000000001", "", "", ""},
        {"1", sem(kRetornoSefaz, "", "<digVal>"), 0, "2", "135140000000001",
         "2014-02-01T00:00:03-02:00", "", ""},
        {"1", kRetornoSefaz + link, 1, "3", "135140000000001", "", "", "http://x/?a=1&b=2"},
        {"1", kRetornoSefaz + link + "<LinkXML>y</LinkXML>", 1, "3", "135140000000001", "", "",
         "y"},
        {"9", kRetornoSefaz, 1, "2", "", "", kDigest, ""},
        {"9", link, 1, "3", "", "", "", "http://x/?a=1&b=2"},
        {"9", "<x/>", 0, "2", "", "", "", ""},
        {"6", "<x/>", 1, "2", "", "", "", ""},
    };
    for (const auto &caso : casos) {
        G_stDadosImpressao = {};
        Nota nota;
        nota.tpEmis = caso.tpEmis;
        nota.tpAmb = "2";
        CupomFiscal cf;
        EXPECT_EQ(ler(nota.xml(), caso.retorno, cf), caso.resultado) << caso.retorno;
        EXPECT_EQ(G_stDadosImpressao.TipoAmbiente.texto(), caso.ambiente) << caso.retorno;
        EXPECT_EQ(cf.ProtocoloSefaz.texto(), caso.protocolo) << caso.retorno;
        EXPECT_EQ(cf.DataHoraAutorizacao.texto(), caso.autorizacao) << caso.retorno;
        EXPECT_EQ(cf.DigestValueAutorizado.texto(), caso.digest) << caso.retorno;
        EXPECT_EQ(cf.LinkNFCe.texto(), caso.link) << caso.retorno;
    }
    EXPECT_EQ(valorConfig(R"(CONFIGURACAO\TipoAmbiente)"_chave), "3"); // the file's own
}

// The digest of a document that no return describes: its signature's, or computed.
TEST_F(Leitura, offline_digest) {
    Nota nota;
    CupomFiscal calculado;
    ASSERT_EQ(ler(nota.xml(), "", calculado), 1);
    // Made apart: its canonical infNFe (python3 xml.etree canonicalize), in UTF-8 | sha1sum,
    // base64.
    EXPECT_EQ(calculado.DigestValueAutorizado.texto(), "PMgaNu06ywfZaVH8pbL8/+xDnoE=");
    std::string assinada = nota.xml();
    assinada.insert(assinada.find("</NFe>"),
                    "<Signature><DigestValue>abc=</DigestValue></Signature>");
    CupomFiscal assinado;
    ASSERT_EQ(ler(assinada, "", assinado), 1);
    EXPECT_EQ(assinado.DigestValueAutorizado.texto(), "abc=");
}

// A contingency copy read as it lies there, attribute quotes of another writer, a read-only file.
TEST_F(Leitura, other_forms_of_the_same_document) {
    const std::string xml = completa().xml();
    ASSERT_EQ(fnCriarArquivoContigencia(pasta / "nota.ctg", xml), ZEL_OK);
    std::filesystem::permissions(pasta / "nota.ctg", std::filesystem::perms::owner_read);
    CupomFiscal cf;
    EXPECT_EQ(parseXMLCupomFiscal(pasta / "nota.ctg", kOffline, cf), 1);
    EXPECT_EQ(cf.Itens.size(), 2U);

    std::string aspas = xml;
    for (std::size_t i; (i = aspas.find('\'')) != aspas.npos;)
        aspas[i] = '"';
    CupomFiscal comAspas;
    EXPECT_EQ(ler(aspas, kRetornoEnvio, comAspas), 1);
    EXPECT_EQ(comAspas.Itens.at(1).NumeroItem, 2);

    CupomFiscal utf8;
    EXPECT_EQ(ler(fnParseToUtf8(xml), kRetornoEnvio, utf8), 1);
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

TEST_F(Leitura, cancellation_takes_number_and_series_from_the_key) {
    const std::string pedido =
        "<Evento><ChaAcesso>" + std::string(kChave) + "</ChaAcesso></Evento>";
    pasta.gravar("pedido.xml", pedido);
    pasta.gravar("sefaz.xml", "<evento><chNFe>" + std::string(kChave) + "</chNFe></evento>");
    pasta.gravar("curta.xml", "<ChaAcesso>123</ChaAcesso>");
    pasta.gravar("retorno.xml", "<nProt>77</nProt>");
    ASSERT_EQ(fnCriarArquivoContigencia(pasta / "pedido.ctgCanc", pedido), ZEL_OK);
    const struct {
        std::string arquivo, retorno;
        int resultado;
        std::string_view protocolo;
    } casos[] = {
        {"pedido.xml", pasta / "retorno.xml", 1, "77"}, {"sefaz.xml", "OFFLINE", 1, ""},
        {"pedido.ctgCanc", "OFFLINE", 1, ""},           {"curta.xml", "OFFLINE", 0, ""},
        {"pedido.xml", pasta / "sefaz.xml", 0, ""}, // no protocol in it
        {"pedido.xml", pasta / "nenhum.xml", 0, ""},    {"nenhum.xml", "OFFLINE", 0, ""},
    };
    for (const auto &caso : casos) {
        CupomFiscal cf;
        EXPECT_EQ(parseXMLCupomFiscalCancelamento(pasta / caso.arquivo, caso.retorno, cf),
                  caso.resultado)
            << caso.arquivo << caso.retorno;
        if (caso.resultado != 1) continue;
        EXPECT_EQ(cf.Serie.texto(), "001");
        EXPECT_EQ(cf.NumeroNotaFiscal.texto(), "000000123");
        EXPECT_EQ(cf.ProtocoloSefaz.texto(), caso.protocolo);
    }
}
