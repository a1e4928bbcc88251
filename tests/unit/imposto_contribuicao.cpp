#include "imposto/GruposContribuicao.h"
#include "imposto_apoio.h"

namespace zel {

namespace {

// PIS and COFINS obey one rule with their own names: "#" stands for the tax.
std::string com(std::string_view sigla, std::string_view modelo) {
    return substituirAll(modelo, "#", sigla);
}

class ContribuicaoTest : public ImpostoTest, public testing::WithParamInterface<const char *> {
protected:
    static std::string nomes(std::string_view modelo) { return com(GetParam(), modelo); }
    static bool ehPis() { return std::string_view(GetParam()) == "PIS"; }

    static void secao(std::string_view nome, std::string_view valores) {
        configurar(nomes(R"(IMPOSTO\#\#)") + std::string(nome), valores);
    }
    static std::string vendido(std::string_view base, std::string_view quantidade,
                               int esperado = 1) {
        ST_tagZEL imposto("imposto");
        EXPECT_EQ((ehPis() ? fnTratarPIS : fnTratarCOFINS)("18.00", base, quantidade, imposto),
                  esperado);
        return resumo(imposto);
    }
    static std::string ajustado(const ST_tagZEL &tributo, std::string_view base,
                                std::string_view quantidade) {
        ST_tagZEL imposto("imposto");
        EXPECT_EQ(
            (ehPis() ? fnAtualizarPIS : fnAtualizarCOFINS)(tributo, base, quantidade, imposto), 1);
        return resumo(imposto);
    }
    static ST_tagZEL tributo(ST_tagZEL grupo) {
        return ST_tagZEL(GetParam()).addSubTag(std::move(grupo));
    }
};

} // namespace

TEST_P(ContribuicaoTest, GrupoDaConfiguracaoComOutraFormulaOuOrdem) {
    EXPECT_EQ(vendido("10.00", "4.0000"), "imposto=") << "no section is filled";
    secao("OUTR", "CST=99 vAliqProd=0,50");
    EXPECT_EQ(vendido("10.00", "4.0000"),
              nomes("imposto(#(#Outr(CST=99 vBC=10.00 p#=18.00 qBCProd=4.0000 vAliqProd=0.50 "
                    "v#=1.80)))"));
    secao("NT", "CST=7");
    EXPECT_EQ(vendido("10.00", "4.0000"), nomes("imposto(#(#NT(CST=07)))"));
    // The quantity group of PIS reads its CST from the percentage section.
    secao("QTDE", "CST=03 vAliqProd=0.5");
    EXPECT_EQ(vendido("10.00", "4.0000"),
              nomes(ehPis() ? "imposto(#(#Qtde(CST=00 qBCProd=4.00 vAliqProd=0.5 v#=1.80)))"
                            : "imposto(#(#Qtde(CST=03 qBCProd=4.00 vAliqProd=0.5 v#=1.80)))"));
    secao("ALIQ", "CST=1");
    EXPECT_EQ(vendido("10.00", "4.0000"),
              nomes("imposto(#(#Aliq(CST=01 vBC=10.00 p#=18.00 v#=1.80)))"));
}

TEST_P(ContribuicaoTest, GrupoVendidoSemValorPorUnidade) {
    secao("OUTR", "CST=99 vAliqProd=");
    EXPECT_EQ(vendido("10.00", "4.0000", -1), "imposto=");
    secao("QTDE", "CST=03");
    EXPECT_EQ(vendido("10.00", "4.0000", -1), "imposto=");
}

TEST_P(ContribuicaoTest, GrupoDeSubstituicaoEscolhidoOuMalMontado) {
    secao("ST", "vAliqProd=0,5");
    EXPECT_EQ(vendido("10.00", "4.0000"), "imposto=") << "without a CST key nothing can choose it";
    const auto *grupo = procurarGrupo(ehPis() ? gruposPIS() : gruposCOFINS(), nomes("#ST"));
    ASSERT_NE(grupo, nullptr);
    EXPECT_EQ(resumo(*montarGrupo(*grupo, nullptr, {"18.00", "10.00", "4.0000"})),
              nomes("#ST(vBC=10.00 p#=18.00 qBCProd=4.0000 vAliqProd=0.50 v#=1.80)"));
    secao("ST", "vAliqProd=");
    EXPECT_EQ(resumo(*montarGrupo(*grupo, nullptr, {"18.00", "10.00", "4.0000"})),
              nomes("#ST(vBC=10.00 p#=18.00 qBCProd=4.0000 vAliqProd=0.00 v#=1.80)"));
}

TEST_P(ContribuicaoTest, GrupoDoPresetComTaxaDaVenda) {
    secao("ALIQ", "CST=07");
    const auto aliq = ehPis() ? fnCFConfPisAliq_ZEL_Felbor : fnCFConfCofinsAliq_ZEL_Felbor;
    const auto qtde = ehPis() ? fnCFConfPisQtde_ZEL_Felbor : fnCFConfCofinsQtde_ZEL_Felbor;
    const auto nt = ehPis() ? fnCFConfPisNT_ZEL_Felbor : fnCFConfCofinsNT_ZEL_Felbor;
    const auto outr = ehPis() ? fnCFConfPisOutr_ZEL_Felbor : fnCFConfCofinsOutr_ZEL_Felbor;
    ASSERT_EQ(aliq("01", "1,655"), 1);
    EXPECT_EQ(vendido("10.00", "4.0000"),
              nomes("imposto(#(#Aliq(CST=01 vBC=10.00 p#=1.66 v#=0.17)))"));
    ASSERT_EQ(qtde("03", "0,50"), 1);
    EXPECT_EQ(vendido("10.00", "4.0000"),
              nomes("imposto(#(#Qtde(CST=03 qBCProd=4.00 vAliqProd=0.50 v#=0.02)))"));
    ASSERT_EQ(nt("08"), 1);
    EXPECT_EQ(vendido("10.00", "4.0000"), nomes("imposto(#(#NT(CST=08)))"));
    // Its tax is the quantity's share even where the percentage is written.
    ASSERT_EQ(outr("99", "2", "25"), 1);
    EXPECT_EQ(vendido("10.00", "4.0000"),
              nomes("imposto(#(#Outr(CST=99 vBC=10.00 p#=2.00 v#=1.00)))"));
    ASSERT_EQ(outr("99", "", "25"), 1);
    EXPECT_EQ(vendido("10.00", "4.0000"),
              nomes("imposto(#(#Outr(CST=99 vBC=10.00 p#=0.00 v#=1.00)))"));
}

TEST_P(ContribuicaoTest, PresetSemTaxaComElementosDaTaxa) {
    // No operation leaves the rate empty; the record itself can.
    (ehPis() ? G_stTagImpostoConfTemp.pis : G_stTagImpostoConfTemp.cofins) = {
        ehPis() ? "PISOutr" : "COFINSOutr", {{{"CST", {"99"}}, {"vAliqProd", {"25.00"}}}}};
    EXPECT_EQ(vendido("10.00", "4.0000"),
              nomes("imposto(#(#Outr(CST=99 qBCProd=4.0000 vAliqProd=25.00 v#=1.00)))"));
}

TEST_P(ContribuicaoTest, PresetDeQuantidadeComValorQuebraOXml) {
    const auto qtde = ehPis() ? fnCFConfPisQtde_ZEL_Felbor : fnCFConfCofinsQtde_ZEL_Felbor;
    ASSERT_EQ(qtde("03", "1<2&amp;"), 1);
    EXPECT_EQ(vendido("10.00", "100.0000"),
              nomes("imposto(#(#Qtde(CST=03 qBCProd=100.00 vAliqProd=1&lt;2&amp; v#=1.00)))"));
}

TEST_P(ContribuicaoTest, GrupoGuardadoRefeitoPelaRegraErrada) {
    // Stored group, and the same one for the base 50.00 and the quantity 2.5000.
    const std::string_view casos[][2] = {
        {"#Aliq CST=1 vBC=1 p#=1,8 v#=9", "#Aliq(CST=1 vBC=50.00 p#=1,8 v#=0.90)"},
        {"#Qtde CST=03 qBCProd=4.00 vAliqProd=20 v#=9",
         "#Qtde(CST=03 qBCProd=2.50 vAliqProd=20 v#=0.50)"},
        {"#NT CST=07", "#NT(CST=07)"},
        {"#Outr CST=99 vBC=1 p#=2.00 v#=9", "#Outr(CST=99 vBC=50.00 p#=2.00 v#=1.00)"},
        {"#Outr CST=99 qBCProd=4 vAliqProd=20 v#=9",
         "#Outr(CST=99 qBCProd=2.5000 vAliqProd=20 v#=0.50)"},
        {"#Outr CST=99 v#=9", "#Outr(CST=99 v#=9)"},
        {"#ST vBC=1 p#=2.00 qBCProd=4 vAliqProd=0.5 v#=9",
         "#ST(vBC=50.00 p#=2.00 qBCProd=2.5000 vAliqProd=0.5 v#=1.00)"},
    };
    for (const auto &[guardado, esperado] : casos) {
        const std::string texto = nomes(guardado);
        const auto partes = split(texto, ' ', 20);
        ST_tagZEL grupo(partes[0]);
        for (std::size_t i = 1; i < partes.size(); ++i)
            grupo.addSubTag(partes[i].substr(0, partes[i].find('=')),
                            partes[i].substr(partes[i].find('=') + 1));
        EXPECT_EQ(ajustado(tributo(grupo), "50.00", "2.5000"),
                  nomes("imposto(#(" + std::string(esperado) + "))"));
    }
    EXPECT_EQ(ajustado(ST_tagZEL(GetParam()), "50.00", "2.5000"), nomes("imposto(#=)"));
}

INSTANTIATE_TEST_SUITE_P(Tributos, ContribuicaoTest, testing::Values("PIS", "COFINS"),
                         [](const auto &caso) { return std::string(caso.param); });

using ISSTest = ImpostoTest;

TEST_F(ISSTest, CodigosSemZerosOuExigidoAusente) {
    const std::string secao = R"(IMPOSTO\ISSQN)";
    configurar(secao, "cMunFG=12 cListServ=101 cSitTrib=N");
    ST_tagZEL vendido("imposto"), ajustado("imposto");
    ASSERT_EQ(fnTratarISS("5.00", "10.00", vendido), 1);
    EXPECT_EQ(resumo(vendido), "imposto(ISSQN(vBC=10.00 vAliq=5.00 vISSQN=0.50 cMunFG=0000012 "
                               "cListServ=0101 cSitTrib=N))");
    ASSERT_EQ(fnAtualizarISS(*vendido.getSubTag("ISSQN"), "8.00", ajustado), 1);
    EXPECT_EQ(resumo(ajustado), "imposto(ISSQN(vBC=8.00 vAliq=5.00 vISSQN=0.40 cMunFG=0000012 "
                                "cListServ=0101 cSitTrib=N))");
    for (const std::string chave : {"cMunFG", "cListServ", "cSitTrib"}) {
        configurar(secao, "cMunFG=12 cListServ=101 cSitTrib=N");
        configurar(secao, chave + "=");
        EXPECT_EQ(fnTratarISS("5.00", "10.00", vendido), -1) << chave;
    }
}

} // namespace zel
