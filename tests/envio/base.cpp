// SPDX-License-Identifier: MIT
// Numbers to the letter, and XML from hostile bytes.
#include "apoio/Trecho.h"
#include "base/Decimal.h"
#include "base/Recusa.h"
#include "base/Xml.h"

#include <gtest/gtest.h>

using namespace zel::envio;

TEST(Decimais, sao_escritos_como_o_esquema_os_quer_e_nunca_arredondados) {
    const struct {
        const char *lido;
        int minimo, maximo;
        const char *escrito; // null: refused
    } kCasos[] = {
        {"10.", 2, 2, "10.00"},
        {".50", 2, 2, "0.50"},
        {"007.5", 2, 2, "7.50"},
        {"1.5000", 0, 4, "1.5"},
        {"1.5000", 2, 4, "1.50"},
        {"1.005", 2, 2, nullptr},
        {"0.12345", 0, 4, nullptr},
        {"3", 4, 4, "3.0000"},
        {"0", 2, 2, "0.00"},
        {"0.0000000001", 2, 10, "0.0000000001"},
        {"12.3400000000000", 2, 10, "12.34"},
        {"99999999999999", 2, 2, nullptr}, // 14 digits before the point
    };
    for (const auto &[lido, minimo, maximo, escrito] : kCasos) {
        const auto numero = Decimal::ler(lido);
        ASSERT_TRUE(numero) << lido;
        EXPECT_EQ(numero->texto(minimo, maximo, 13).value_or("recusado"),
                  escrito == nullptr ? "recusado" : escrito)
            << lido;
    }
    for (const char *texto : {"", ".", "-1", "+1", "1,5", "1e3", "1.2.3", "1 ", "0x1",
                              "1234567890123456", "0.12345678901", "999999999999999.9999999999"})
        EXPECT_FALSE(Decimal::ler(texto)) << texto;
}

TEST(Decimais, porcentagens_e_produtos_arredondam_meio_centavo_para_cima) {
    const struct {
        Centavos base;
        const char *taxa;
        Centavos valor;
    } kCasos[] = {{1000, "0.1000", 1},
                  {499, "0.1", 0},
                  {500, "0.1", 1},
                  {5556, "0.9", 50},
                  {5550, "0.9", 50},
                  {0, "18", 0},
                  {99999999999, "0.9", 900000000}};
    for (const auto &[base, taxa, valor] : kCasos)
        EXPECT_EQ(Decimal::ler(taxa)->porCentoDe(base), valor) << base << " x " << taxa;
    EXPECT_EQ(Decimal::ler("0.3500")->vezes(*Decimal::ler("39.90")), 1397);
    EXPECT_EQ(Decimal::ler("0.001")->vezes(*Decimal::ler("4.9999999999")), 0);
    EXPECT_EQ(Decimal::ler("0.001")->vezes(*Decimal::ler("5")), 1);
    EXPECT_FALSE(Decimal::ler("900000000000000")->vezes(*Decimal::ler("900000000000000")));
    EXPECT_EQ(textoDe(-5), "-0.05");
    EXPECT_EQ(Decimal::ler("1.5")->centavos(), 150);
    EXPECT_FALSE(Decimal::ler("1.005")->centavos());
}

namespace {

// `vezes` times, each "@" with its number.
std::string repetido(const std::string &parte, int vezes) {
    std::string texto;
    for (int i = 0; i < vezes; ++i)
        for (const char c : parte)
            texto += c == '@' ? std::to_string(i) : std::string(1, c);
    return texto;
}

} // namespace

TEST(Xml, de_bytes_hostis_nada_e_buscado_nem_cresce) {
    const std::string fundo = repetir("<a>", 500) + repetir("</a>", 500);
    const std::string demais = "<a" + repetido(" a@='1'", 257) + "/>";
    const struct {
        std::string bytes;
        const char *motivo;
    } kCasos[] = {
        {"", "vazio"},
        {std::string("<a>\0</a>", 8), "nulo"},
        {demais, "atributos"},
        {"<!-- ' --><b c='>' d=\"<'\"/>" + demais, "atributos"},
        {"<a><?p \" ?><![CDATA[']]>" + demais + "</a>", "atributos"},
        {"<a>" + repetido("<b xmlns:n@='urn:x'/>", 257) + "</a>", "espaço"},
        {"<?xml version='1.0' encoding='UTF-7'?><a/>", "UTF-7"},
        {"\xEF\xBB\xBF<?xml version='1.0' encoding = \"EBCDIC-CP-US\"?><a/>", "EBCDIC"},
        {"<?xml version='1.0' encoding='UTF-8' encoding='UTF-7'?><a/>", "UTF-7"},
        {"<?xml version='1.0' encoding='" + std::string(99, 'x') + "'?><a/>", "codificação"},
        {std::string("\xFF\xFE<\0a\0/\0>\0", 10), "nulo"},
        {std::string("\0\0", 2), "vazio"},
        {"<a>", "bem formado"},
        {"<a><b></a></b>", "bem formado"},
        {"texto", "bem formado"},
        {"<!DOCTYPE a [<!ENTITY e 'x'>]><a>&e;</a>", "DOCTYPE"},
        {"<!DOCTYPE a [<!ATTLIST a" + repetido(" a@ CDATA 'x'", 300) + ">]><a/>", "DOCTYPE"},
        {"<!DOCTYPE a SYSTEM 'file:///etc/passwd'><a/>", "DOCTYPE"},
        {"<!DOCTYPE a [<!ENTITY a 'aaaaaaaaaa'><!ENTITY b '&a;&a;&a;&a;'>]><a>&b;</a>", "DOCTYPE"},
        {fundo, ""},
        {std::string(kMaiorDocumento + 1, ' '), "16 MiB"},
    };
    for (const auto &[bytes, parte] : kCasos) {
        std::string motivo;
        EXPECT_FALSE(Documento::ler(bytes, motivo)) << bytes.substr(0, 60);
        EXPECT_TRUE(contem(motivo, parte));
    }
}

TEST(Xml, o_que_e_declarado_e_o_que_so_parece_demais_le_se) {
    const struct {
        std::string bytes, texto;
    } kCasos[] = {
        {"<?xml version='1.0' encoding='iso-8859-1'?><a>\xE9</a>", "é"},
        {"<?xml version=\"1.0\" encoding=\"windows-1252\"?><a>\x96</a>", "–"},
        {"<?xml version='1.0' encoding='US-ASCII' standalone='yes'?><a>e</a>", "e"},
        {"<?xml version='1.0'?><a>\xE9</a>", "é"},
        {"\xEF\xBB\xBF<?xml version='1.0' encoding='utf-8'?><a>é</a>", "é"},
        {"\xEF\xBB\xBF<a>é</a>", "é"},
        {"<a" + repetido(" a@='>'", 256) + ">x</a>", "x"},
        {"<a>" + repetido(" =''", 300) + "</a>", repetido(" =''", 300)},
        {"<!--" + repetido(" ''", 300) + "--><a>x</a>", "x"},
        {"<a>x" + repetido("<b c='1'/>", 300) + "</a>", "x"},
    };
    for (const auto &[bytes, texto] : kCasos) {
        std::string motivo;
        const auto lido = Documento::ler(bytes, motivo);
        ASSERT_TRUE(lido) << motivo << ": " << bytes.substr(0, 60);
        EXPECT_EQ(lido->raiz().texto(), texto);
    }
}

TEST(Xml, latin1_sem_declaracao_le_se_e_grava_se_em_utf8) {
    std::string motivo;
    const auto lido = Documento::ler("<a x='1'><b>P\xE3o &amp; \"caf\xE9\"</b><b/></a>", motivo);
    ASSERT_TRUE(lido) << motivo;
    EXPECT_EQ(lido->texto(), "<a x=\"1\"><b>Pão &amp; &quot;café&quot;</b><b/></a>");
    EXPECT_EQ(lido->textoComAspas(), "<a x=\"1\"><b>Pão &amp; \"café\"</b><b/></a>");
    EXPECT_EQ(lido->raiz().filhos("b")[1].caminho(), "a/b[2]");
    EXPECT_EQ(latin1DeUtf8("Pão"), "P\xE3o");
    EXPECT_FALSE(latin1DeUtf8("1 €"));

    auto novo = Documento::novo("NFe", kEspacoNfe);
    novo.raiz().acrescentar("xProd", "P&amp;B <x>");
    EXPECT_EQ(novo.texto(), "<NFe xmlns=\"http://www.portalfiscal.inf.br/nfe\">"
                            "<xProd>P&amp;amp;B &lt;x&gt;</xProd></NFe>");
    auto lote = Documento::novo("enviNFe", kEspacoNfe);
    lote.raiz().acrescentarCopia(novo.raiz());
    EXPECT_EQ(lote.raiz().filho("NFe/xProd").espaco(), kEspacoNfe);
}

TEST(Recusas, sao_todas_ditas_cada_uma_numa_linha) {
    Recusas recusas;
    EXPECT_TRUE(recusas.nenhuma());
    EXPECT_FALSE(recusas.juntar("det[1]/prod/NCM", "1905", "tem 8 dígitos"));
    recusas.juntar("pag", "", "falta");
    recusas.juntar("xProd", std::string(119, 'x') + "é", "longo");
    EXPECT_EQ(recusas.texto(), "det[1]/prod/NCM: \"1905\"; tem 8 dígitos\npag: falta\nxProd: \"" +
                                   std::string(119, 'x') + "\"; longo");
}
