#include "imposto/ZEL_TrataImposto.h"
#include "imposto_apoio.h"

namespace zel {

namespace {

using MontagemTest = ImpostoTest;

std::string montado(std::string_view aliquota, int esperado = 1) {
    ST_tagZEL imposto("imposto");
    EXPECT_EQ(fnTratarImposto(aliquota, "100.00", "2.0000", imposto), esperado) << aliquota;
    return resumo(imposto);
}

// Stores an item of 2.5000 at 4.00, sold at the rate 18.00.
void vender() {
    ST_tagZEL imposto("imposto");
    ASSERT_EQ(fnTratarImposto("1800", "10.00", "2.5000", imposto), 1);
    ST_tagZEL item("1");
    item.addSubTag(ST_tagZEL("prod").addSubTag("qCom", "2.5000").addSubTag("vUnCom", "4.00"));
    item.addSubTag(std::move(imposto));
    G_stXML_Persistencia.fnAdicionarTagZEL(Secao::kVenda, std::move(item));
}

} // namespace

TEST_F(MontagemTest, AliquotaMalLida) {
    const std::string_view casos[][2] = {
        {"T1800", "18.00"},  {"T18,00", "18.00"},
        {"t18.00", "18.00"}, {"1800", "18.00"},
        {"18", "0.18"},      {"F1800", "0.00"},
        {"f", "0.00"},       {"I1800", "0.00"},
        {"i", "0.00"},       {"N", "0.00"},
        {"N700", "7.00"},    {"T", "0.00"},
        {"", "0.00"},        {"T-5.00", "5.00"},
        {{}, "0.00"},        {"T0000000000000123456", "1.23"},
    };
    configurar(R"(IMPOSTO\ICMS\ICMS00)", "Orig=0 CST=00 modBC=3");
    for (const auto &[texto, taxa] : casos)
        EXPECT_EQ(montado(texto), "imposto(ICMS(ICMS00(orig=0 CST=00 modBC=3 vBC=100.00 pICMS=" +
                                      std::string(taxa) + " vICMS=" + std::string(taxa) + ")))")
            << texto;
}

TEST_F(MontagemTest, ServicoComGruposDeMercadoria) {
    configurar(R"(IMPOSTO\ICMS\ICMSSN102)", "Orig=0 CSOSN=102");
    configurar(R"(IMPOSTO\PIS\PISNT)", "CST=07");
    configurar(R"(IMPOSTO\COFINS\COFINSNT)", "CST=08");
    EXPECT_EQ(montado("T1800"), "imposto(ICMS(ICMSSN102(orig=0 CSOSN=102)) PIS(PISNT(CST=07)) "
                                "COFINS(COFINSNT(CST=08)))");
    EXPECT_EQ(montado("S0500", -1), "imposto=") << "ISSQN is not configured";
    configurar(R"(IMPOSTO\ISSQN)", "cMunFG=4321808 cListServ=1401 cSitTrib=N");
    for (const auto servico : {"S0500", "s5,00"})
        EXPECT_EQ(montado(servico), "imposto(ISSQN(vBC=100.00 vAliq=5.00 vISSQN=5.00 "
                                    "cMunFG=4321808 cListServ=1401 cSitTrib=N))");
}

TEST_F(MontagemTest, BaseComAjusteTrocado) {
    struct {
        std::string_view quantidade, preco, tipo, valor, base;
    } const casos[] = {
        {"2,5", "2.00", "D$", "0.00", "5.00"},
        {"2,5", "2,00", "D%", "10", "4.50"},
        {"2.5000", "2.00", "A$", "1,00", "6.00"},
        {"2.5", "2.00", "D$", "0,50", "4.50"},
        {"2.5", "2.00", "A%", "12.5", "5.62"}, // exactly 5.625: to the even digit
        {"2.5", "2.00", "", "", "5.00"},
        {"2.5", "2.00", "d%", "10", ""},
        {"2.5", "2.00", "X$", "10", ""},
        {"2.5", "2.00", "X$", "0", "5.00"},
        {"2.5", "2.00", "D%extra", "10", "4.50"},
        {"1", "2.00", "D$", "3", "-1.00"},
        {"0.00005", "1000.00", "", {}, "0.10"}, // the quantity is rounded first, to 0.0001
        {"2.5", "1.999", "", "", "5.00"},
        {{}, "2.00", "", "", "0.00"},
        {"1", "12345678901234.567", "", "", "12345678901234.50"}, // 16 characters count
    };
    for (const auto &caso : casos)
        EXPECT_EQ(fnCalcularValorBC(caso.quantidade, caso.preco, caso.tipo, caso.valor), caso.base)
            << caso.quantidade << ' ' << caso.preco << ' ' << caso.tipo << ' ' << caso.valor;
    // The gross value is cut as configured, the adjusted one always rounded.
    configurar("CONFIGURACAO", "ArredondarTruncar=T");
    EXPECT_EQ(fnCalcularValorBC("2.5", "1.999", "", ""), "4.99");
    EXPECT_EQ(fnCalcularValorBC("2.5", "1.999", "D%", "10"), "4.49");
    EXPECT_EQ(fnCalcularValorBC("2.5", "1.999", "D%", "0.02"), "4.99");
}

TEST_F(MontagemTest, ItemRefeitoComValoresVelhos) {
    configurar(R"(IMPOSTO\ICMS\ICMS00)", "Orig=0 CST=00 modBC=3");
    configurar(R"(IMPOSTO\COFINS\COFINSOUTR)", "CST=99 vAliqProd=1");
    vender();
    vender();
    // The configuration and the presets of later sales must not reach a stored item.
    configurar(R"(IMPOSTO\ICMS\ICMS00)", "Orig=");
    ASSERT_EQ(fnCFConfICMS40_ZEL_Felbor("0", "40", "1", "9"), 1);
    const auto esperado = [](std::string base, std::string imposto, std::string quantidade) {
        return "imposto(ICMS(ICMS00(orig=0 CST=00 modBC=3 vBC=" + base +
               " pICMS=18.00 vICMS=" + imposto + ")) COFINS(COFINSOutr(CST=99 vBC=" + base +
               " pCOFINS=18.00 qBCProd=" + quantidade + " vAliqProd=1 vCOFINS=" + imposto + ")))";
    };
    const ST_tagZEL &item = *G_stXML_Persistencia.item(2);
    struct {
        std::string_view quantidade, tipo, valor, base, imposto, novaQuantidade;
    } const casos[] = {
        {"", "D%", "10", "9.00", "1.62", "2.5000"}, {"", "A$", "2,50", "12.50", "2.25", "2.5000"},
        {"1.50", "", "", "6.00", "1.08", "1.50"},   {"0", "D$", "-1", "10.00", "1.80", "2.5000"},
        {{}, {}, {}, "10.00", "1.80", "2.5000"},
    };
    for (const auto &caso : casos) {
        ASSERT_EQ(fnAtualizar_TagImposto(2, caso.quantidade, caso.tipo, caso.valor), 1);
        EXPECT_EQ(resumo(*item.getSubTag(1)),
                  esperado(std::string(caso.base), std::string(caso.imposto),
                           std::string(caso.novaQuantidade)));
    }
    EXPECT_EQ(resumo(*G_stXML_Persistencia.item(1)->getSubTag(1)),
              esperado("10.00", "1.80", "2.5000"));
}

TEST_F(MontagemTest, ItemEstranhoDerrubaOuSaiPelaMetade) {
    EXPECT_EQ(fnAtualizar_TagImposto(1, "", "", ""), -11);
    G_stXML_Persistencia.fnAdicionarTagZEL(Secao::kVenda, ST_tagZEL("1"));
    EXPECT_EQ(fnAtualizar_TagImposto(1, "", "", ""), 1);
    EXPECT_FALSE(G_stXML_Persistencia.item(1)->subTags);

    ST_tagZEL imposto("imposto");
    imposto.addSubTag(ST_tagZEL("ICMS").addSubTag(ST_tagZEL("ICMS00").addSubTag("vBC", "7.00")));
    ST_tagZEL &item = *G_stXML_Persistencia.item(1);
    item.addSubTag(imposto);
    EXPECT_EQ(fnAtualizar_TagImposto(1, "", "", ""), 1);
    EXPECT_EQ(resumo(item), "1(imposto(ICMS(ICMS00(vBC=0.00))))");

    // A group that does not exist stops the rebuild behind the first tax.
    imposto.addSubTag(ST_tagZEL("PIS").addSubTag(ST_tagZEL("PISX")));
    *item.getSubTag("imposto") = imposto;
    EXPECT_EQ(fnAtualizar_TagImposto(1, "", "", ""), -1);
    EXPECT_EQ(resumo(item), "1(imposto(ICMS(ICMS00(vBC=7.00)) PIS(PISX=)))");
}

} // namespace zel
