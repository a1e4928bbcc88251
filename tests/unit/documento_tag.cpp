#include "documento/ZEL_Tag.h"

#include <gtest/gtest.h>

using namespace zel;

namespace {

// A list of children named by single letters.
ST_tagZEL lista(std::string_view nomes) {
    ST_tagZEL no("r");
    no.subTags.emplace();
    for (const char nome : nomes) no.addSubTag(ST_tagZEL(std::string(1, nome)));
    return no;
}

std::string nomes(const ST_tagZEL &no) {
    std::string texto;
    for (const auto &filho : *no.subTags) texto += filho.nome;
    return texto;
}

} // namespace

// An element shortened or left out, a value printed where children stand, escaping done twice.
TEST(Tag, plain_form_writes_every_element_in_full) {
    EXPECT_EQ(ST_tagZEL("xNome", "").toString(), "<xNome></xNome>");
    EXPECT_EQ(ST_tagZEL("a", "x &amp; y").toString(), "<a>x &amp; y</a>");
    ST_tagZEL no("det", "valor");
    no.addPropriedade("nItem", "1").addPropriedade("b", "2");
    no.addSubTag("a", "1").addSubTag("vazio", "").addSubTag(lista("b"));
    EXPECT_EQ(no.toString(), "<det nItem=\"1\" b=\"2\"><a>1</a><vazio></vazio><r><b></b></r></det>");
    EXPECT_EQ(no.getEstrutura(), "<a>1</a><vazio></vazio><r><b></b></r>");
    EXPECT_TRUE(no.ehGrupo);

    ST_tagZEL vazio("g", "escondido");
    vazio.subTags.emplace();
    EXPECT_EQ(vazio.toString(), "<g></g>");
    EXPECT_EQ(ST_tagZEL("g", "x").getEstrutura(), "");
}

TEST(Tag, an_empty_text_never_clears_a_value) {
    ST_tagZEL no("a", "");
    EXPECT_FALSE(no.valor.has_value());
    no.setValor("1");
    no.setValor("");
    EXPECT_EQ(no.valor, "1");
}

TEST(Tag, clone_leaves_children_and_attributes_behind) {
    ST_tagZEL no = newST_tagZEL(true, "a");
    no.setValor("v");
    no.tamanhoMinimo = 2;
    no.tamanhoMaximo = 9;
    no.addPropriedade("p", "1").addSubTag("b", "1");
    const ST_tagZEL copia = no.clone();
    EXPECT_EQ(copia.toString(), "<a>v</a>");
    EXPECT_TRUE(copia.obrigatorio && copia.ehGrupo);
    EXPECT_EQ(copia.tamanhoMinimo, 2);
    EXPECT_EQ(copia.tamanhoMaximo, 9);
}

// Off by one at either end of the list.
TEST(Tag, children_are_inserted_and_taken_out_by_index) {
    const struct {
        int indice;
        std::string_view inserido; // x into "ab"
        std::string_view removido; // from "ab"
    } casos[] = {{-2, "abx", "ab"}, {-1, "abx", "a"}, {0, "xab", "b"},
                 {1, "axb", "a"},   {2, "abx", "ab"}, {5, "abx", "ab"}};
    for (const auto &caso : casos) {
        ST_tagZEL no = lista("ab");
        no.addSubTagAt(caso.indice, ST_tagZEL("x"));
        EXPECT_EQ(nomes(no), caso.inserido) << caso.indice;
        no = lista("ab");
        EXPECT_EQ(no.removerSubTag(caso.indice).has_value(), caso.removido != "ab");
        EXPECT_EQ(nomes(no), caso.removido) << caso.indice;
    }
    ST_tagZEL folha("f");
    EXPECT_FALSE(folha.removerSubTag(0) || folha.removerSubTag(-1) || folha.removerSubTag("a"));
    ST_tagZEL vazia = lista("");
    EXPECT_FALSE(vazia.removerSubTag(-1).has_value());
    folha.addSubTagAt(3, ST_tagZEL("unico"));
    EXPECT_EQ(folha.removerSubTag(0)->nome, "unico");
    EXPECT_TRUE(folha.subTags->empty());
}

TEST(Tag, children_are_found_by_index_and_exact_name) {
    ST_tagZEL no("r");
    EXPECT_EQ(no.getSubTag(0), nullptr);
    no.addSubTag("nItem", "1").addSubTag("nItem", "2");
    EXPECT_EQ(no.getSubTag(-1), nullptr);
    EXPECT_EQ(no.getSubTag(2), nullptr);
    EXPECT_EQ(no.getSubTag("NITEM"), nullptr);
    EXPECT_EQ(no.getSubTag("nItem"), no.getSubTag(0));
    EXPECT_EQ(no.valorDe("nItem"), "1");
    EXPECT_EQ(no.valorDe("falta"), "");
    EXPECT_TRUE(no.removerSubTag("nItem"));
    EXPECT_EQ(no.valorDe("nItem"), "2");
}

// Any byte more or less here and the authority refuses the digest.
TEST(Tag, canonical_form_carries_the_namespace_down) {
    ST_tagZEL raiz("NFe");
    EXPECT_EQ(raiz.canonicalizeNFSubTree(), std::nullopt);
    ST_tagZEL assinado("infNFe", "nunca escrito");
    assinado.addPropriedade("Id", "NFe1");
    assinado.addSubTag(lista("a").addSubTag("b", "x> <y> z <"));
    raiz.addPropriedade("versao", "3").addPropriedade("xmlns", "urn:n");
    raiz.addPropriedade("xmlns", "urn:outro").addSubTag(assinado).addSubTag("Signature", "s");
    EXPECT_EQ(raiz.canonicalizeNFSubTree(), "<infNFe xmlns=\"urn:n\" Id=\"NFe1\">"
                                            "<r><a></a><b>x><y> z <</b></r></infNFe>");
    EXPECT_EQ(lista("a").canonicalizeNFSubTree(), "<a></a>");
}

TEST(Tag, indented_form_gives_every_element_its_line) {
    ST_tagZEL ide("ide");
    ide.addSubTag("cUF", "43");
    EXPECT_EQ(ide.toPDF(), "<ide>\n    <cUF>43</cUF>\n</ide>");
    ide.addSubTag(lista("")).addPropriedade("a", "1");
    EXPECT_EQ(ide.toPDF(1), "    <ide a=\"1\">\n        <cUF>43</cUF>\n        <r>\n        </r>\n"
                            "    </ide>");
}
