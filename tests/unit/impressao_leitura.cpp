// SPDX-License-Identifier: MIT
// Reading documents and returns: what is required, what is optional, which word of which
// vocabulary counts, and that no value is taken from a neighbour.
#include "impressao/LeituraXml.h"
#include "impressao_apoio.h"
#include "texto/Codificacao.h"
#include "texto/Numero.h"
#include "texto/Texto.h"

using namespace impressao;

namespace {

using Leitura = Teste;

std::string sem(const std::string &xml, std::string_view tag, std::string_view marco = "") {
    return trocar(xml, tag, "<x>", marco);
}

} // namespace

TEST_F(Leitura, sem_um_elemento_obrigatorio_e_recusado) {
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

// Goods with a surcharge and tax substitution, then a service with a discount: the totals of a
// service name none of the four values that a receipt prints.
TEST_F(Leitura, totais_de_servico_sao_os_dos_itens) {
    const std::string servico =
        "<det nItem='2'><prod><cProd>2</cProd><xProd>Conserto</xProd><uCom>UN</uCom><qCom>1</qCom>"
        "<vUnCom>100.00</vUnCom><vProd>100.00</vProd><vDesc>2.50</vDesc></prod><imposto><ISSQN>"
        "<vBC>97.50</vBC></ISSQN></imposto></det><total>";
    std::string xml =
        trocar(simples, "</vUnCom>", "</vUnCom><vProd>10.50</vProd><vOutro>1.00</vOutro>");
    xml = trocar(xml, "<ICMS00><vICMS>9.99</vICMS></ICMS00>",
                 "<ICMS10><vICMS>9.99</vICMS><vICMSST>0.50</vICMSST></ICMS10>");
    const std::size_t totais = xml.find("<total>"), depois = xml.find("</total>");
    const std::string antes = xml.substr(0, totais) + servico;
    const std::string soma = "0.00|2.50|1.00|108.50|";
    const std::string todos = "<vICMS>1</vICMS><vDesc>2</vDesc><vOutro>3</vOutro><vNF>4</vNF>";
    const std::tuple<std::string, int, std::string> casos[] = {
        {"<ISSQNTot><vServ>0.00</vServ><vISS>5.00</vISS></ISSQNTot>", 1, soma},
        {"<retTrib><vRetPIS>0.00</vRetPIS></retTrib>", 1, soma},
        {"<ISSQNTot>" + todos + "</ISSQNTot>", 1, "1|2.00|3.00|4.00|"},
        {"<ICMSTot>" + todos + "</ICMSTot><retTrib>0</retTrib>", 1, "1|2.00|3.00|4.00|"},
        // A part of them is no form that anybody writes: something was lost.
        {"<ISSQNTot><vNF>4.00</vNF></ISSQNTot>", 0, ""},
        {"<ICMSTot><vBC>1.00</vBC></ICMSTot><retTrib>0</retTrib>", 0, ""},
        {"<Outro>1</Outro>", 0, ""},
        {"", 0, ""},
    };
    for (const auto &[forma, resultado, esperado] : casos) {
        CupomFiscal cf;
        EXPECT_EQ(ler(antes + forma + xml.substr(depois), "", cf), resultado) << forma;
        if (resultado == 0) continue;
        EXPECT_EQ(juntar({cf.TotalICMS, formatarMoeda(cf.ValorDesconto),
                          formatarMoeda(cf.ValorOutro), formatarMoeda(cf.ValorTotal)}),
                  esperado)
            << forma;
    }
    // Items that do not add up to anything: the total would be that of the readable ones.
    const std::string partido = trocar(antes, "<ISSQN>", "<ISSQN");
    CupomFiscal cf;
    EXPECT_EQ(ler(partido + std::get<0>(casos[0]) + xml.substr(depois), "", cf), 0);
}

// Environment, protocol, time, digest and link, of what was read before a refusal too.
TEST_F(Leitura, retornos_lidos_nos_dois_vocabularios) {
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
        const std::string xml = trocar(simples, "<tpEmis>1", "<tpEmis>" + tpEmis);
        CupomFiscal cf;
        EXPECT_EQ(ler(trocar(xml, "<tpAmb>1", "<tpAmb>2"), retorno, cf), resultado) << retorno;
        EXPECT_EQ(juntar({cf.TipoAmbiente, cf.ProtocoloSefaz, cf.DataHoraAutorizacao,
                          cf.DigestValueAutorizado, cf.LinkNFCe}),
                  esperado);
    }
}

TEST_F(Leitura, outras_formas_de_documento_sao_lidas) {
    const std::string dest = "<CPF>191</CPF><xNome>Ana</xNome><nro>1</nro><xBairro>B</xBairro>";
    std::string xml = trocar(fnParseToUtf8(simples), "nItem='1'", "nItem=\"1\"");
    xml = trocar(xml, "</emit>", "</emit><dest>" + dest + "</dest>"); // ends at its first hole
    CupomFiscal cf;
    EXPECT_EQ(ler(trocar(xml, "</NFe>", "<DigestValue>abc=</DigestValue></NFe>"), "", cf), 1);
    EXPECT_EQ(juntar({cf.Nome, cf.IdDest, cf.DestNome, cf.DestBairro, cf.DigestValueAutorizado}),
              "Pão & Cia Ltda|000.000.001-91|Ana||abc=|"_l1);
    EXPECT_EQ(cf.Itens.at(0).NumeroItem, 1);
}

// The digests were computed apart, over the UTF-8 text of the signed element. A document that was
// converted on its way has the same one, also where its texts grow beyond a limit in bytes.
TEST_F(Leitura, resumo_nao_depende_da_codificacao_do_arquivo) {
    const std::string nota = substituirAll(simples, "\n", "");
    const std::string texto = "<infAdic><infCpl>" + std::string(3000, '\xE7');
    const std::string longa = trocar(nota, "</infNFe>", texto + "</infCpl></infAdic></infNFe>");
    const std::string utf8 = fnParseToUtf8(nota), declaracao = "<?xml encoding=\"UTF-8\"?>";
    const std::string digest = "8RgLvAiCMECGVaxEVKste2bIVO8=",
                      digestLonga = "UYQsV0Le/A7OsdEanFEE/iGpam4=";
    for (const auto &[xml, esperado] : {
             std::pair{nota, digest},
             {"<?xml encoding=\"ISO-8859-1\"?>" + nota, digest},
             {utf8, digest},
             {"\xEF\xBB\xBF" + utf8, digest},
             {declaracao + utf8, digest},
             {longa, digestLonga},
             {declaracao + fnParseToUtf8(longa), digestLonga},
             // A character that ISO-8859-1 has not is hashed as the file holds it.
             {trocar(utf8, "Caneta azul", "Caneta \xE2\x82\xAC 1"),
              std::string("Ha8Htj1tQxt4rEll6ksY6v8XPfo=")},
         }) {
        CupomFiscal cf;
        EXPECT_EQ(ler(xml, "", cf), 1);
        EXPECT_EQ(std::string_view(cf.DigestValueAutorizado), esperado) << xml.substr(0, 60);
    }
}

TEST(LeituraXml, utf8_se_distingue_de_latin1) {
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

TEST_F(Leitura, cancelamento_tira_serie_e_numero_da_chave) {
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
