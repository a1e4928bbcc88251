// SPDX-License-Identifier: MIT
#include "traducao/IbsCbs.h"

#include "traducao/Motor.h"
#include "traducao/Somas.h"

#include <algorithm>

namespace zel::envio {

namespace {

// From when on documents of these taxpayers must have the groups. NT 2025.002, version 1.30; the
// dates have moved before: [ibs_cbs] desde has the last word.
struct Inicio {
    std::string_view CRT, tpAmb, desde;
};
constexpr Inicio kInicios[] = {
    {"3", "1", "2026-01-05"},
    {"3", "2", "2025-10-06"},
    {"124", "12", "2027-01-04"},
};

// Rates in percent, in ten-thousandths; below zero: not fixed yet. Complementary Law 214/2025,
// articles 343 to 347; tests before 2026 are made with the rates of 2026.
struct Ano {
    std::string_view desde;
    int pIBSUF, pIBSMun, pCBS;
};
constexpr Ano kAnos[] = {
    {"2025-10-06", 1000, 0, 9000},
    {"2027-01-01", 500, 500, -1},
    {"2029-01-01", -1, -1, -1},
};

constexpr std::string_view kNunca = "nunca";
constexpr std::string_view kIntegral = "000"; // CST without reduction or exemption

std::string_view desdeQuando(const Configuracao &config, std::string_view CRT,
                             std::string_view tpAmb) {
    if (!config.ibsCbs.desde.empty()) return config.ibsCbs.desde;
    for (const Inicio &inicio : kInicios)
        if (inicio.CRT.find(CRT) != inicio.CRT.npos &&
            inicio.tpAmb.find(tpAmb) != inicio.tpAmb.npos)
            return inicio.desde;
    return kNunca;
}

std::optional<TaxasIbsCbs> taxasDe(const Configuracao &config, std::string_view dia) {
    const TaxasIbsCbs *daLoja = nullptr;
    for (const auto &taxas : config.ibsCbs.taxas)
        if (taxas.desde <= dia && (daLoja == nullptr || daLoja->desde <= taxas.desde))
            daLoja = &taxas;
    const Ano *ano = nullptr;
    for (const Ano &este : kAnos)
        if (este.desde <= dia) ano = &este;
    if (daLoja != nullptr && (ano == nullptr || daLoja->desde >= ano->desde)) return *daLoja;
    if (ano == nullptr || ano->pCBS < 0) return {};
    return TaxasIbsCbs{
        std::string(ano->desde), {ano->pIBSUF, 4}, {ano->pIBSMun, 4}, {ano->pCBS, 4}};
}

// A base is what the item costs, without the taxes that are within its price (rule UB16-10). The
// till has no vII, vIS, vICMSUFDest and vICMSMono.
constexpr std::string_view kSomam[] = {"prod/vProd", "prod/vFrete", "prod/vSeg", "prod/vOutro"};
constexpr std::string_view kDiminuem[] = {
    "prod/vDesc",          "imposto/PIS/*/vPIS",       "imposto/COFINS/*/vCOFINS",
    "imposto/PISST/vPIS",  "imposto/COFINSST/vCOFINS", "imposto/ICMS/*/vICMS",
    "imposto/ICMS/*/vFCP", "imposto/ISSQN/vISSQN"};

Centavos baseDe(const No &det) {
    Centavos base = 0;
    for (const std::string_view caminho : kSomam)
        base += valorEm(det, caminho);
    for (const std::string_view caminho : kDiminuem)
        base -= valorEm(det, caminho);
    return std::max<Centavos>(base, 0);
}

// A rate less a percentage of it, to four decimals; half goes up.
Decimal efetiva(const Decimal &taxa, const Decimal &reducao) {
    constexpr Centavos kCem = 1000000; // 100 in ten-thousandths
    return {Decimal(kCem - reducao.porCentoDe(kCem), 4).porCentoDe(taxa.porCentoDe(kCem)), 4};
}

const ClasseTributaria *classeDe(const Lugar &lugar) {
    const Configuracao &config = lugar.contexto.config;
    const ConfigProduto &produto = lugar.item->produto;
    const bool doProduto = !produto.cClassTrib.empty();
    const std::string &CST = doProduto ? produto.CST : config.ibsCbs.CST;
    const std::string &cClassTrib = doProduto ? produto.cClassTrib : config.ibsCbs.cClassTrib;
    for (const auto &classe : config.ibsCbs.classes)
        if (classe.cClassTrib == cClassTrib && (CST.empty() || classe.CST == CST)) return &classe;
    static const ClasseTributaria kPlena{"000", "000001", {}, false};
    if (cClassTrib == kPlena.cClassTrib && CST == kIntegral) return &kPlena;
    recusar(lugar, "IBSCBS/cClassTrib", cClassTrib,
            "a classe não está na tabela que [ibs_cbs] classes de zel-envio.toml nomeia");
    return nullptr;
}

std::string comoTaxa(const Decimal &taxa) {
    return taxa.texto(4, 4, 3).value_or("");
}

// One tax: the rate, the effective one where there is a reduction, and the amount.
Centavos umTributo(const ValoresIbsCbs &v, const Decimal &taxa, std::string &escrita,
                   std::string &efetivaEscrita) {
    escrita = comoTaxa(taxa);
    if (v.pRedAliq.empty()) return taxa.porCentoDe(v.vBC);
    const Decimal reduzida = efetiva(taxa, v.classe->reducao);
    efetivaEscrita = comoTaxa(reduzida);
    return reduzida.porCentoDe(v.vBC);
}

} // namespace

bool exigeIbsCbs(const Configuracao &config, std::string_view CRT, std::string_view tpAmb,
                 std::string_view dia) {
    const std::string_view desde = desdeQuando(config, CRT, tpAmb);
    return CRT.size() == 1 && desde != kNunca && dia >= desde;
}

RegimeIbsCbs regimeIbsCbs(const Configuracao &config, std::string_view CRT, std::string_view tpAmb,
                          std::string_view dia, Recusas &recusas) {
    if (!exigeIbsCbs(config, CRT, tpAmb, dia)) return {};
    const auto taxas = taxasDe(config, dia);
    if (!taxas) {
        recusas.juntar("ide/dhEmi", dia,
                       "não há alíquotas de IBS e CBS para este dia: configure [[ibs_cbs.taxas]] "
                       "em zel-envio.toml");
        return {};
    }
    return {true, *taxas};
}

bool calcularIbsCbs(const Lugar &imposto) {
    const RegimeIbsCbs &regime = imposto.contexto.regime;
    if (!regime.exigido) return false;
    ValoresIbsCbs &v = imposto.item->ibsCbs;
    v.classe = classeDe(imposto);
    if (v.classe == nullptr) return false;
    v.comValores = !v.classe->semValores;
    if (!v.comValores) return true;
    v.vBC = baseDe(imposto.item->novo);
    if (!v.classe->reducao.zero()) v.pRedAliq = comoTaxa(v.classe->reducao);
    v.vIBSUF = umTributo(v, regime.taxas.pIBSUF, v.pIBSUF, v.efIBSUF);
    v.vIBSMun = umTributo(v, regime.taxas.pIBSMun, v.pIBSMun, v.efIBSMun);
    v.vCBS = umTributo(v, regime.taxas.pCBS, v.pCBS, v.efCBS);
    return true;
}

bool comIbsCbs(const Lugar &total) {
    return total.contexto.regime.exigido;
}

bool algumValorIbsCbs(const Lugar &total) {
    const auto itens = total.contexto.nova.filhos("det");
    return std::any_of(itens.begin(), itens.end(), [](const No &det) {
        return static_cast<bool>(det.filho("imposto/IBSCBS/gIBSCBS"));
    });
}

} // namespace zel::envio
