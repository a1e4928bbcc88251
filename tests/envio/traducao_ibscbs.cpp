// SPDX-License-Identifier: MIT
// IBS and CBS to the cent, against arithmetic of its own; and sums over thousands of receipts.
#include "Juiz.h"
#include "Nota.h"

#include "documento/Conferencia.h"

#include <array>
#include <random>

using namespace zel::envio;
using namespace zel::envio::teste;

namespace {

constexpr const char *kGrupo = "det/imposto/IBSCBS";

Nota notaDe(const std::string &CRT, const std::string &tpAmb, const std::string &dia) {
    Nota nota;
    nota.CRT = CRT;
    if (CRT == "1" || CRT == "4") nota.itens[0].imposto = icms("ICMSSN102", "orig=0 CSOSN=102");
    nota.tpAmb = tpAmb;
    nota.dhEmi = dia + "T12:00:00-03:00";
    return nota;
}

Configuracao comClasses() {
    Configuracao config;
    config.ibsCbs.classes = {{"000", "000001", {}, false},
                             {"200", "200003", Decimal(100, 0), false},
                             {"200", "200034", Decimal(60, 0), false},
                             {"410", "410999", {}, true}};
    return config;
}

} // namespace

TEST(IbsCbs, sao_exigidos_por_regime_ambiente_e_dia) {
    const struct {
        const char *CRT, *tpAmb, *dia, *desde;
        bool exigidos;
    } kCasos[] = {
        {"3", "1", "2026-01-04", "", false},          {"3", "1", "2026-01-05", "", true},
        {"3", "2", "2025-10-05", "", false},          {"3", "2", "2025-10-06", "", true},
        {"1", "1", "2026-12-31", "", false},          {"2", "2", "2026-12-31", "", false},
        {"4", "1", "2026-12-31", "", false},          {"3", "1", "2026-06-30", "nunca", false},
        {"1", "1", "2026-06-30", "2026-06-30", true}, {"3", "1", "2026-06-29", "2026-06-30", false},
    };
    for (const auto &[CRT, tpAmb, dia, desde, exigidos] : kCasos) {
        Configuracao config;
        config.ibsCbs.desde = desde;
        const auto traduzida = traduzir(notaDe(CRT, tpAmb, dia), config);
        ASSERT_TRUE(traduzida.documento) << traduzida.recusas.texto();
        EXPECT_EQ(static_cast<bool>(traduzida.no(kGrupo)), exigidos) << CRT << ' ' << dia;
        EXPECT_EQ(static_cast<bool>(traduzida.no("total/IBSCBSTot")), exigidos) << dia;
    }
}

TEST(IbsCbs, um_ano_sem_aliquotas_e_recusado_ate_que_a_configuracao_as_diga) {
    Configuracao config;
    for (const char *dia : {"2027-01-04", "2029-06-30"})
        EXPECT_TRUE(traduzir(notaDe("3", "1", dia), config).recusou("ide/dhEmi")) << dia;
    config.ibsCbs.taxas = {{"2027-01-01", Decimal(5, 2), Decimal(5, 2), Decimal(88, 1)}};
    const auto traduzida = traduzir(notaDe("3", "1", "2028-12-31"), config);
    EXPECT_EQ(traduzida.texto("det/imposto/IBSCBS/gIBSCBS/gIBSMun"), "0.05000.01");
    EXPECT_EQ(traduzida.texto("det/imposto/IBSCBS/gIBSCBS/gCBS"), "8.80001.44");
    EXPECT_TRUE(traduzir(notaDe("3", "1", "2029-01-01"), config).recusou("ide/dhEmi"));
}

TEST(IbsCbs, classe_reducao_e_base_sao_as_do_produto) {
    const struct {
        const char *classe, *grupo, *total; // of an item of 20.00 with 3.60 of ICMS
    } kCasos[] = {
        {"", "00000000116.400.10000.020.00000.000.020.90000.15",
         "16.400.000.000.020.000.000.000.020.000.000.000.000.150.000.00"},
        {"200034",
         "20020003416.400.100060.00000.04000.010.000060.00000.00000.000.010.900060.00000.36000.06",
         "16.400.000.000.010.000.000.000.010.000.000.000.000.060.000.00"},
        {"200003",
         "20020000316.400.1000100.00000.00000.000.0000100.00000.00000.000.000.9000100.00000.0000"
         "0.00",
         "16.400.000.000.000.000.000.000.000.000.000.000.000.000.000.00"},
        {"410999", "410410999", "0.00"},
    };
    for (const auto &[classe, grupo, total] : kCasos) {
        Configuracao config = comClasses();
        config.ncm["0901"].cClassTrib = "410999";
        config.ncm["0901"].CST = "410";
        auto &produto = config.produtos["101"];
        produto.cClassTrib = *classe == '\0' ? "000001" : classe;
        produto.CST = produto.cClassTrib.substr(0, 3);
        const auto traduzida = traduzir(notaDe("3", "1", "2026-06-30"), config);
        EXPECT_EQ(traduzida.texto(kGrupo), grupo);
        EXPECT_EQ(traduzida.texto("total/IBSCBSTot"), total);
    }
    Configuracao config = comClasses();
    config.produtos["101"].cClassTrib = "200999";
    EXPECT_TRUE(
        traduzir(notaDe("3", "1", "2026-06-30"), config).recusou("det/imposto/IBSCBS/cClassTrib"));
    Nota cara = notaDe("3", "1", "2026-06-30"); // taxes above the price: the base is nothing
    cara.itens[0].imposto =
        icms("ICMS00", "orig=0 CST=00 modBC=3 vBC=20.00 pICMS=99.00 vICMS=20.01");
    EXPECT_EQ(traduzir(cara).texto("det/imposto/IBSCBS/gIBSCBS/vBC"), "0.00");
}

namespace {

struct Acaso {
    std::mt19937 motor;
    explicit Acaso(unsigned semente) : motor(semente) {}
    std::int64_t ate(std::int64_t maximo) {
        return static_cast<std::int64_t>(motor() % static_cast<unsigned long>(maximo + 1));
    }
};

// Half a cent goes up, in whole numbers: valor x por / de.
std::int64_t parte(std::int64_t valor, std::int64_t por, std::int64_t de) {
    return (2 * valor * por + de) / (2 * de);
}

std::string dinheiro(std::int64_t centavos) {
    std::string texto = std::to_string(centavos);
    if (texto.size() < 3) texto.insert(0, 3 - texto.size(), '0');
    return texto.insert(texto.size() - 2, ".");
}

// What a receipt must come to, counted while it is made up.
struct Esperado {
    std::int64_t vBC = 0, vICMS = 0, vFCP = 0, vProd = 0, vDesc = 0, vOutro = 0, vPIS = 0,
                 vCOFINS = 0, vServ = 0, vISS = 0, base = 0, ibs = 0, cbs = 0;
    std::int64_t vNF() const { return vProd + vServ + vOutro - vDesc; }
};

struct Classe {
    const char *cProd;
    std::int64_t fica; // percent of the rates; below zero: no values
};
constexpr std::array<Classe, 4> kClasses{{{"1", 100}, {"2", 40}, {"3", 0}, {"4", -1}}};

// A service's tax, or those of goods: each gives what of it is within the price.
std::int64_t sortearServico(Acaso &acaso, std::int64_t liquido, ItemNota &item, Esperado &soma) {
    const std::int64_t taxa = acaso.ate(500), iss = parte(liquido, taxa, 10000);
    item.imposto =
        grupo("ISSQN",
              elementos("vBC=" + dinheiro(liquido) + " vAliq=" + dinheiro(taxa) +
                        " vISSQN=" + dinheiro(iss) + " cMunFG=4314902 cListServ=0101 cSitTrib=N"));
    soma.vISS += iss;
    return iss;
}

std::int64_t sortearMercadoria(Acaso &acaso, std::int64_t liquido, ItemNota &item, Esperado &soma) {
    std::int64_t dentro = 0;
    const std::string vBC = " vBC=" + dinheiro(liquido);
    item.imposto = icms("ICMS40", "orig=0 CST=41");
    if (acaso.ate(1) == 0) {
        const std::int64_t taxa = acaso.ate(2500), imposto = parte(liquido, taxa, 10000);
        item.imposto =
            icms("ICMS20", "orig=0 CST=20 modBC=3 pRedBC=0.00" + vBC + " pICMS=" + dinheiro(taxa) +
                               " vICMS=" + dinheiro(imposto));
        const std::int64_t fundo = parte(liquido, 2, 100);
        soma.vBC += liquido;
        soma.vICMS += imposto;
        soma.vFCP += fundo;
        dentro += imposto + fundo;
    }
    if (acaso.ate(1) == 0) {
        const std::int64_t pis = parte(liquido, 165, 10000), cofins = parte(liquido, 76, 1000);
        const std::string p = "CST=01" + vBC + " pPIS=1.65 vPIS=" + dinheiro(pis),
                          c = "CST=01" + vBC + " pCOFINS=7.60 vCOFINS=" + dinheiro(cofins);
        item.imposto += grupo("PIS", grupo("PISAliq", elementos(p))) +
                        grupo("COFINS", grupo("COFINSAliq", elementos(c)));
        soma.vPIS += pis;
        soma.vCOFINS += cofins;
        dentro += pis + cofins;
    }
    return dentro;
}

ItemNota sortear(Acaso &acaso, Esperado &soma) {
    ItemNota item;
    const Classe &classe = kClasses[static_cast<std::size_t>(acaso.ate(3))];
    const std::int64_t bruto = 1 + acaso.ate(acaso.ate(3) == 0 ? 9999999 : 9999);
    const std::int64_t ajuste = acaso.ate(2) == 0 ? acaso.ate(bruto - 1) : 0;
    const bool desconto = acaso.ate(1) == 0;
    const std::int64_t liquido = desconto ? bruto - ajuste : bruto + ajuste;
    item.cProd = classe.cProd;
    item.quantidade = "1.0000";
    item.preco = item.vProd = dinheiro(bruto);
    (desconto ? item.vDesc : item.vOutro) = dinheiro(ajuste);
    (desconto ? soma.vDesc : soma.vOutro) += ajuste;
    const bool servico = acaso.ate(7) == 0;
    (servico ? soma.vServ : soma.vProd) += bruto;
    const std::int64_t dentro =
        (servico ? sortearServico : sortearMercadoria)(acaso, liquido, item, soma);
    if (classe.fica < 0) return item;
    const std::int64_t base = std::max<std::int64_t>(liquido - dentro, 0);
    soma.base += base;
    soma.ibs += parte(base, classe.fica, 100000);
    soma.cbs += parte(base, 9 * classe.fica, 100000);
    return item;
}

} // namespace

TEST(IbsCbs, somas_de_milhares_de_cupons_sao_as_de_uma_conta_a_parte) {
    Configuracao config = comClasses();
    config.padrao.pFCP = Decimal(2, 0);
    config.padrao.indISS = "1";
    config.padrao.indIncentivo = "2";
    const char *const kNomes[] = {"000001", "200034", "200003", "410999"};
    for (std::size_t i = 0; i < kClasses.size(); ++i) {
        config.produtos[kClasses[i].cProd].cClassTrib = kNomes[i];
        config.produtos[kClasses[i].cProd].CST = std::string(kNomes[i], 3);
    }
    for (unsigned semente = 0; semente < 1500; ++semente) {
        Acaso acaso(semente);
        Esperado soma;
        Nota nota = notaDe("3", "1", "2026-06-30");
        nota.itens.clear();
        for (std::int64_t i = acaso.ate(4); i >= 0; --i)
            nota.itens.push_back(sortear(acaso, soma));
        nota.vNF = nota.pagamentos[0].second = dinheiro(soma.vNF());
        const auto traduzida = traduzir(nota, config);
        ASSERT_TRUE(traduzida.documento) << semente << '\n' << traduzida.recusas.texto();
        const bool valores = soma.base > 0 || traduzida.no("total/IBSCBSTot/gIBS");
        const std::pair<const char *, std::int64_t> kTotais[] = {
            {"ICMSTot/vBC", soma.vBC},     {"ICMSTot/vICMS", soma.vICMS},
            {"ICMSTot/vFCP", soma.vFCP},   {"ICMSTot/vProd", soma.vProd},
            {"ICMSTot/vDesc", soma.vDesc}, {"ICMSTot/vOutro", soma.vOutro},
            {"ICMSTot/vPIS", soma.vPIS},   {"ICMSTot/vCOFINS", soma.vCOFINS},
            {"ICMSTot/vNF", soma.vNF()},   {"IBSCBSTot/vBCIBSCBS", soma.base},
        };
        for (const auto &[nome, valor] : kTotais)
            ASSERT_EQ(traduzida.texto("total/" + std::string(nome)), dinheiro(valor)) << semente;
        if (valores) {
            ASSERT_EQ(traduzida.texto("total/IBSCBSTot/gIBS/vIBS"), dinheiro(soma.ibs)) << semente;
            ASSERT_EQ(traduzida.texto("total/IBSCBSTot/gCBS/vCBS"), dinheiro(soma.cbs)) << semente;
        }
        ASSERT_EQ(traduzida.texto("total/ISSQNtot/vISS"), soma.vISS > 0 ? dinheiro(soma.vISS) : "")
            << semente;
        if (semente % 8 != 0) continue;
        ASSERT_EQ(Juiz::unico().julgar(*traduzida.documento), "") << semente;
        // And as somebody else's document would be looked at: it lacks signature and QR code alone.
        std::vector<std::string> olhado;
        Recusas achados;
        verificarNfce(*traduzida.documento, config, nullptr, olhado, achados);
        for (const auto &achado : achados.lista())
            ASSERT_TRUE(achado.campo == "NFe/Signature" || achado.campo == "NFe/infNFeSupl/qrCode")
                << semente << '\n'
                << achados.texto();
    }
}
