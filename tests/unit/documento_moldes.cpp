// SPDX-License-Identifier: MIT
#include "ZEL_FelborFramework.h"
#include "documento/Conformidade.h"
#include "documento/Moldes.h"
#include "util/Latin1.h"

#include <array>
#include <gtest/gtest.h>
#include <tuple>

using namespace zel;

namespace {

// An item whose `prod` has one piece of it replaced by another.
std::string venda(std::string_view de, std::string_view para) {
    std::string texto =
        "<prod><cProd>1</cProd><cEAN> </cEAN><xProd>Pao</xProd><NCM>19059090</NCM><CFOP>5102</CFOP>"
        "<uCom>UN</uCom><qCom>1.0000</qCom><vUnCom>2.50</vUnCom><vProd>2.50</vProd>"
        "<cEANTrib> </cEANTrib><uTrib>UN</uTrib><qTrib>1.0000</qTrib><vUnTrib>2.50</vUnTrib>"
        "<indTot>1</indTot></prod><imposto></imposto>";
    return texto.replace(texto.find(de), de.size(), para);
}

class Conformidade : public testing::Test {
protected:
    void SetUp() override { construirMoldes(); }
    void TearDown() override { liberarMoldes(); }
};

// Adds up elements, required ones, lower and upper limits.
void somar(const ST_tagZEL &no, std::array<int, 4> &soma) {
    const int parcelas[] = {1, no.obrigatorio, no.tamanhoMinimo, no.tamanhoMaximo};
    for (std::size_t i = 0; i < soma.size(); ++i)
        soma[i] += parcelas[i];
    if (!no.subTags) return;
    for (const auto &filho : *no.subTags)
        somar(filho, soma);
}

} // namespace

TEST_F(Conformidade, forgotten_elements_and_mistyped_limits_change_the_sums) {
    const std::array<int, 4> somas[] = {{23, 3, 61, 725}, {234, 158, 470, 1779}, {31, 17, 26, 390},
                                        {4, 4, 3, 17},    {11, 3, 34, 222},      {4, 1, 2, 7000}};
    for (int secao = 0; secao < 6; ++secao) {
        std::array<int, 4> soma{};
        somar(*moldeDaSecao(static_cast<Secao>(secao)), soma);
        EXPECT_EQ(soma, somas[static_cast<std::size_t>(secao)]) << secao;
    }
}

TEST_F(Conformidade, texts_are_refused_with_their_code) {
    using enum Secao;
    const std::tuple<Secao, std::string, int> casos[] = {
        {kVenda, venda("", ""), ZEL_OK},
        {kVenda, "<prod></prod><imposto/>", ZEL_OK}, // an empty group is taken as it is
        // Required elements: left out, left out at the end, passed over.
        {kVenda, venda("<cEAN> </cEAN>", ""), ZEL_TAG_OBRIGATORIA},
        {kVenda, venda("<indTot>1</indTot>", ""), ZEL_TAG_OBRIGATORIA},
        {kVenda, venda("<cProd>", "<outro>1</outro><cProd>"), ZEL_TAG_OBRIGATORIA},
        // Order and unknown elements with nothing required on the way.
        {kAbertura, "<dest><xNome>Ana</xNome><CPF>12345678909</CPF></dest>", ZEL_TAG_NAO_CONFORME},
        {kAbertura, "<dest><xNome>Ana</xNome><xNome>Ana</xNome></dest>", ZEL_TAG_NAO_CONFORME},
        {kVenda, venda("</prod>", "<vDesc>1</vDesc></prod>"), ZEL_TAG_NAO_CONFORME},
        // Lengths, a reference counting as one character.
        {kVenda, venda("<cEAN> </cEAN>", "<cEAN></cEAN>"), ZEL_TAG_NAO_CONFORME},
        {kVenda, venda("19059090", "190590901"), ZEL_TAG_NAO_CONFORME},
        {kAbertura, "<dest><xNome>&amp;</xNome></dest>", ZEL_TAG_NAO_CONFORME},
        {kAbertura, "<dest><xNome>A&amp;</xNome></dest>", ZEL_OK},
        // A group where the template has a leaf.
        {kAbertura, "<dest><xNome><x>Ana</x></xNome></dest>", ZEL_TAG_SEM_ELEMENTOS}};
    for (const auto &[secao, texto, codigo] : casos) {
        ST_tagZEL no("intacto");
        EXPECT_EQ(fnVerificarFormatarTAG_ZEL(secao, texto, no), codigo) << texto;
        EXPECT_EQ(no.nome == "intacto", codigo != ZEL_OK) << texto;
    }
}

TEST_F(Conformidade, record_is_spelled_by_the_template_and_stands_on_one_line) {
    const std::string_view texto =
        "<DEST>\r\n\t<XNOME>Jo\xE3o\r\nda\rSilva\x01&#10;</XNOME>\n</DEST>";
    ST_tagZEL no;
    ASSERT_EQ(fnVerificarFormatarTAG_ZEL(Secao::kAbertura, texto, no), ZEL_OK);
    EXPECT_EQ(no.toString(),
              "<ABERTURA><dest><xNome>João da Silva&#10;</xNome></dest></ABERTURA>"_l1);
    EXPECT_EQ(no.getSubTag("dest")->getSubTag("xNome")->tamanhoMaximo, 60);
}
