// SPDX-License-Identifier: MIT
// The tag tree: read from text, changed, written out, and signed by its digest.
#include "ZEL_FelborFramework.h"
#include "apoio/Trecho.h"
#include "secao/Digest.h"
#include "secao/Parser.h"
#include "texto/Latin1.h"

#include <gtest/gtest.h>

using namespace zel;

namespace {

// What is stored of a section text; "refused" when it is malformed.
std::string lido(std::string_view texto) {
    ST_tagZEL raiz("r");
    return fnParseToTag_ZEL(raiz, texto) == ZEL_OK ? raiz.getEstrutura() : "refused";
}

} // namespace

TEST(TextoDeTags, texto_atributos_e_filhos_voltam_como_vieram) {
    const std::pair<std::string_view, std::string_view> casos[] = {
        {" solto ", ""},
        {"x<a>1</a> , <b><c> 2  3 </c></b>y", "<a>1</a><b><c> 2  3 </c></b>"},
        {"<a/><b /><c></c>", "<a></a><b></b><c></c>"},
        {"<a>x<b>1</b>y</a>", "<a><b>1</b></a>"}, // an element with children shows no text
        {"<a>&lt;&#10;&amp; > [b]</a>", "<a>&lt;&#10;&amp; > [b]</a>"},
        {"<a  x = \" 1  2 \"\ty='2' >1</a>", "<a x=\"1  2\" y=\"2\">1</a>"},
        {"<a x='1' y=\"2\"/>", "<a x=\"2\"></a>"}, // double quotes win wherever one follows
        {"<det nItem='1' y = '2' z/>", "<det nItem=\"1\" y=\"2\"></det>"},
        {"<a\nx=\"a=b\" y=\"\">1</a>", "<a x=\"a=b\" y=\"\">1</a>"}};
    for (const auto &[texto, estrutura] : casos)
        EXPECT_EQ(lido(texto), estrutura) << texto;
}

TEST(TextoDeTags, rasgado_e_recusado) {
    for (const std::string_view texto :
         {"<", "<a", "<a>", "<a>1<", "<a>1</", "<a>1</a", "<a x=\"1/>", "<a x='1/>", "<a>1</a><b>"})
        EXPECT_EQ(lido(texto), "refused") << texto;
}

TEST(TextoDeTags, nomes_errados_e_marcas_soltas_sao_recusados) {
    for (const std::string_view texto :
         {"<a>1</b>", "<a>1</A>", "<a>1</a >", "<a>1</ab>", "< a>1</a>", "<>1</>", "</a>",
          "<a><b></a></b>", "<a>1 < 2</a>", "<a x=1/>", "<a =\"1\"/>", "<a <b>1</a>",
          "<a x=\"<b\"/>", "<a/b>1</a/b>", "<?xml?><a/>", "<!x/>", "<a><!-- x --></a>"})
        EXPECT_EQ(lido(texto), "refused") << texto;
}

TEST(TextoDeTags, limites_valem_ate_o_ultimo_byte) {
    const auto texto = [](std::size_t nome, std::size_t atributo, std::size_t valor,
                          std::size_t niveis) {
        return repetir("<a>", niveis - 1) + "<" + repetir("n", nome) + " " +
               repetir("p", atributo) + "=\"" + repetir("v", valor) + "\"/>" +
               repetir("</a>", niveis - 1);
    };
    EXPECT_NE(lido(texto(39, 99, 99, 32)), "refused");
    for (const auto &longo : {texto(40, 99, 99, 32), texto(39, 100, 99, 32), texto(39, 99, 100, 32),
                              texto(39, 99, 99, 33)})
        EXPECT_EQ(lido(longo), "refused") << longo;
    // Text is cut instead, and a reference never in two.
    const std::string inicio = "<a>" + repetir("&#10;", 4999);
    EXPECT_EQ(lido(inicio + "abc</a><b>x</b>"), inicio + "a</a><b>x</b>");
    EXPECT_EQ(lido(inicio + "&amp;b</a>"), inicio + "&amp;</a>");
}

TEST(TextoDeTags, documento_e_achado_depois_do_cabecalho) {
    const std::string_view xml = "\xEF\xBB\xBF<?xml version=\"1.0\"?>\n<!-- a > b --><!----> "
                                 "<NFe><a>1</a></NFe>resto";
    ST_tagZEL no;
    std::size_t posicao = 0;
    ASSERT_EQ(fnProximaTag_ZEL(no, xml, posicao), ZEL_OK);
    EXPECT_EQ(no.toString(), "<NFe><a>1</a></NFe>");
    EXPECT_EQ(xml.substr(posicao), ">resto");
    for (const std::string_view mau : {"", "texto", "<!-- a", "<?xml", "<!DOCTYPE x><a/>", "<a/"}) {
        posicao = 0;
        EXPECT_EQ(fnProximaTag_ZEL(no, mau, posicao), ZEL_RECUSADO) << mau;
    }
}

// Searches that start again at every tag: minutes at this size, until the run's time limit.
TEST(TextoDeTags, hostil_e_lido_de_uma_passada) {
    for (const std::string &texto :
         {repetir("<", 3'000'000), "<a " + repetir("a='1' ", 300'000) + "/>",
          "<a " + repetir("=", 3'000'000) + ">", "<a>" + repetir("x<b/>", 50'000)})
        EXPECT_EQ(lido(texto) == "refused", texto.find('\'') == texto.npos);
}

TEST(Tag, filhos_entram_e_saem_no_seu_lugar) {
    const std::pair<int, std::string_view> casos[] = {{-1, "<a>1</a><b></b><x></x>"},
                                                      {0, "<x></x><a>1</a><b></b>"},
                                                      {1, "<a>1</a><x></x><b></b>"},
                                                      {5, "<a>1</a><b></b><x></x>"}};
    for (const auto &[indice, esperado] : casos) {
        ST_tagZEL no("r");
        no.addSubTag("a", "1").addSubTag("b", "");
        no.addSubTagAt(indice, ST_tagZEL("x"));
        EXPECT_EQ(no.getEstrutura(), esperado) << indice;
        EXPECT_TRUE(no.removerSubTag("a"));
        EXPECT_FALSE(no.removerSubTag("a"));
    }
    ST_tagZEL folha("f");
    EXPECT_FALSE(folha.removerSubTag("a"));
    folha.addSubTagAt(3, ST_tagZEL("unico"));
    EXPECT_EQ(folha.toString(), "<f><unico></unico></f>");
}

// Any byte more or less here and the authority refuses the digest. It was computed apart, over the
// UTF-8 text of infNFe with xmlns in front, attributes in double quotes and cEAN closed up.
TEST(Resumo, o_envoltorio_nao_o_muda) {
    constexpr std::string_view kNfe =
        "<NFe versao='3' xmlns='urn:n'><infNFe Id='NFe1' versao='3.10'><emit><xNome>Pão &amp; Cia"
        "</xNome></emit><det nItem='1'><cEAN> </cEAN><a>1</a></det></infNFe>"_l1;
    const std::string nfe(kNfe);
    const std::string assinatura = "<Signature><x>1</x></Signature></NFe>";
    for (const std::string &xml :
         {nfe + "</NFe>", nfe + assinatura, "<?xml version=\"1.0\"?>" + nfe + assinatura,
          "<enviNFe><idLote>1</idLote>" + nfe + assinatura + "</enviNFe>",
          "<enviNFe>" + nfe + "</NFe></enviNFe>"}) {
        std::string digest;
        EXPECT_EQ(fnGerarDigestValue(xml, digest), ZEL_OK) << xml;
        EXPECT_EQ(digest, "aB3004m426Iw2Z/cTPMz87k3TVQ=") << xml;
    }
    for (const std::string_view xml : {"", "<NFe></NFe>", "<?xml?><x/>", "<?xml?><NFe><a></NFe>"}) {
        std::string digest;
        EXPECT_EQ(fnGerarDigestValue(xml, digest), ZEL_RECUSADO) << xml;
    }
}
