// SPDX-License-Identifier: MIT
// zel conferir over documents: one that the library wrote, with one fault at a time.
#include "Loja.h"

#include "apoio/Funcoes.h"

#include <gtest/gtest.h>

namespace {

// The document of a sale, and a second one signed and with its QR code, as a sending component
// leaves it: what is signed and hashed is made up.
class Documento : public testing::Test {
protected:
    static std::string vendido() {
        const Loja loja;
        loja.noCaixa([](const Funcoes &caixa) { Loja::vender(caixa, 5); });
        return loja.ler("documentosEnvio.xml");
    }

    static std::string emHexa(const std::string &texto) {
        std::string hexa;
        for (const char c : texto) {
            hexa += "0123456789abcdef"[static_cast<unsigned char>(c) >> 4];
            hexa += "0123456789abcdef"[static_cast<unsigned char>(c) & 15];
        }
        return hexa;
    }

    static std::string assinado(std::string texto) {
        const std::string digest = "MTIzNDU2Nzg5MDEyMzQ1Njc4OTA=";
        const std::string suplemento = "<infNFeSupl><qrCode><![CDATA[http://exemplo/qr?chNFe=" +
                                       texto.substr(texto.find("Id=\"NFe") + 7, 44) +
                                       "&nVersao=100&tpAmb=1&cDest=12345678909" +
                                       "&dhEmi=" + emHexa(entre(texto, "<dhEmi>", "<")) +
                                       "&vNF=" + entre(texto, "<vNF>", "<") +
                                       "&vICMS=0.00&digVal=" + emHexa(digest) +
                                       "&cIdToken=000001&cHashQRCode=" + std::string(40, 'a') +
                                       "]]></qrCode></infNFeSupl><Signature><DigestValue>" +
                                       digest + "</DigestValue></Signature>";
        return texto.insert(texto.find("</NFe>"), suplemento);
    }

    static Resultado conferir(const Loja &loja, std::string_view texto,
                              const Argumentos &mais = {}) {
        loja.gravar("nota.xml", texto);
        Argumentos argumentos{"conferir", "--json", loja / "nota.xml"};
        argumentos.insert(argumentos.end(), mais.begin(), mais.end());
        return rodar(argumentos);
    }
};

const struct {
    std::string_view de, para, esperados;
} kCasos[] = {
    {"<xNome>Padaria", "<xNome>P\xe3o & Cia", "erro xml-malformado"},
    {"</ide>", "", "erro xml-malformado"},
    {"</NFe>", "</NFe><NFe/>", "erro xml-malformado"},
    {"<NFe ", "<!DOCTYPE NFe [<!ENTITY a 'b'>]><NFe ", "erro xml-malformado"},
    {"versao=\"3.10\"", "versao=\"4.00\"", "aviso leiaute-outro"},
    {"Id=\"NFe", "Id=\"NF", "erro chave-forma, erro qrcode-difere"},
    {"<serie>1<", "<serie>2<", "erro chave-difere"},
    {"<tpEmis>1<", "<tpEmis>9<", "erro chave-difere"},
    {"<dhEmi>20", "<dhEmi>200", "erro chave-difere, erro qrcode-difere"},
    {"<CNPJ>11222333000181<", "<CNPJ>11222333000180<", "erro chave-difere, erro cnpj-digito"},
    {"<CPF>12345678909<", "<CPF>12345678900<", "erro cpf-digito, erro qrcode-difere"},
    {"<UF>SP<", "<UF>RJ<", "erro municipio-uf, erro uf-codigo, aviso cep-uf"},
    {"<cMunFG>3550308<", "<cMunFG>3550309<", "erro municipio-digito"},
    {"<IE>110042490114</IE>", "", "erro elemento-ausente"},
    {"<CRT>1<", "<CRT>3<", "erro crt-item"},
    {"<cEAN> <", "<cEAN>7891000100104<", "erro gtin-digito"},
    {"<cEAN> <", "<cEAN>7891000100103<", ""},
    {"<NCM>", "<NCM>1", "aviso ncm-tamanho"},
    {"<NCM>19059090<", "<NCM>99059090<", "aviso ncm-inexistente"},
    {"<NCM>19059090<", "<NCM>19009090<", "aviso ncm-inexistente"},
    {"<NCM>19059090<", "<NCM>39231090<", "aviso ncm-fabrica"},
    {"<CFOP>5102<", "<CFOP>6102<", "erro cfop-destino"},
    {"<idDest>1<", "<idDest>2<", "erro cfop-destino, erro cfop-destino"},
    {"<xProd>Refr", "<xProd> Refr", "erro valor-brancos"},
    {"<xProd>Refrigerante<", "<xProd>  <", "erro valor-brancos"},
    {"<vUnCom>8.50</vUnCom><vProd>17.00<", "<vUnCom>0.00</vUnCom><vProd>0.00<",
     "erro soma-difere, aviso valor-zero"},
    {"<tpAmb>1<", "<tpAmb>2<",
     "erro qrcode-difere, aviso homologacao-item, aviso homologacao-consumidor"},
    {"o Paulo</xMun>", "o Pedro</xMun>", "aviso municipio-nome"},
    {"<cMun>3550308<", "<cMun>3509502<", "aviso municipio-nome"},
    {"<CEP>01001000<", "<CEP>20040020<", "aviso cep-uf"},
    {"-03:00</dhEmi>", "-00:00</dhEmi>", "erro qrcode-difere, aviso fuso-estranho"},
    {"<NCM>", "<NCM>x</NCM><NCM>", "aviso ncm-tamanho"},
    {"<qCom>2.0000<", "<qCom>0.0000<", "erro item-valor, aviso quantidade-zero"},
    {"<vUnCom>8.50<", "<vUnCom>9.50<", "erro item-valor"},
    {"<vDesc>1.70<", "<vDesc>1.60<", "erro soma-difere"},
    {"<vST>0.00<", "<vST>0.10<", "erro soma-difere, erro total-formula, aviso total-substituicao"},
    {"<vNF>29.76<", "<vNF>30.77<", "erro total-formula, erro pagamento-difere, erro qrcode-difere"},
    {"<vPag>29.76<", "<vPag>29.77<", "erro pagamento-difere"},
    {"<ICMSTot>", "<ISSQNTot></ISSQNTot><Outro>", "erro xml-malformado"},
    {"nVersao=100", "nVersao=200", "erro qrcode-forma"},
    {"&tpAmb=1", "", "erro qrcode-forma"},
    {"&tpAmb=1", "&tpAmb=2", "erro qrcode-difere"},
    {"cDest=123", "cDest=124", "erro qrcode-difere"},
    {"cHashQRCode=aa", "cHashQRCode=a", "erro qrcode-forma"},
    {"<DigestValue>M", "<DigestValue>N", "erro qrcode-difere"},
};

TEST_F(Documento, uma_falta_um_achado) {
    const Loja loja;
    const std::string inteiro = assinado(vendido());
    EXPECT_EQ(conferir(loja, inteiro).achados(), "");
    for (const auto &[de, para, esperados] : kCasos) {
        const Resultado resultado = conferir(loja, trocar(inteiro, de, para));
        EXPECT_EQ(resultado.achados(), esperados) << para << "\n" << resultado.saida;
        // The consumer stands in none of them.
        for (const std::string_view dado : {"Maria", "12345678900", "12345678909"})
            EXPECT_FALSE(contem(resultado.saida, dado)) << para;
    }
}

// Documents are one line: the place is given by characters, and by lines where there are some.
TEST_F(Documento, lugar_do_erro) {
    const Loja loja;
    EXPECT_TRUE(contem(conferir(loja, "<NFe>\xe3<b</NFe>").saida, "no caracter 9)"));
    EXPECT_TRUE(contem(conferir(loja, "<NFe>\n<b>\n</c></NFe>").saida, R"("linha":3)"));
}

// The key's check digit alone: every other digit is compared with an element.
TEST_F(Documento, digito_da_chave) {
    const Loja loja;
    std::string texto = vendido();
    char &digito = texto[texto.find("Id=\"NFe") + 7 + 43];
    digito = digito == '9' ? '0' : static_cast<char>(digito + 1);
    EXPECT_EQ(conferir(loja, texto).achados(),
              "erro chave-digito, erro chave-difere, nota sem-assinatura");
}

TEST_F(Documento, codificacao_declarada) {
    const Loja loja;
    const std::string texto = vendido();
    ASSERT_TRUE(contem(texto, "S\xe3o"));
    for (const auto &[declaracao, esperado] :
         {std::pair("", "nota sem-assinatura"),
          {R"(<?xml version="1.0" encoding="ISO-8859-1"?>)", "nota sem-assinatura"},
          {R"(<?xml version="1.0" encoding="UTF-8"?>)", "erro xml-malformado"}})
        EXPECT_EQ(conferir(loja, declaracao + texto).achados(), esperado);
}

TEST_F(Documento, outros_arquivos) {
    const Loja loja;
    loja.noCaixa([](const Funcoes &caixa) {
        Loja::vender(caixa, 5);
        ASSERT_EQ(caixa.tCFCancelar_ZEL("", "", "", "", ""), 2);
    });
    const std::string pedido = loja.ler("documentosEnvio.xml");
    std::string trocado = pedido;
    trocado.replace(trocado.find("<ChaAcesso>") + 11, 2, "99");
    for (const auto &[texto, esperado] :
         {std::pair(loja.ler("ZEL_Framework.xml"), "nota documento-outro"),
          {pedido, "nota documento-outro"},
          {trocado, "erro chave-digito, nota documento-outro"},
          {"", "erro xml-malformado"}})
        EXPECT_EQ(conferir(loja, texto).achados(), esperado);
}

// A schema of a few lines in place of the published one.
constexpr std::string_view kEsquema =
    R"(<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema" elementFormDefault="qualified"
 xmlns="http://www.portalfiscal.inf.br/nfe" targetNamespace="http://www.portalfiscal.inf.br/nfe">
<xs:element name="NFe"><xs:complexType><xs:sequence><xs:element name="infNFe">
<xs:complexType><xs:sequence><xs:element name="xNome" maxOccurs="9">
<xs:simpleType><xs:restriction base="xs:string"><xs:maxLength value="5"/></xs:restriction></xs:simpleType>
</xs:element><xs:element name="natOp" maxOccurs="9">
<xs:simpleType><xs:restriction base="xs:string"><xs:enumeration value="Venda"/></xs:restriction></xs:simpleType>
</xs:element><xs:element name="cEAN" minOccurs="0">
<xs:simpleType><xs:restriction base="xs:string"><xs:pattern value="[0-9]{0}|[0-9]{8}"/></xs:restriction></xs:simpleType>
</xs:element></xs:sequence></xs:complexType></xs:element>
<xs:element name="Signature"/></xs:sequence></xs:complexType></xs:element></xs:schema>)";

TEST_F(Documento, esquema) {
    const Loja loja;
    const auto conferida = [&](const std::string &dentro) {
        return conferir(loja,
                        R"(<NFe xmlns="http://www.portalfiscal.inf.br/nfe"><infNFe>)" + dentro +
                            "</infNFe></NFe>",
                        {"--esquema", loja.diretorio()});
    };
    EXPECT_TRUE(contem(conferida("<xNome>Eva</xNome>").achados(), "erro esquema-indisponivel"));
    loja.gravar("nfe_v3.10.xsd", kEsquema);
    const std::pair<std::string, std::string_view> casos[] = {
        {"<xNome>Z\xe9</xNome><natOp>Venda</natOp>", ""},
        // What the sending component mends is a note; another wrong code is the till's fault.
        {"<xNome>Z</xNome><natOp>Venda</natOp><cEAN> </cEAN>", "nota esquema"},
        {"<xNome>Z</xNome><natOp>Venda</natOp><cEAN>12</cEAN>", "erro esquema"},
    };
    for (const auto &[dentro, esperado] : casos) {
        const std::string achados = conferida(dentro).achados();
        EXPECT_TRUE(contem(achados, esperado));
        EXPECT_EQ(contem(achados, "esquema"), !esperado.empty());
    }
    const Resultado segredo =
        conferida("<xNome>Joana Segredo</xNome><natOp>Troca</natOp><natOp>Troca</natOp>");
    EXPECT_TRUE(contem(segredo.achados(), "erro esquema, erro esquema"));
    EXPECT_TRUE(contem(segredo.saida, "(2 vezes)"));
    EXPECT_TRUE(contem(segredo.saida, "Troca"));
    EXPECT_FALSE(contem(segredo.saida, "Joana"));
}

} // namespace
