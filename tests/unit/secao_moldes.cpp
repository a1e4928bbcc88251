// SPDX-License-Identifier: MIT
#include "ZEL_FelborFramework.h"
#include "apoio/Chamadas.h"
#include "apoio/Trecho.h"
#include "secao/Conformidade.h"
#include "secao/Moldes.h"
#include "texto/Latin1.h"

#include <array>
#include <gtest/gtest.h>
#include <tuple>

using namespace zel;

namespace {

// An item with one piece of it replaced by another.
std::string venda(std::string_view de, std::string_view para) {
    return trocar(kItem, de, para);
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

TEST_F(Conformidade, elemento_esquecido_ou_limite_errado_muda_as_somas) {
    const std::array<int, 4> somas[] = {{23, 3, 61, 725}, {234, 158, 470, 1779}, {31, 17, 26, 390},
                                        {4, 4, 3, 17},    {11, 3, 34, 222},      {4, 1, 2, 7000}};
    for (int secao = 0; secao < 6; ++secao) {
        std::array<int, 4> soma{};
        somar(*moldeDaSecao(static_cast<Secao>(secao)), soma);
        EXPECT_EQ(soma, somas[static_cast<std::size_t>(secao)]) << secao;
    }
}

TEST_F(Conformidade, textos_sao_recusados_com_o_seu_codigo) {
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
        {kVenda, venda("22011000", "220110001"), ZEL_TAG_NAO_CONFORME},
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

TEST_F(Conformidade, registro_tem_a_grafia_do_molde_e_uma_linha) {
    const std::string_view texto =
        "<DEST>\r\n\t<XNOME>Jo\xE3o\r\nda\rSilva\x01&#10;</XNOME>\n</DEST>";
    ST_tagZEL no;
    ASSERT_EQ(fnVerificarFormatarTAG_ZEL(Secao::kAbertura, texto, no), ZEL_OK);
    EXPECT_EQ(no.toString(),
              "<ABERTURA><dest><xNome>João da Silva&#10;</xNome></dest></ABERTURA>"_l1);
    EXPECT_EQ(no.getSubTag("dest")->getSubTag("xNome")->tamanhoMaximo, 60);
}
