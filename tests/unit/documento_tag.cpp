#include "documento/ZEL_Tag.h"

#include <gtest/gtest.h>

using namespace zel;

namespace {

// A list of children named by single letters.
ST_tagZEL lista(std::string_view nomes) {
    ST_tagZEL no("r");
    no.subTags.emplace();
    for (const char nome : nomes)
        no.addSubTag(ST_tagZEL(std::string(1, nome)));
    return no;
}

std::string nomes(const ST_tagZEL &no) {
    std::string texto;
    for (const auto &filho : *no.subTags)
        texto += filho.nome;
    return texto;
}

} // namespace

// An element shortened or left out, a value printed where children stand, escaping done twice.
TEST(Tag, plain_form_writes_every_element_in_full) {
    ST_tagZEL no("det", "x &amp; y");
    no.setValor(""); // clears nothing
    EXPECT_EQ(no.toString(), "<det>x &amp; y</det>");
    EXPECT_EQ(no.getEstrutura(), "");
    no.addPropriedade("nItem", "1").addPropriedade("b", "2");
    no.addSubTag("a", "1").addSubTag("vazio", "").addSubTag(lista(""));
    EXPECT_EQ(no.getSubTag("A"), nullptr);
    EXPECT_EQ(no.valorDe("a"), "1");
    EXPECT_EQ(no.getEstrutura(), "<a>1</a><vazio></vazio><r></r>");
    EXPECT_EQ(no.toString(), "<det nItem=\"1\" b=\"2\">" + no.getEstrutura() + "</det>");
    EXPECT_TRUE(no.removerSubTag("a"));
    EXPECT_FALSE(no.removerSubTag("a"));
    EXPECT_EQ(no.getEstrutura(), "<vazio></vazio><r></r>");
}

// Off by one at either end of the list.
TEST(Tag, children_are_inserted_by_index) {
    const struct {
        int indice;
        std::string_view inserido; // x into "ab"
    } casos[] = {{-2, "abx"}, {-1, "abx"}, {0, "xab"}, {1, "axb"}, {2, "abx"}, {5, "abx"}};
    for (const auto &caso : casos) {
        ST_tagZEL no = lista("ab");
        no.addSubTagAt(caso.indice, ST_tagZEL("x"));
        EXPECT_EQ(nomes(no), caso.inserido) << caso.indice;
    }
    ST_tagZEL folha("f");
    EXPECT_FALSE(folha.removerSubTag("a"));
    folha.addSubTagAt(3, ST_tagZEL("unico"));
    EXPECT_EQ(nomes(folha), "unico");
}

// Any byte more or less here and the authority refuses the digest.
TEST(Tag, canonical_form_carries_the_namespace_down) {
    ST_tagZEL raiz("NFe");
    EXPECT_EQ(raiz.canonicalizeNFSubTree(), std::nullopt);
    ST_tagZEL assinado("infNFe", "nunca escrito");
    assinado.addPropriedade("Id", "NFe1").addSubTag(lista("a").addSubTag("b", "x> <y> z <"));
    raiz.addPropriedade("versao", "3").addPropriedade("xmlns", "urn:n");
    raiz.addPropriedade("xmlns", "urn:outro").addSubTag(assinado).addSubTag("Signature", "s");
    EXPECT_EQ(raiz.canonicalizeNFSubTree(), "<infNFe xmlns=\"urn:n\" Id=\"NFe1\">"
                                            "<r><a></a><b>x><y> z <</b></r></infNFe>");
}

TEST(Tag, indented_form_gives_every_element_its_line) {
    ST_tagZEL ide("ide");
    ide.addSubTag("cUF", "43");
    EXPECT_EQ(ide.toPDF(), "<ide>\n    <cUF>43</cUF>\n</ide>");
    ide.addSubTag(lista(""));
    EXPECT_EQ(ide.toPDF(1),
              "    <ide>\n        <cUF>43</cUF>\n        <r>\n        </r>\n    </ide>");
}
