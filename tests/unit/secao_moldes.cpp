// SPDX-License-Identifier: MIT
#include "ZEL_FelborFramework.h"
#include "apoio/Chamadas.h"
#include "apoio/Ouro.h"
#include "apoio/Trecho.h"
#include "secao/Conformidade.h"
#include "secao/Moldes.h"
#include "texto/Latin1.h"

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

// A line an element: its name, one more blank at each level, "*" where it is required, its limits.
void descrever(const ST_tagZEL &no, std::size_t nivel, std::string &texto) {
    texto.append(nivel, ' ').append(no.nome).append(no.obrigatorio ? "*" : "");
    if (!no.subTags)
        texto.append(" " + std::to_string(no.tamanhoMinimo) + " " +
                     std::to_string(no.tamanhoMaximo));
    texto += "\n";
    if (!no.subTags) return;
    for (const auto &filho : *no.subTags)
        descrever(filho, nivel + 1, texto);
}

} // namespace

TEST_F(Conformidade, moldes_como_o_ouro) {
    std::string texto;
    for (int secao = 0; secao < 6; ++secao)
        descrever(*moldeDaSecao(static_cast<Secao>(secao)), 0, texto);
    compararComOuro(std::filesystem::path(ZEL_OURO) / "moldes.tsv", texto);
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
