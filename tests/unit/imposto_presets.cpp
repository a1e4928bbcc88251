#include "imposto/GruposICMS.h"
#include "imposto/Selecao.h"
#include "imposto/TotalImposto.h"
#include "imposto_apoio.h"

#include <functional>

namespace zel {

namespace {

using PresetTest = ImpostoTest;

const std::string kOnze(11, '1');

std::string emVigor(const std::optional<Selecao> &selecao) {
    if (!selecao) return "none";
    return std::string(selecao->grupo) +
           (selecao->fonte == Fonte::kConfTemp ? " preset" : " config");
}

std::string icms() {
    ST_tagZEL imposto("imposto");
    EXPECT_EQ(fnTratarICMS("12.00", "100.00", imposto), 1);
    return resumo(*imposto.getSubTag("ICMS"));
}

// Every preset operation with good arguments, and the name under which it is in force.
struct Operacao {
    std::function<int()> preset;
    std::optional<Selecao> (*escolha)();
    std::string grupo;
};

const Operacao kOperacoes[] = {
    {[] { return fnCFConfICMS00_ZEL_Felbor("0", "00", "3", "1800"); }, fnIdentificarImpostoICMS,
     "ICMS00"},
    {[] { return fnCFConfICMS40_ZEL_Felbor("0", "40", "", {}); }, fnIdentificarImpostoICMS,
     "ICMS40"},
    {[] { return fnCFConfICMS60_ZEL_Felbor("0", "60", "", {}); }, fnIdentificarImpostoICMS,
     "ICMS60"},
    {[] { return fnCFConfPisAliq_ZEL_Felbor("01", "1.65"); }, fnIdentificarImpostoPIS, "PiSAliq"},
    {[] { return fnCFConfPisQtde_ZEL_Felbor("03", "1"); }, fnIdentificarImpostoPIS, "PISQtde"},
    {[] { return fnCFConfPisNT_ZEL_Felbor("07"); }, fnIdentificarImpostoPIS, "PISNT"},
    {[] { return fnCFConfPisOutr_ZEL_Felbor("99", "1", {}); }, fnIdentificarImpostoPIS, "PISOutr"},
    {[] { return fnCFConfCofinsAliq_ZEL_Felbor("01", "7.6"); }, fnIdentificarImpostoCOFINS,
     "COFINSAliq"},
    {[] { return fnCFConfCofinsQtde_ZEL_Felbor("03", "1"); }, fnIdentificarImpostoCOFINS,
     "COFINSQtde"},
    {[] { return fnCFConfCofinsNT_ZEL_Felbor("07"); }, fnIdentificarImpostoCOFINS, "COFINSNT"},
    {[] { return fnCFConfCofinsOutr_ZEL_Felbor("99", {}, "1"); }, fnIdentificarImpostoCOFINS,
     "COFINSOutr"},
};

} // namespace

TEST_F(PresetTest, PresetForaDoCupomOuSobrevivendoAoSeguinte) {
    for (const auto &operacao : kOperacoes) {
        const std::string antes = emVigor(operacao.escolha());
        for (const char *estado : {"0", "4", "5", "6"}) {
            configurar("CONFIGURACAO", "estadoCFe=" + std::string(estado));
            EXPECT_EQ(operacao.preset(), -100) << operacao.grupo << estado;
            EXPECT_EQ(emVigor(operacao.escolha()), antes) << operacao.grupo;
        }
        for (const char *estado : {"1", "2", "3"}) {
            configurar("CONFIGURACAO", "estadoCFe=" + std::string(estado));
            EXPECT_EQ(operacao.preset(), 1) << operacao.grupo << estado;
            EXPECT_EQ(emVigor(operacao.escolha()), operacao.grupo + " preset");
        }
    }
    // Each tax is erased alone, and then the configuration counts again.
    configurar(R"(IMPOSTO\PIS\PISALIQ)", "CST=01");
    EXPECT_EQ(fnZerarConfTempPIS(), 1);
    EXPECT_EQ(emVigor(fnIdentificarImpostoPIS()), "PiSAliq config");
    EXPECT_EQ(emVigor(fnIdentificarImpostoICMS()), "ICMS60 preset");
    EXPECT_EQ(fnZerarConfTempICMS(), 1);
    EXPECT_EQ(emVigor(fnIdentificarImpostoICMS()), "none");
    EXPECT_EQ(emVigor(fnIdentificarImpostoCOFINS()), "COFINSOutr preset");
    EXPECT_EQ(fnZerarConfTempCONFINS(), 1);
    EXPECT_EQ(emVigor(fnIdentificarImpostoCOFINS()), "none");
}

TEST_F(PresetTest, PresetForaDosLimitesAceitoOuOAnteriorMantido) {
    const std::function<int()> icms[] = {
        [] { return fnCFConfICMS00_ZEL_Felbor("0", "00", "3", "7"); },
        [] { return fnCFConfICMS00_ZEL_Felbor("0", "00", "3", "018,00"); },
        [] { return fnCFConfICMS00_ZEL_Felbor("0", "00", "", "1800"); },
        [] { return fnCFConfICMS00_ZEL_Felbor("0", "0", "3", "1800"); },
        [] { return fnCFConfICMS00_ZEL_Felbor("00", "00", "3", "1800"); },
        [] { return fnCFConfICMS40_ZEL_Felbor({}, "40", "1", "1"); },
        [] { return fnCFConfICMS40_ZEL_Felbor("0", "041", "1", "1"); },
        [] { return fnCFConfICMS60_ZEL_Felbor("0", "", "1", "1"); },
    };
    const std::function<int()> pis[] = {
        [] { return fnCFConfPisAliq_ZEL_Felbor("1", "1"); },
        [] { return fnCFConfPisAliq_ZEL_Felbor("01", ""); },
        [] { return fnCFConfPisAliq_ZEL_Felbor("01", "1234567"); },
        [] { return fnCFConfPisQtde_ZEL_Felbor("03", {}); },
        [] { return fnCFConfPisQtde_ZEL_Felbor("03", kOnze + "1111"); },
        [] { return fnCFConfPisNT_ZEL_Felbor("007"); },
        [] { return fnCFConfPisOutr_ZEL_Felbor("9", "1", "1"); },
        [] { return fnCFConfPisOutr_ZEL_Felbor("99", "", ""); },
        [] { return fnCFConfPisOutr_ZEL_Felbor("99", "1234567", kOnze + "1111"); },
    };
    for (const auto &operacao : icms) {
        ASSERT_EQ(fnCFConfICMS40_ZEL_Felbor("0", "40", "", ""), 1);
        EXPECT_EQ(operacao(), -99) << &operacao - icms;
        EXPECT_EQ(emVigor(fnIdentificarImpostoICMS()), "none") << &operacao - icms;
    }
    for (const auto &operacao : pis) {
        ASSERT_EQ(fnCFConfPisNT_ZEL_Felbor("07"), 1);
        EXPECT_EQ(operacao(), -99) << &operacao - pis;
        EXPECT_EQ(emVigor(fnIdentificarImpostoPIS()), "none") << &operacao - pis;
    }
}

TEST_F(PresetTest, PresetNoLimiteRecusado) {
    EXPECT_EQ(fnCFConfICMS00_ZEL_Felbor("&lt;", "0&amp;", "3", "18"), 1) << "a reference is one";
    EXPECT_EQ(fnCFConfPisAliq_ZEL_Felbor("01", "123456"), 1);
    EXPECT_EQ(fnCFConfPisQtde_ZEL_Felbor("03", kOnze + "111"), 1);
    // A rate that fits makes the value per unit free, one that does not leaves it to the value.
    EXPECT_EQ(fnCFConfPisOutr_ZEL_Felbor("99", "123456", kOnze + "1111"), 1);
    EXPECT_EQ(fnCFConfPisOutr_ZEL_Felbor("99", "1234567", kOnze + "111"), 1);
}

TEST_F(PresetTest, GrupoDoPresetMalMontado) {
    const std::string_view taxas[][2] = {
        {"18,00", "18.00"}, {"18.00", "18.00"}, {"1800", "18.00"}, {"18", "0.18"}, {"xx", "0.00"}};
    for (const auto &[texto, taxa] : taxas) {
        ASSERT_EQ(fnCFConfICMS00_ZEL_Felbor("1", "00", "3", texto), 1);
        EXPECT_EQ(icms(), "ICMS(ICMS00(orig=1 CST=00 modBC=3 vBC=100.00 pICMS=" +
                              std::string(taxa) + " vICMS=" + std::string(taxa) + "))");
    }
    ASSERT_EQ(fnCFConfICMS40_ZEL_Felbor("x", "4y", "0,00", "9"), 1);
    EXPECT_EQ(icms(), "ICMS(ICMS40(orig=0 CST=04))");
    ASSERT_EQ(fnCFConfICMS40_ZEL_Felbor("0", "40", "1,5", "<"), 1);
    EXPECT_EQ(icms(), "ICMS(ICMS40(orig=0 CST=40 vICMSDeson=1.50 motDesICMS=&lt;))");
    ASSERT_EQ(fnCFConfICMS60_ZEL_Felbor("0", "60", "10,5", {}), 1);
    EXPECT_EQ(icms(), "ICMS(ICMS60(orig=0 CST=60 vBCSTRet=10.50 vICMSSTRet=0.00))");
}

TEST(TotalImpostoTest, TextoEmBrancoAceitoOuLongoDemais) {
    G_szTotalImposto = "1,00";
    for (const std::string_view vazio : {std::string_view{}, std::string_view{"   "}})
        EXPECT_EQ(fnCFValorLeiImposto_ZEL_Felbor(vazio), -99);
    EXPECT_EQ(G_szTotalImposto.texto(), "1,00");
    EXPECT_EQ(fnCFValorLeiImposto_ZEL_Felbor("  R$ 12,34 (15%) "), 1);
    EXPECT_EQ(G_szTotalImposto.texto(), "R$ 12,34 (15%)");
    EXPECT_EQ(fnCFValorLeiImposto_ZEL_Felbor("12345678901234567890"), 1);
    EXPECT_EQ(G_szTotalImposto.texto(), "1234567890123456789");
}

} // namespace zel
