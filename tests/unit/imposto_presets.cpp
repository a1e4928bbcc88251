// SPDX-License-Identifier: MIT
#include "apoio/Imposto.h"
#include "imposto/GruposICMS.h"
#include "imposto/Presets.h"

namespace zel {

namespace {

using ImpostoTemporario = ComImposto;

// The groups of the presets of the three taxes.
std::string grupos(const ST_tagImpostoConfTemp &presets) {
    const auto &[icms, pis, cofins] = presets;
    const std::string icmsEPis = std::string(icms.grupo) + " " + std::string(pis.grupo);
    return icmsEPis + " " + std::string(cofins.grupo);
}

} // namespace

TEST_F(ImpostoTemporario, so_acaba_o_apagado_ou_recusado) {
    EXPECT_EQ(fnCFConfICMS40_ZEL_Felbor(presets, "0", "40", "", {}), ZEL_OK);
    EXPECT_EQ(fnCFConfPisNT_ZEL_Felbor(presets, "07"), ZEL_OK);
    EXPECT_EQ(fnCFConfCofinsOutr_ZEL_Felbor(presets, "99", {}, "1"), ZEL_OK);
    EXPECT_EQ(grupos(presets), "ICMS40 PISNT COFINSOutr");
    fnZerarConfTempPIS(presets);
    EXPECT_EQ(grupos(presets), "ICMS40  COFINSOutr");
    EXPECT_EQ(fnCFConfPisNT_ZEL_Felbor(presets, "07"), ZEL_OK);
    fnZerarConfTempICMS(presets);
    EXPECT_EQ(fnCFConfPisNT_ZEL_Felbor(presets, "007"), ZEL_ARGUMENTO_INVALIDO);
    configurar("CONFIGURACAO", "estadoCFe=4");
    EXPECT_EQ(fnCFConfCofinsNT_ZEL_Felbor(presets, "07"), ZEL_ESTADO_INVALIDO);
    EXPECT_EQ(grupos(presets), "  COFINSOutr");
    fnZerarConfTempCONFINS(presets);
    EXPECT_EQ(grupos(presets), "  ");
}

TEST_F(ImpostoTemporario, limites_valem_ate_o_ultimo_caractere) {
    const std::string catorze(14, '1'), quinze(15, '1');
    const int aceitos[] = {
        // A reference is one character.
        fnCFConfICMS00_ZEL_Felbor(presets, "&lt;", "0&amp;", "3", "18"),
        fnCFConfPisAliq_ZEL_Felbor(presets, "01", "123456"),
        fnCFConfPisQtde_ZEL_Felbor(presets, "03", catorze),
        // Of the rate and the value per unit, one must fit and the other is free.
        fnCFConfPisOutr_ZEL_Felbor(presets, "99", "123456", quinze),
        fnCFConfPisOutr_ZEL_Felbor(presets, "99", "1234567", catorze)};
    for (const int &codigo : aceitos)
        EXPECT_EQ(codigo, ZEL_OK) << &codigo - aceitos;
    const int recusados[] = {
        fnCFConfICMS00_ZEL_Felbor(presets, "0", "00", "3", "7"),
        fnCFConfICMS00_ZEL_Felbor(presets, "0", "00", "3", "018,00"),
        fnCFConfICMS40_ZEL_Felbor(presets, {}, "40", "1", "1"),
        fnCFConfPisAliq_ZEL_Felbor(presets, "01", "1234567"),
        fnCFConfPisQtde_ZEL_Felbor(presets, "03", quinze),
        fnCFConfPisOutr_ZEL_Felbor(presets, "99", "1234567", quinze),
    };
    for (const int &codigo : recusados)
        EXPECT_EQ(codigo, ZEL_ARGUMENTO_INVALIDO) << &codigo - recusados;
}

TEST_F(ImpostoTemporario, grupo_de_icms_sai_dos_textos_dados) {
    const auto montado = [&](int codigo) {
        EXPECT_EQ(codigo, ZEL_OK);
        return resultado(
            [&](auto &imposto) { return fnTratarICMS(presets.icms, "12.00", "100.00", imposto); });
    };
    EXPECT_EQ(montado(fnCFConfICMS00_ZEL_Felbor(presets, "1", "00", "3", "18")),
              "imposto(ICMS(ICMS00(orig=1 CST=00 modBC=3 vBC=100.00 pICMS=0.18 vICMS=0.18)))");
    EXPECT_EQ(montado(fnCFConfICMS40_ZEL_Felbor(presets, "x", "4y", "0,004", "9")),
              "imposto(ICMS(ICMS40(orig=0 CST=04)))");
    EXPECT_EQ(montado(fnCFConfICMS40_ZEL_Felbor(presets, "0", "40", "1,5", "<")),
              "imposto(ICMS(ICMS40(orig=0 CST=40 vICMSDeson=1.50 motDesICMS=&lt;)))");
    EXPECT_EQ(montado(fnCFConfICMS40_ZEL_Felbor(presets, "0", "40", "1,5", "")),
              "imposto(ICMS(ICMS40(orig=0 CST=40 vICMSDeson=1.50 motDesICMS=)))");
    EXPECT_EQ(montado(fnCFConfICMS60_ZEL_Felbor(presets, "0", "60", "10,5", {})),
              "imposto(ICMS(ICMS60(orig=0 CST=60 vBCSTRet=10.50 vICMSSTRet=0.00)))");
}

TEST(TotalImposto, texto_perde_os_brancos_das_pontas) {
    zel::TotalImposto total;
    EXPECT_EQ(fnCFValorLeiImposto_ZEL_Felbor(total, "  R$ 12,34 (15%) "), ZEL_OK);
    EXPECT_EQ(total.texto(), "R$ 12,34 (15%)");
}

} // namespace zel
