// SPDX-License-Identifier: MIT
// Documents as a person reads them.
#include "Documento400.h"

#include "base/Texto.h"
#include "documento/Conferencia.h"
#include "documento/Pagina.h"

#include <gtest/gtest.h>
#include <sstream>

using namespace zel;
using namespace zel::envio;
using namespace zel::envio::ensaio;

namespace {

const std::string kRegua = std::string(78, '-') + '\n';

// A line each: text at the left, and what stands at the right edge after a "~".
std::string pagina(const std::string &linhas) {
    std::string texto, linha;
    for (std::istringstream entrada(linhas); std::getline(entrada, linha);) {
        const std::size_t barra = linha.find('~');
        if (linha == "-") {
            texto += kRegua;
            continue;
        }
        if (barra != linha.npos) {
            const std::string direita = linha.substr(barra + 1);
            linha.resize(barra);
            linha += std::string(78 - caracteres(linha) - caracteres(direita), ' ') + direita;
        }
        texto += linha + '\n';
    }
    return texto;
}

} // namespace

TEST(Mostra, nota_de_400_com_tudo) {
    Documento proc = Documento::novo("nfeProc", kEspacoNfe);
    proc.raiz().acrescentarCopia(documento400({{"<dest><CPF>12345678909</CPF>",
                                                "<dest><CPF>12345678909</CPF><xNome>Ana</xNome>"}},
                                              false)
                                     .raiz());
    No info = proc.raiz().acrescentar("protNFe").acrescentar("infProt");
    info.acrescentar("dhRecbto", "2026-09-21T10:00:05-03:00");
    info.acrescentar("nProt", "143260000000001");
    info.acrescentar("cStat", "100");
    info.acrescentar("xMotivo", "Autorizado o uso da NF-e");
    EXPECT_EQ(mostrar(proc), pagina(R"(Padaria & Cia
CNPJ 12.345.678/0001-95, IE 0963233556, IM 123, Regime normal
Rua das Flores, 1, Centro, Porto Alegre - RS, CEP 90010000
-
NFC-e série 1, número 42, emitida em 21/09/2026 10:00:00 -03:00
Venda, ambiente de homologação, sem valor fiscal, leiaute 4.00
Consumidor: CPF 123.456.789-09, Ana
-
1. 101 Café em grãos
    NCM 09012100, CFOP 5102, GTIN 7891000315507
    2 UN x 10,00~20,00
    Desconto~-1,00
    Acréscimo~0,50
    ICMS 00: 17,00% de 19,50~3,32
    FCP: 2,00%~0,39
    PIS 01: 1,65% de 19,50~0,32
    COFINS 01: 7,60% de 19,50~1,48
    IBS e CBS 000, classe 000001: base 13,99
    IBS do estado: 0,10% de 13,99~0,01
    CBS: 0,90% de 13,99~0,13
2. 7 Queijo
    NCM 04069010, CEST 1702300, CFOP 5403
    0,35 KG x 39,90~13,97
    ICMS 10: 17,00% de 13,97~2,37
    ICMS ST: 17,00% de 19,56~0,96
    PIS 06
    COFINS 06
    IBS e CBS 200, classe 200034: base 11,60
    CBS: 0,90% reduzida a 0,36% de 11,60~0,04
3. S1 Conserto
    NCM 00, CFOP 5933
    1 UN x 10,00~10,00
    ISSQN 14.01: 5,00% de 10,00~0,50
    PIS 01: 1,65% de 10,00~0,17
    COFINS 01: 7,60% de 10,00~0,76
    IBS e CBS 000, classe 000001: base 8,57
    IBS do estado: 0,10% de 8,57~0,01
    CBS: 0,90% de 8,57~0,08
-
Produtos~33,97
Serviços~10,00
Descontos~-1,00
Acréscimos~0,50
ICMS ST~0,96
Total~44,43
    ICMS, base 33,47~5,69
    FCP~0,39
    PIS~0,32
    COFINS~1,48
    ISSQN, base 10,00~0,50
    IBS do estado, base 34,16~0,02
    CBS, base 34,16~0,25
-
PIX dinâmico~30,00
Dinheiro~20,00
Troco~-5,57
-
Informações: Volte sempre
Chave: 4326 0912 3456 7800 0195 6500 1000 0000 4211 7102 5458
Não está assinada
Consulta pela chave: www.sefaz.rs.gov.br/nfce/consulta
QR code:
https://www.sefaz.rs.gov.br/NFCE/NFCE-COM.aspx?p=43260912345678000195650010000
000421171025458|3|2
-
Protocolo
  Número: 143260000000001
  Recebido em: 21/09/2026 10:00:05 -03:00
  Resposta: 100
  Motivo: Autorizado o uso da NF-e
)"));
}

// As the till writes it: layout 3.10, a payment in a group of its own, a consumer from abroad,
// numbers as the application gave them.
TEST(Mostra, nota_do_caixa) {
    const Documento nota = lido(
        "<NFe xmlns='http://www.portalfiscal.inf.br/nfe'><infNFe Id='NFeX' versao='3.10'><ide>"
        "<natOp>Venda</natOp><serie>1</serie><nNF>7</nNF><dhEmi>2026-09-21T10:00:00-03:00</dhEmi>"
        "<tpEmis>9</tpEmis><tpAmb>1</tpAmb><dhCont>2026-09-21T09:58:00-03:00</dhCont><xJust>Sem "
        "conexão</xJust></ide><emit><CNPJ>12345678000195</CNPJ><xNome>Bar</xNome><CRT>1</CRT></"
        "emit>"
        "<dest><idEstrangeiro>AB12</idEstrangeiro></dest><det "
        "nItem='1'><prod><cProd>1</cProd><cEAN> "
        "</cEAN><xProd>Suco</xProd><qCom>10.</qCom><uCom>L</uCom><vUnCom>.5</vUnCom>"
        "<vProd>1234567.5</vProd></prod><imposto><ICMS><ICMSSN102><CSOSN>102</CSOSN></ICMSSN102>"
        "</ICMS><PIS><PISQtde><CST>03</CST><qBCProd>10.0000</qBCProd><vAliqProd>0.1000</vAliqProd>"
        "<vPIS>1.00</vPIS></PISQtde></PIS></imposto></det><total><ICMSTot><vNF>1234567.50</vNF>"
        "</ICMSTot></total><pag><tPag>03</tPag><vPag>1234567.00</vPag><card><CNPJ>11222333000181"
        "</CNPJ><tBand>01</tBand><cAut>A1</cAut></card></pag><pag><tPag>98</tPag><vPag>0.50</vPag>"
        "</pag></infNFe></NFe>");
    EXPECT_EQ(mostrar(nota), pagina(R"(Bar
CNPJ 12.345.678/0001-95, Simples Nacional
-
NFC-e série 1, número 7, emitida em 21/09/2026 10:00:00 -03:00
Venda, ambiente de produção, leiaute 3.10
Emitida em contingência off-line
Contingência desde 21/09/2026 09:58:00 -03:00: Sem conexão
Consumidor: estrangeiro AB12
-
1. 1 Suco
    10 L x 0,50~1.234.567,50
    ICMS 102
    PIS 03: 0,10 de 10,00~1,00
-
Total~1.234.567,50
-
Cartão de crédito, CNPJ 11.222.333/0001-81, bandeira 01, autorização A1
~1.234.567,00
98~0,50
-
Chave: X
)"));
}

TEST(Mostra, pedidos_eventos_e_respostas) {
    const std::string chave = chaveDoDocumento();
    const struct {
        std::string xml;
        std::string texto;
    } kCasos[] = {
        {"<EnvioEvento><ModeloDocumento>NFCe</ModeloDocumento><Evento><NtfCnpjEmissor>"
         "12345678000195</NtfCnpjEmissor><NtfNumero>7</NtfNumero><NtfSerie>1</NtfSerie>"
         "<tpAmb>3</tpAmb><EveInf><EveDh>2026-09-21T10:05:00</EveDh><EveFusoHorario>-03:00"
         "</EveFusoHorario><Evedet><EvexJust>Cancelamento de NFCe</EvexJust></Evedet></EveInf>"
         "</Evento></EnvioEvento>",
         "Pedido de cancelamento, do caixa\n  Emitente: CNPJ 12.345.678/0001-95\n"
         "  Ambiente: homologação, sem valor fiscal\n  Série: 1\n  Número: 7\n"
         "  Momento: 21/09/2026 10:05:00\n  Fuso: -03:00\n"
         "  Justificativa: Cancelamento de NFCe\n"},
        {"<Inutilizacao><CnpjEmissor>12345678000195</CnpjEmissor><tpAmb>1</tpAmb>"
         "<NumeroInicial>8</NumeroInicial><NumeroFinal>9</NumeroFinal><Serie>1</Serie>"
         "<Justificativa>Pulados</Justificativa></Inutilizacao>",
         "Pedido de inutilização, do caixa\n  Emitente: CNPJ 12.345.678/0001-95\n"
         "  Ambiente: produção\n  Série: 1\n  Do número: 8\n  Ao número: 9\n"
         "  Justificativa: Pulados\n"},
        {"<Consulta><tpAmb>1</tpAmb><NumeroInicial>0</NumeroInicial><NumeroFinal>0</NumeroFinal>"
         "<Serie></Serie><DataEmissaoInicial>2026-09-01</DataEmissaoInicial></Consulta>",
         "Pedido de consulta, do caixa\n  Ambiente: produção\n  De: 01/09/2026\n"},
        {lote("envEvento", "1.00", cancelamento()),
         "Evento\n  Tipo: Cancelamento\n  Emitente: CNPJ 12.345.678/0001-95\n"
         "  Ambiente: homologação, sem valor fiscal\n  Chave: " +
             chaveLida(chave) +
             "\n  Momento: 21/09/2026 10:05:00 -03:00\n  Protocolo da nota: 135260000000001\n"
             "  Justificativa: Cliente desistiu da compra\n"},
        {inutilizacao(), "Inutilização\n  Emitente: CNPJ 12.345.678/0001-95\n"
                         "  Ambiente: homologação, sem valor fiscal\n  Ano: 26\n  Série: 1\n"
                         "  Do número: 8\n  Ao número: 9\n"
                         "  Justificativa: Numeros pulados pelo caixa\n"},
        {"<consSitNFe><tpAmb>1</tpAmb><chNFe>" + chave + "</chNFe></consSitNFe>",
         "Consulta\n  Ambiente: produção\n  Chave: " + chaveLida(chave) + '\n'},
        {"<procEventoNFe><evento><infEvento><chNFe>X</chNFe></infEvento></evento><retEvento>"
         "<infEvento><cStat>135</cStat></infEvento></retEvento></procEventoNFe>",
         "Evento\n  Chave: X\n" + kRegua + "Evento\n  Resposta: 135\n"},
        {"<retConsStatServ><tpAmb>1</tpAmb><cStat>107</cStat><a><b>c</b></a></retConsStatServ>",
         "retConsStatServ/tpAmb: 1\nretConsStatServ/cStat: 107\nretConsStatServ/a/b: c\n"},
    };
    for (const auto &[xml, texto] : kCasos)
        EXPECT_EQ(mostrar(lido(xml)), texto);
}

// Long words, wide labels, moments and keys that are none, characters that a terminal obeys.
TEST(Mostra, nada_passa_da_margem_nem_comanda_o_terminal) {
    const std::string longo(500, 'x'), acentos = repetir("çã ", 300);
    const Documento hostil =
        documento400({{"Padaria &amp; Cia", longo + " &#x9b;2J" + acentos},
                      {"<vProd>20.00<", "<vProd>" + longo + '<'},
                      {"Café em grãos", acentos + longo + acentos},
                      {"<CPF>12345678909<", "<CPF>" + acentos + '<'},
                      {"<dhEmi>2026-09-21T10:00:00-03:00<", "<dhEmi>2026-09-2çT10:00:00-03:00<"},
                      {"NFCE-COM.aspx", acentos}},
                     false, std::string(44, '1'));
    const std::string texto = mostrar(hostil);
    EXPECT_TRUE(ehUtf8(texto));
    EXPECT_FALSE(contem(texto, "\xC2\x9B"));
    std::string linha;
    for (std::istringstream entrada(texto); std::getline(entrada, linha);)
        EXPECT_LE(caracteres(linha), 78U) << linha;
}
