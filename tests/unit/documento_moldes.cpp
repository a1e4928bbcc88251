#include "ZEL_FelborFramework.h"
#include "documento/ZEL_Conformidade.h"
#include "documento/ZEL_Moldes.h"
#include "util/Latin1.h"

#include <gtest/gtest.h>

using namespace zel;

namespace {

constexpr std::string_view kProd =
    "<cProd>1</cProd><cEAN> </cEAN><xProd>Pao</xProd><NCM>19059090</NCM><CFOP>5102</CFOP>"
    "<uCom>UN</uCom><qCom>1.0000</qCom><vUnCom>2.50</vUnCom><vProd>2.50</vProd>"
    "<cEANTrib> </cEANTrib><uTrib>UN</uTrib><qTrib>1.0000</qTrib><vUnTrib>2.50</vUnTrib>";
constexpr std::string_view kFimProd = "<indTot>1</indTot>";

std::string venda(std::string_view prod, std::string_view imposto = "") {
    return "<prod>" + std::string(prod) + "</prod><imposto>" + std::string(imposto) + "</imposto>";
}

std::string prod(std::string_view antes, std::string_view depois) {
    std::string texto = std::string(kProd).append(kFimProd);
    return texto.replace(texto.find(antes), antes.size(), depois);
}

std::string dest(std::string_view filhos) {
    return "<dest>" + std::string(filhos) + "</dest>";
}

class Conformidade : public testing::Test {
protected:
    void SetUp() override { construirMoldes(); }
    void TearDown() override { liberarMoldes(); }
};

} // namespace

TEST_F(Conformidade, templates_are_built_once_and_freed) {
    const ST_tagZEL *filho = G_stTagZEL_venda->getSubTag("prod");
    construirMoldes();
    EXPECT_EQ(G_stTagZEL_venda->getSubTag("prod"), filho);
    liberarMoldes();
    EXPECT_FALSE(G_stTagZEL_abertura || G_stTagZEL_encerramento);
    ST_tagZEL no;
    EXPECT_EQ(fnVerificarFormatarTAG_ZEL(Secao::kVenda, venda(prod("", "")), no), ZEL_RECUSADO);
}

// A group forgotten, or a flag or limit of one of the tables mistyped, shows in these sums.
TEST_F(Conformidade, templates_have_all_their_elements) {
    struct Soma {
        int nos = 0;
        int obrigatorios = 0;
        int minimos = 0;
        int maximos = 0;
        void somar(const ST_tagZEL &no) {
            ++nos;
            obrigatorios += no.obrigatorio;
            minimos += no.tamanhoMinimo;
            maximos += no.tamanhoMaximo;
            if (no.subTags)
                for (const auto &filho : *no.subTags) somar(filho);
        }
        bool operator==(const Soma &) const = default;
    };
    const std::pair<const std::optional<ST_tagZEL> &, Soma> casos[] = {
        {G_stTagZEL_abertura, {}},    {G_stTagZEL_venda, {}},
        {G_stTagZEL_totalizacao, {}}, {G_stTagZEL_transporte, {}},
        {G_stTagZEL_pagamento, {}},   {G_stTagZEL_encerramento, {}},
    };
    for (const auto &[molde, esperada] : casos) {
        Soma soma;
        soma.somar(*molde);
        EXPECT_EQ(soma, esperada) << molde->nome << soma.nos << " " << soma.obrigatorios << " "
                                  << soma.minimos << " " << soma.maximos;
    }
}

TEST_F(Conformidade, texts_are_accepted_or_refused_with_their_code) {
    const struct {
        Secao secao;
        std::string texto;
        int codigo;
    } casos[] = {
        {Secao::kVenda, venda(prod("", "")), ZEL_OK},
        {Secao::kVenda, venda(prod("", ""), "<ISSQN><vBC>1.0</vBC></ISSQN>"), ZEL_OK},
        {Secao::kVenda, venda(""), ZEL_OK}, // a group given empty is taken as it is
        {Secao::kVenda, "", ZEL_TAG_SEM_ELEMENTOS},
        {Secao::kVenda, "texto", ZEL_TAG_SEM_ELEMENTOS},
        {Secao::kVenda, "<prod>", ZEL_RECUSADO},
        {Secao::kVenda, "<!-- x -->" + venda(""), ZEL_RECUSADO},
        // Required elements: left out, passed over, left out at the end.
        {Secao::kVenda, venda(prod("<cEAN> </cEAN>", "")), ZEL_TAG_OBRIGATORIA},
        {Secao::kVenda, "<imposto></imposto>", ZEL_TAG_OBRIGATORIA},
        {Secao::kVenda, "<prod></prod>", ZEL_TAG_OBRIGATORIA},
        {Secao::kVenda, venda(prod("<indTot>1</indTot>", "")), ZEL_TAG_OBRIGATORIA},
        {Secao::kVenda, "<outro></outro>", ZEL_TAG_OBRIGATORIA},
        {Secao::kVenda, venda(prod("<cProd>1</cProd>", "<x>1</x><cProd>1</cProd>")),
         ZEL_TAG_OBRIGATORIA},
        // Order and unknown elements with nothing required on the way.
        {Secao::kAbertura, dest("<xNome>Ana</xNome><CPF>12345678909</CPF>"), ZEL_TAG_NAO_CONFORME},
        {Secao::kAbertura, dest("<xNome>Ana</xNome><xNome>Ana</xNome>"), ZEL_TAG_NAO_CONFORME},
        {Secao::kAbertura, dest("<apelido>A</apelido>"), ZEL_TAG_NAO_CONFORME},
        {Secao::kVenda, venda(prod("<indTot>1</indTot>", "<indTot>1</indTot><vDesc>1</vDesc>")),
         ZEL_TAG_NAO_CONFORME},
        // Lengths, a reference counting as one character.
        {Secao::kVenda, venda(prod("<cEAN> </cEAN>", "<cEAN></cEAN>")), ZEL_TAG_NAO_CONFORME},
        {Secao::kVenda, venda(prod("<NCM>19059090</NCM>", "<NCM>190590901</NCM>")),
         ZEL_TAG_NAO_CONFORME},
        {Secao::kVenda, venda(prod("Pao", "")), ZEL_TAG_NAO_CONFORME},
        {Secao::kAbertura, dest("<xNome>A</xNome>"), ZEL_TAG_NAO_CONFORME},
        {Secao::kAbertura, dest("<xNome>&amp;</xNome>"), ZEL_TAG_NAO_CONFORME},
        {Secao::kAbertura, dest("<xNome>A&amp;</xNome>"), ZEL_OK},
        {Secao::kAbertura, dest("<xNome>" + std::string(60, 'x') + "</xNome>"), ZEL_OK},
        {Secao::kAbertura, dest("<xNome>" + std::string(61, 'x') + "</xNome>"),
         ZEL_TAG_NAO_CONFORME},
        // A group where the template has a leaf.
        {Secao::kAbertura, dest("<xNome><x>Ana</x></xNome>"), ZEL_TAG_SEM_ELEMENTOS},
        // Every section has its own template.
        {Secao::kPagamento, "<pag><tPag>01</tPag><vPag>1</vPag></pag>", ZEL_OK},
        {Secao::kTransporte, "<transp><modFrete>9</modFrete></transp>", ZEL_OK},
        {Secao::kEncerramento, "<infAdic><infCpl>x</infCpl></infAdic>", ZEL_OK},
        {Secao::kTotalizacao, "<total><retTrib></retTrib></total>", ZEL_OK},
        {Secao::kTransporte, "<pag><tPag>01</tPag><vPag>1</vPag></pag>", ZEL_TAG_OBRIGATORIA},
    };
    for (const auto &caso : casos) {
        ST_tagZEL no("intacto");
        EXPECT_EQ(fnVerificarFormatarTAG_ZEL(caso.secao, caso.texto, no), caso.codigo)
            << caso.texto;
        EXPECT_EQ(no.nome == "intacto", caso.codigo != ZEL_OK) << caso.texto;
    }
    ST_tagZEL no;
    for (const int secao : {-1, 6})
        EXPECT_EQ(fnVerificarFormatarTAG_ZEL(secao, "<pag></pag>", no), ZEL_RECUSADO);
}

// A stored element that later operations do not find by its name, a record of two lines.
TEST_F(Conformidade, the_result_is_spelled_by_the_template_and_stands_on_one_line) {
    ST_tagZEL no;
    ASSERT_EQ(fnVerificarFormatarTAG_ZEL(
                  0, "<DEST>\r\n\t<XNOME>Jo\xE3o\r\nda\rSilva\x01&#10;</XNOME>\n</DEST>", no),
              ZEL_OK);
    EXPECT_EQ(no.toString(), "<ABERTURA><dest><xNome>João da Silva&#10;</xNome></dest></ABERTURA>"_l1);
    const ST_tagZEL *nome = no.getSubTag("dest")->getSubTag("xNome");
    EXPECT_EQ(nome->tamanhoMinimo, 2);
    EXPECT_EQ(nome->tamanhoMaximo, 60);
    EXPECT_FALSE(no.obrigatorio);
}
