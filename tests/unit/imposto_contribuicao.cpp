// SPDX-License-Identifier: MIT
#include "apoio/Imposto.h"
#include "imposto/GruposContribuicao.h"

namespace zel {

namespace {

// PIS and COFINS are one table with two sets of names: what they share is tested with COFINS.
class Contribuicao : public ComImposto {
protected:
    std::string vendido(bool pis) const {
        return resultado([&](auto &imposto) {
            return (pis ? fnTratarPIS : fnTratarCOFINS)(pis ? presets.pis : presets.cofins, "18.00",
                                                        "10.00", "4.0000", imposto);
        });
    }
    std::string comPreset(int codigo) const {
        EXPECT_EQ(codigo, ZEL_OK);
        return vendido(false);
    }
};

} // namespace

// Each step fills the section that comes before those of its tax filled so far.
TEST_F(Contribuicao, grupo_configurado_tem_forma_e_lugar_proprios) {
    const std::string_view passos[][3] = {
        {R"(COFINS\COFINSST)", "vAliqProd=0,5", "imposto="}, // no key of it can choose it
        {R"(COFINS\COFINSOUTR)", "CST=99 vAliqProd=", "-1"},
        {R"(COFINS\COFINSOUTR)", "vAliqProd=0,50",
         "imposto(COFINS(COFINSOutr(CST=99 vBC=10.00 pCOFINS=18.00 qBCProd=4.0000 vAliqProd=0.50 "
         "vCOFINS=1.80)))"},
        {R"(COFINS\COFINSNT)", "CST=7", "imposto(COFINS(COFINSNT(CST=07)))"},
        {R"(COFINS\COFINSQTDE)", "CST=03 vAliqProd=0.5",
         "imposto(COFINS(COFINSQtde(CST=03 qBCProd=4.00 vAliqProd=0.5 vCOFINS=1.80)))"},
        {R"(COFINS\COFINSALIQ)", "CST=1",
         "imposto(COFINS(COFINSAliq(CST=01 vBC=10.00 pCOFINS=18.00 vCOFINS=1.80)))"},
        {R"(PIS\PISNT)", "CST=07", "imposto(PIS(PISNT(CST=07)))"},
        // The quantity group of PIS reads its CST from the percentage section.
        {R"(PIS\PISQTDE)", "CST=03 vAliqProd=0.5",
         "imposto(PIS(PISQtde(CST=00 qBCProd=4.00 vAliqProd=0.5 vPIS=1.80)))"},
        {R"(PIS\PISALIQ)", "CST=01",
         "imposto(PIS(PISAliq(CST=01 vBC=10.00 pPIS=18.00 vPIS=1.80)))"},
    };
    for (const auto &[secao, chaves, esperado] : passos) {
        configurar(R"(IMPOSTO\)" + std::string(secao), chaves);
        EXPECT_EQ(vendido(secao.starts_with("PIS")), esperado);
    }
}

TEST_F(Contribuicao, o_temporario_vem_antes_da_configuracao) {
    configurar(R"(IMPOSTO\COFINS\COFINSALIQ)", "CST=07");
    EXPECT_EQ(comPreset(fnCFConfCofinsAliq_ZEL_Felbor(presets, "01", "1,655")),
              "imposto(COFINS(COFINSAliq(CST=01 vBC=10.00 pCOFINS=1.66 vCOFINS=0.17)))");
    EXPECT_EQ(comPreset(fnCFConfCofinsQtde_ZEL_Felbor(presets, "03", "0,50")),
              "imposto(COFINS(COFINSQtde(CST=03 qBCProd=4.00 vAliqProd=0.50 vCOFINS=0.02)))");
    // The first comma is the one that is a point; what it leaves is written as given.
    EXPECT_EQ(comPreset(fnCFConfCofinsQtde_ZEL_Felbor(presets, "03", "1,2,3")),
              "imposto(COFINS(COFINSQtde(CST=03 qBCProd=4.00 vAliqProd=1.2,3 vCOFINS=0.05)))");
    EXPECT_EQ(
        comPreset(fnCFConfCofinsQtde_ZEL_Felbor(presets, "03", "1<2&amp;")),
        "imposto(COFINS(COFINSQtde(CST=03 qBCProd=4.00 vAliqProd=1&lt;2&amp; vCOFINS=0.04)))");
    // Its tax is the quantity's share even where the percentage is written.
    EXPECT_EQ(comPreset(fnCFConfCofinsOutr_ZEL_Felbor(presets, "99", "", "25")),
              "imposto(COFINS(COFINSOutr(CST=99 vBC=10.00 pCOFINS=0.00 vCOFINS=1.00)))");
}

TEST_F(Contribuicao, guardado_e_remontado_pelo_que_tem) {
    // Stored, and rebuilt for the base 50.00 and the quantity 2.5000; "#" is the tax.
    const std::string casos[][2] = {
        {"#Aliq CST=1 vBC=1 p#=1,8 v#=9", "#Aliq(CST=1 vBC=50.00 p#=1,8 v#=0.90)"},
        {"#Qtde qBCProd=4 vAliqProd=20 v#=9", "#Qtde(qBCProd=2.50 vAliqProd=20 v#=0.50)"},
        {"#Outr qBCProd=4 vAliqProd=20 v#=9", "#Outr(qBCProd=2.5000 vAliqProd=20 v#=0.50)"},
        {"#Outr CST=99 v#=9", "#Outr(CST=99 v#=9)"},
        {"#ST vBC=1 p#=2 qBCProd=4 vAliqProd=5 v#=9",
         "#ST(vBC=50.00 p#=2 qBCProd=2.5000 vAliqProd=5 v#=1.00)"},
    };
    for (const auto &[guardado, esperado] : casos) {
        const auto cofins =
            ST_tagZEL("COFINS").addSubTag(grupo(substituirAll(guardado, "#", "COFINS")));
        const auto novo = remontado(cofins, [](auto &tag, auto &mudancas) {
            return fnAtualizarCOFINS(tag, "50.00", "2.5000", mudancas);
        });
        EXPECT_EQ(substituirAll(novo, "COFINS", "#"), "#(" + esperado + ")");
    }
}

} // namespace zel
