// SPDX-License-Identifier: MIT
#include "apoio/Imposto.h"
#include "imposto/ZEL_TrataImposto.h"

namespace zel {

namespace {

class Montagem : public ComImposto {
protected:
    std::string montado(std::string_view aliquota) const {
        return resultado([&](auto &imposto) {
            return fnTratarImposto(presets, aliquota, "100.00", "2.0000", imposto);
        });
    }
};

} // namespace

TEST_F(Montagem, aliquota_e_lida_em_centesimos_seja_qual_for_a_letra) {
    const std::string_view casos[][2] = {{"T1800", "18.00"}, {"t18,00", "18.00"}, {"18", "0.18"},
                                         {"F1800", "0.00"},  {"i1800", "0.00"},   {"N700", "7.00"},
                                         {"", "0.00"},       {"T-5.00", "5.00"}};
    configurar(R"(IMPOSTO\ICMS\ICMS00)", "Orig=0 CST=00 modBC=3");
    for (const auto &[texto, taxa] : casos)
        EXPECT_NE(montado(texto).find("pICMS=" + std::string(taxa)), std::string::npos) << texto;
}

TEST_F(Montagem, servico_precisa_dos_seus_tres_codigos) {
    const std::string secao = R"(IMPOSTO\ISSQN)";
    for (const std::string chave : {"cMunFG", "cListServ", "cSitTrib"}) {
        configurar(secao, "cMunFG=4321808 cListServ=1401 cSitTrib=N");
        configurar(secao, chave + "=");
        EXPECT_EQ(montado("S0500"), "-1") << chave;
    }
    configurar(secao, "cSitTrib=N");
    EXPECT_EQ(montado("s5,00"), "imposto(ISSQN(vBC=100.00 vAliq=5.00 vISSQN=5.00 cMunFG=4321808 "
                                "cListServ=1401 cSitTrib=N))");
}

TEST_F(Montagem, base_e_o_valor_ajustado_arredondado_passo_a_passo) {
    // At 5.625 the even digit, the quantity rounded first (to 0.0001), 16 characters of a number.
    const std::string_view casos[][5] = {{"2.5", "2.00", "A%", "12.5", "5.62"},
                                         {"0.00005", "1000.00", "", {}, "0.10"},
                                         {"2.5", "2.00", "d%", "10", ""},
                                         {"2.5", "2.00", "D%extra", "10", "4.50"},
                                         {"1", "2.00", "D$", "3", "-1.00"},
                                         {"2.5", "1.999", "", "", "5.00"},
                                         {"1", "12345678901234.567", "", "", "12345678901234.50"}};
    for (const auto &[quantidade, preco, tipo, valor, base] : casos)
        EXPECT_EQ(fnCalcularValorBC(quantidade, preco, tipo, valor), base) << tipo << base;
    // The gross value is cut as configured, the adjusted one always rounded.
    configurar("CONFIGURACAO", "ArredondarTruncar=t");
    EXPECT_EQ(fnCalcularValorBC("2.5", "1.999", "", ""), "4.99");
    EXPECT_EQ(fnCalcularValorBC("2.5", "1.999", "D%", "0.02"), "4.99");
}

TEST_F(Montagem, item_remontado_guarda_o_imposto_da_venda) {
    configurar(R"(IMPOSTO\ICMS\ICMS00)", "Orig=0 CST=00 modBC=3");
    ST_tagZEL item("1"), imposto("imposto");
    ASSERT_EQ(fnTratarImposto(presets, "1800", "10.00", "2.5000", imposto), ZEL_OK);
    imposto.addSubTag(ST_tagZEL("COFINS").addSubTag(grupo("COFINSOutr qBCProd=1 vCOFINS=1")));
    imposto.addSubTag(grupo("ISSQN vBC=1 vAliq=18,00 vISSQN=1 cMunFG=12"));
    item.addSubTag(grupo("prod qCom=2.5000 vUnCom=4.00")).addSubTag(std::move(imposto));
    // Neither the configuration nor the presets of later sales reach a stored item.
    configurar(R"(IMPOSTO\ICMS\ICMS00)", "Orig=");
    ASSERT_EQ(fnCFConfICMS40_ZEL_Felbor(presets, "0", "40", "1", "9"), ZEL_OK);
    Mudancas mudancas;
    ASSERT_EQ(fnAtualizar_TagImposto(item, "1,50", "A$", "2.50", mudancas), ZEL_OK);
    EXPECT_EQ(resumo(*item.getSubTag("imposto")),
              "imposto(ICMS(ICMS00(orig=0 CST=00 modBC=3 vBC=8.50 pICMS=18.00 vICMS=1.53)) "
              "COFINS(COFINSOutr(qBCProd=1,50 vCOFINS=1)) "
              "ISSQN(vBC=8.50 vAliq=18,00 vISSQN=1.53 cMunFG=12))");
    ASSERT_EQ(fnAtualizar_TagImposto(item, "0", "D$", "-1", mudancas), ZEL_OK);
    EXPECT_NE(resumo(item).find("vBC=10.00"), std::string::npos);
}

// An item sold as tag text may hold anything, one of an edited file in any order.
TEST_F(Montagem, item_estranho_e_remontado_ou_recusado) {
    const auto icms = ST_tagZEL("ICMS").addSubTag(grupo("ICMS00 vBC=7.00"));
    const auto pis = ST_tagZEL("PIS").addSubTag(grupo("PISAliq vPIS=1"));
    const auto estranho = ST_tagZEL("PIS").addSubTag(grupo("PISX"));
    const auto com = [](std::initializer_list<ST_tagZEL> tributos) {
        ST_tagZEL imposto("imposto");
        for (const auto &tributo : tributos)
            imposto.addSubTag(tributo);
        return ST_tagZEL("1").addSubTag(imposto);
    };
    const std::string soIcms = "1(imposto(ICMS(ICMS00(vBC=0.00))";
    const std::pair<ST_tagZEL, std::string> casos[] = {
        {ST_tagZEL("1"), "1="},
        {com({icms}), soIcms + "))"},
        {com({pis, icms}), soIcms + " PIS(PISAliq(vPIS=1))))"},
        {com({icms, icms, ST_tagZEL("vTotTrib", "1")}), soIcms + "))"},
        {com({icms, estranho}), "-1"},
    };
    for (const auto &[item, esperado] : casos) {
        const auto atualizar = [](auto &tag, auto &mudancas) {
            return fnAtualizar_TagImposto(tag, "", "", "", mudancas);
        };
        EXPECT_EQ(remontado(item, atualizar), esperado);
    }
}

} // namespace zel
