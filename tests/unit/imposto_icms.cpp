// SPDX-License-Identifier: MIT
#include "apoio/Imposto.h"
#include "imposto/GruposICMS.h"

#include <regex>

namespace zel {

namespace {

// A group's section with all its keys but `Orig`, "*" in front of those that must be filled, "-" of
// those without which the item is sold without its tax, and its elements after `orig`: sold at the
// base 100.00 "/" rebuilt for the base 50.00.
struct Caso {
    std::string grupo, chaves, elementos;
};

const std::string kICMS = "pICMS=18.00 vICMS=18.00/9.00", kBC = "vBC=100.00/50.00 ";
const std::string kChavesST = " *modBCST=4 pMVAST=0.40 pRedBCST=20 *pICMSST=0.18";
const std::string kST = " modBCST=4 pMVAST=0.40 pRedBCST=20.00 vBCST=140.00/70.00 pICMSST=0.18";

const Caso kCasos[] = {
    {"ICMS00", "-CST=0 -modBC=3", "CST=00 modBC=3 " + kBC + kICMS},
    {"ICMS10", "*CST=10 *modBC=3 *modBCST=4 *pMVAST=0,40 *pRedBCST=20 *pICMSST=0.18",
     "CST=0000010 modBC=3 " + kBC + kICMS + kST + " vICMSST=-74.80/-37.40"},
    {"ICMS20", "*CST=20 *modBC=3 *pRedBC=10,5", "CST=20 modBC=3 pRedBC=10.50 " + kBC + kICMS},
    {"ICMS30", "*CST=30 *modBCST=4 *pMVAST=0.40 *pRedBCST=5 *pICMSST=0,18",
     "CST=30 modBCS=4 pMVAST=0.40 pRedBCST=5.00 vBCST=100.00/50.00 pICMSST=0.18 "
     "vICMSST=18.00/9.00"},
    {"ICMS40", "-CST=40 vICMS=7,5 motDesICMS=9", "CST=40 vICMSDeson=7.50 motDesICMS=9"},
    {"ICMS51", "*CST=51 modBC=3 pRedBC=33.336", "CST=51 modBC=3 pRedBC=33.34 " + kBC + kICMS},
    {"ICMS60", "-CST=60 vBCSTRet=12,3 vICMSSTRet=1", "CST=60 vBCSTRet=12.30 vICMSSTRet=1.00"},
    // Sold from the percentages as given, rebuilt from them as stored.
    {"ICMS70", "*CST=70 *modBC=3 *pRedBC=10 *modBCST=4 pMVAST=0.405 pRedBCST=20 *pICMSST=0.185",
     "CST=70 modBC=3 pRedBC=10.00 " + kBC + kICMS +
         " modBCST=4 pMVAST=0.41 pRedBCST=20.00 vBCST=140.50/70.50 pICMSST=0.18 vICMSST=7.99/3.69"},
    {"ICMS90", "*CST=90 *modBC=3 pRedBC=10" + kChavesST,
     "CST=90 modBC=3 " + kBC + "pRedBC=10.00 " + kICMS + kST + " vICMSST=7.20/3.60"},
    {"ICMSPart", "*CST=10 *modBC=3 pRedBC=10 *pBCOp=50 *UFST=SP" + kChavesST,
     "CST=10 modBC=3 " + kBC + "pRedBC=10.00 " + kICMS + kST +
         " vICMSST=7.20/3.60 pBCOp=50.00 UFST=SP"},
    {"ICMSST", "*CST=41 *vBCSTRet=1 *vICMSSTRet=2 *vBCSTDest=3 *vICMSSTDest=4",
     "CST=41 vBCSTRet=1.00 vICMSSTRet=2.00 vBCSTDest=3.00 vICMSSTDest=4.00"},
    {"ICMSSN101", "*CSOSN=1 *pCredSN=1 *vCredICMSSN=2", "CSOSN=001 pCredSN=1.00 vCredICMSSN=2.00"},
    {"ICMSSN102", "*CSOSN=7", "CSOSN=007"},
    {"ICMSSN201", "*CSOSN=201 *pCredSN=1 *vCredICMSSN=2" + kChavesST,
     "CSOSN=201" + kST + " vICMSST=-74.80/-37.40 pCredSN=1.00 vCredICMSSN=2.00"},
    // Stored without `pICMS`, so nothing is subtracted when it is rebuilt.
    {"ICMSSN202", "*CSOSN=202" + kChavesST, "CSOSN=202" + kST + " vICMSST=7.20/12.60"},
    {"ICMSSN500", "*CSOSN=5 *vBCSTRet=1 vICMSSTRet=2", "CSOSN=005 vBCSTRet=1.00 vICMSSTRet=2.00"},
    {"ICMSSN900", "*CSOSN=900 *modBC=3 *modBCST=4 *pICMSST=0.18 *pCredSN=1",
     "CSOSN=900 modBC=3 vBC=0.00 pICMS=18.00 vICMS=0.00 modBCST=4 vBCST=0.00 pICMSST=0.18 "
     "vICMSST=0.00 pCredSN=1.00 vCredICMSSN=0.00"},
};

class Icms : public ComImposto, public testing::WithParamInterface<Caso> {
protected:
    static void configurarIcms(std::string_view grupo, std::string_view chaves) {
        configurar(R"(IMPOSTO\ICMS\)" + std::string(grupo), chaves);
    }
    static std::string semMarcas(std::string_view chaves) {
        return std::regex_replace(std::string(chaves), std::regex("[*-]"), "");
    }
    static std::string vendido(std::string_view base) {
        return resultado([&](auto &imposto) { return fnTratarICMS({}, "18.00", base, imposto); });
    }
    static std::string remontado(const ST_tagZEL &icms) {
        return ComImposto::remontado(icms, [](auto &tag, auto &mudancas) {
            return fnAtualizarICMS(tag, "50.00", mudancas);
        });
    }
};

using IcmsAvulso = Icms;

} // namespace

TEST_P(Icms, elementos_em_ordem_cada_um_com_a_sua_formula) {
    const auto &[nome, chaves, elementos] = GetParam();
    configurarIcms(nome, "Orig=1 " + semMarcas(chaves));
    const std::regex doisLados("([0-9.-]+)/([0-9.-]+)");
    const std::string noVendido = std::regex_replace(elementos, doisLados, "$1"),
                      noRemontado = std::regex_replace(elementos, doisLados, "$2");
    EXPECT_EQ(vendido("100.00"), "imposto(ICMS(" + nome + "(orig=1 " + noVendido + ")))");
    const auto icms = ST_tagZEL("ICMS").addSubTag(grupo(nome + " orig=1 " + noVendido));
    EXPECT_EQ(remontado(icms), "ICMS(" + nome + "(orig=1 " + noRemontado + "))");
}

TEST_P(Icms, so_a_chave_obrigatoria_nao_pode_ser_vazia) {
    const auto &[nome, chaves, elementos] = GetParam();
    // The one that is no number is not made up: the section check refuses it.
    const std::regex cheio(R"(imposto\(ICMS\(\w+\((\w+=[^ )]+ ?|motDesICMS=)+\)\)\))");
    for (const auto par : split(chaves, ' ', 20)) {
        configurarIcms(nome, "Orig=1 " + semMarcas(chaves));
        configurarIcms(nome, semMarcas(par.substr(0, par.find('=') + 1)));
        if (par.front() == '*' || par.front() == '-')
            EXPECT_EQ(vendido("100.00"), par.front() == '-' ? "imposto(ICMS=)" : "-1") << par;
        else
            EXPECT_TRUE(std::regex_match(vendido("100.00"), cheio)) << par;
    }
}

INSTANTIATE_TEST_SUITE_P(Grupos, Icms, testing::ValuesIn(kCasos),
                         [](const auto &caso) { return caso.param.grupo; });

TEST_F(IcmsAvulso, todo_grupo_tem_o_seu_caso) {
    for (const Grupo &linha : gruposICMS())
        EXPECT_NE(std::ranges::find(kCasos, linha.nome.texto(), &Caso::grupo), std::end(kCasos))
            << linha.nome.texto() << ": no row of kCasos";
}

TEST_F(IcmsAvulso, vale_a_primeira_secao_preenchida_completa_ou_nao) {
    EXPECT_EQ(vendido("10.00"), "-1") << "no section is filled";
    configurarIcms("ICMSSN102", "Orig=0 CSOSN=102");
    configurarIcms("ICMS60", "Orig=0 CST=60");
    EXPECT_TRUE(vendido("10.00").starts_with("imposto(ICMS(ICMS60"));
    configurarIcms("ICMS20", "Orig=0");
    EXPECT_EQ(vendido("10.00"), "-1");
}

TEST_F(IcmsAvulso, remontar_guarda_o_que_a_aplicacao_deu) {
    ST_tagZEL icms("ICMS");
    EXPECT_EQ(remontado(icms), "ICMS=");
    icms.addSubTag(grupo("ICMS30 CST=030 modBCST=4 vICMSST=x pICMSST=0,5"));
    icms.addSubTag(grupo("ICMSPART pICMS=1,8x vICMS="));
    EXPECT_EQ(remontado(icms), "ICMS(ICMS30(CST=030 modBCST=4 vICMSST=25.00 pICMSST=0,5) "
                               "ICMSPART(pICMS=1,8x vICMS=0.90))");
    EXPECT_EQ(remontado(icms.addSubTag(ST_tagZEL("ICMS99"))), "-1");
}

} // namespace zel
