#include "ZEL_FelborFramework.h"
#include "documento/ZEL_Parser.h"

#include <gtest/gtest.h>

using namespace zel;

namespace {

std::string repetir(std::string_view parte, std::size_t vezes) {
    std::string texto;
    while (vezes-- > 0)
        texto += parte;
    return texto;
}

// What is stored of a section text; "refused" when it is malformed.
std::string lido(std::string_view texto) {
    ST_tagZEL raiz("r");
    return fnParseToTag_ZEL(raiz, texto) == ZEL_OK ? raiz.getEstrutura() : "refused";
}

} // namespace

// Text, attributes or children lost between what is given and what is stored.
TEST(Parser, a_sequence_of_elements_comes_back_as_given) {
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

// Malformed text accepted, or read past its end.
TEST(Parser, malformed_text_is_refused) {
    for (const std::string_view texto : {"<",
                                         "<a",
                                         "<a>",
                                         "<a>1<",
                                         "<a>1</",
                                         "<a>1</a",
                                         "<a>1</b>",
                                         "<a>1</A>",
                                         "<a>1</a >",
                                         "<a>1</ab>",
                                         "< a>1</a>",
                                         "<>1</>",
                                         "</a>",
                                         "</>",
                                         "<a><b></a></b>",
                                         "<a>1 < 2</a>",
                                         "<a>1</a><b>",
                                         "<?xml version=\"1.0\"?><a/>",
                                         "<!-- x --><a/>",
                                         "<a><!-- x --></a>",
                                         "<a x=1/>",
                                         "<a x=\"1/>",
                                         "<a x='1/>",
                                         "<a =\"1\"/>",
                                         "<a <b>1</a>",
                                         "<a x=\"<b\"/>",
                                         "<a/b>1</a/b>"})
        EXPECT_EQ(lido(texto), "refused") << texto;
}

TEST(Parser, limits_hold_to_the_last_byte) {
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
}

// A reference cut in two at the limit would leave a document that is not well-formed.
TEST(Parser, text_is_kept_up_to_5000_characters) {
    const std::string inicio = "<a>" + repetir("&#10;", 4999);
    EXPECT_EQ(lido(inicio + "abc</a><b>x</b>"), inicio + "a</a><b>x</b>");
    EXPECT_EQ(lido(inicio + "&amp;b</a>"), inicio + "&amp;</a>");
}

TEST(Parser, one_document_is_read_behind_its_head) {
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
TEST(Parser, hostile_text_is_read_in_one_pass) {
    for (const std::string &texto :
         {repetir("<", 3'000'000), "<a " + repetir("a='1' ", 300'000) + "/>",
          "<a " + repetir("=", 3'000'000) + ">", "<a>" + repetir("x<b/>", 50'000)})
        EXPECT_EQ(lido(texto) == "refused", texto.find('\'') == texto.npos);
}
