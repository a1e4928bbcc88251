// SPDX-License-Identifier: MIT
// NT 2025.002, groups UB (items) and W34 (totals). The amounts follow from the rates that the
// document shows: which rates a class has, its owner and the law know.
#include "documento/ConferenciaPartes.h"

#include <algorithm>
#include <cstdlib>

namespace zel::envio {

namespace {

// UB16-10: the base is what the item costs, without the taxes within its price (Complementary Law
// 214/2025, article 12); below zero it is nothing.
struct Parcela {
    std::string_view caminho;
    int sinal;
};
constexpr Parcela kBase[] = {
    {"prod/vProd", 1},
    {"prod/vFrete", 1},
    {"prod/vSeg", 1},
    {"prod/vOutro", 1},
    {"imposto/II/vII", 1},
    {"imposto/IS/vIS", 1},
    {"prod/vDesc", -1},
    {"imposto/PIS/*/vPIS", -1},
    {"imposto/COFINS/*/vCOFINS", -1},
    {"imposto/PISST/vPIS", -1},
    {"imposto/COFINSST/vCOFINS", -1},
    {"imposto/ICMS/*/vICMS", -1},
    {"imposto/ICMS/*/vFCP", -1},
    {"imposto/ICMS/*/vICMSMono", -1},
    {"imposto/ICMSUFDest/vICMSUFDest", -1},
    {"imposto/ICMSUFDest/vFCPUFDest", -1},
    {"imposto/ISSQN/vISSQN", -1},
};

// A rate, and the amount that it makes of the base; each in its group of gIBSCBS.
struct Tributo {
    std::string_view grupo, taxa, valor;
};
constexpr Tributo kTributos[] = {
    {"gIBSUF", "pIBSUF", "vIBSUF"},
    {"gIBSMun", "pIBSMun", "vIBSMun"},
    {"gCBS", "pCBS", "vCBS"},
    {"gTribRegular", "pAliqEfetRegIBSUF", "vTribRegIBSUF"},
    {"gTribRegular", "pAliqEfetRegIBSMun", "vTribRegIBSMun"},
    {"gTribRegular", "pAliqEfetRegCBS", "vTribRegCBS"},
};

constexpr Itens kTodos = Itens::kTodos;
constexpr Soma kSomas[] = {
    {"vBCIBSCBS", "imposto/IBSCBS/gIBSCBS/vBC", kTodos},
    {"gIBS/gIBSUF/vDif", "imposto/IBSCBS/gIBSCBS/gIBSUF/gDif/vDif", kTodos},
    {"gIBS/gIBSUF/vDevTrib", "imposto/IBSCBS/gIBSCBS/gIBSUF/gDevTrib/vDevTrib", kTodos},
    {"gIBS/gIBSUF/vIBSUF", "imposto/IBSCBS/gIBSCBS/gIBSUF/vIBSUF", kTodos},
    {"gIBS/gIBSMun/vDif", "imposto/IBSCBS/gIBSCBS/gIBSMun/gDif/vDif", kTodos},
    {"gIBS/gIBSMun/vDevTrib", "imposto/IBSCBS/gIBSCBS/gIBSMun/gDevTrib/vDevTrib", kTodos},
    {"gIBS/gIBSMun/vIBSMun", "imposto/IBSCBS/gIBSCBS/gIBSMun/vIBSMun", kTodos},
    {"gIBS/vIBS", "imposto/IBSCBS/gIBSCBS/vIBS", kTodos},
    {"gIBS/vCredPres", "imposto/IBSCBS/gIBSCBS/gIBSCredPres/vCredPres", kTodos},
    {"gIBS/vCredPresCondSus", "imposto/IBSCBS/gIBSCBS/gIBSCredPres/vCredPresCondSus", kTodos},
    {"gCBS/vDif", "imposto/IBSCBS/gIBSCBS/gCBS/gDif/vDif", kTodos},
    {"gCBS/vDevTrib", "imposto/IBSCBS/gIBSCBS/gCBS/gDevTrib/vDevTrib", kTodos},
    {"gCBS/vCBS", "imposto/IBSCBS/gIBSCBS/gCBS/vCBS", kTodos},
    {"gCBS/vCredPres", "imposto/IBSCBS/gIBSCBS/gCBSCredPres/vCredPres", kTodos},
    {"gCBS/vCredPresCondSus", "imposto/IBSCBS/gIBSCBS/gCBSCredPres/vCredPresCondSus", kTodos},
    {"gMono/vIBSMono", "imposto/IBSCBS/gIBSCBSMono/gMonoPadrao/vIBSMono", kTodos},
    {"gMono/vCBSMono", "imposto/IBSCBS/gIBSCBSMono/gMonoPadrao/vCBSMono", kTodos},
    {"gMono/vIBSMonoReten", "imposto/IBSCBS/gIBSCBSMono/gMonoReten/vIBSMonoReten", kTodos},
    {"gMono/vCBSMonoReten", "imposto/IBSCBS/gIBSCBSMono/gMonoReten/vCBSMonoReten", kTodos},
    {"gMono/vIBSMonoRet", "imposto/IBSCBS/gIBSCBSMono/gMonoRet/vIBSMonoRet", kTodos},
    {"gMono/vCBSMonoRet", "imposto/IBSCBS/gIBSCBSMono/gMonoRet/vCBSMonoRet", kTodos},
};

constexpr std::int64_t kCemPorCento = 1'000'000; // in ten-thousandths

std::int64_t decimosDeMilesimo(const Decimal &taxa) {
    std::string texto = taxa.texto(4, 4, 3).value_or("0");
    texto.erase(std::remove(texto.begin(), texto.end(), '.'), texto.end());
    return std::strtoll(texto.c_str(), nullptr, 10);
}

// pAliqEfet = the rate less pRedAliq of it, to four decimals. The one that counts.
Decimal taxaEfetiva(const No &grupo, const Tributo &tributo, Valores &valores) {
    const Decimal plena = valores.taxa(grupo, tributo.taxa);
    const No gRed = grupo.filho("gRed");
    if (!gRed) return plena;
    const Decimal efetiva = valores.taxa(gRed, "pAliqEfet");
    const std::int64_t resto = kCemPorCento - decimosDeMilesimo(valores.taxa(gRed, "pRedAliq"));
    const std::int64_t erro = decimosDeMilesimo(efetiva) * kCemPorCento -
                              decimosDeMilesimo(plena) * std::max<std::int64_t>(resto, 0);
    if (2 * std::abs(erro) > kCemPorCento)
        valores.diferir(gRed, "pAliqEfet", gRed.texto("pAliqEfet"),
                        "não é " + std::string(tributo.taxa) + " " + grupo.texto(tributo.taxa) +
                            " reduzida em " + gRed.texto("pRedAliq") + "%");
    return efetiva;
}

void conferirTributo(const No &gIBSCBS, const Tributo &tributo, Centavos vBC, Valores &valores) {
    const No grupo = gIBSCBS.filho(tributo.grupo);
    if (!grupo) return;
    const Decimal taxa = taxaEfetiva(grupo, tributo, valores);
    const Centavos certo = taxa.porCentoDe(vBC) - valores.em(grupo, "gDif/vDif") -
                           valores.em(grupo, "gDevTrib/vDevTrib");
    valores.exigir(grupo, tributo.valor, certo,
                   taxa.texto(4, 4, 3).value_or("") + "% de " + textoDe(vBC) +
                       ", menos o diferido e o devolvido, são " + textoDe(certo));
}

void conferirItem(const No &det, Valores &valores) {
    const No gIBSCBS = det.filho("imposto/IBSCBS/gIBSCBS");
    if (!gIBSCBS) return;
    Centavos base = 0;
    for (const auto &[caminho, sinal] : kBase)
        base += sinal * valores.em(det, caminho);
    base = std::max<Centavos>(base, 0);
    valores.exigir(gIBSCBS, "vBC", base,
                   "a base do item, sem os tributos que estão no preço, é " + textoDe(base) +
                       " (UB16-10)");
    const Centavos vBC = valores.em(gIBSCBS, "vBC");
    for (const Tributo &tributo : kTributos)
        conferirTributo(gIBSCBS, tributo, vBC, valores);
    const Centavos vIBS =
        valores.em(gIBSCBS, "gIBSUF/vIBSUF") + valores.em(gIBSCBS, "gIBSMun/vIBSMun");
    valores.exigir(gIBSCBS, "vIBS", vIBS, "vIBSUF e vIBSMun somam " + textoDe(vIBS));
}

} // namespace

bool conferirIbsCbs(const No &infNFe, const std::vector<No> &itens, bool exigido, Valores &valores,
                    Recusas &recusas) {
    const bool algum = std::any_of(itens.begin(), itens.end(), [](const No &det) {
        return static_cast<bool>(det.filho("imposto/IBSCBS"));
    });
    const No total = infNFe.filho("total/IBSCBSTot");
    if (!algum && !total && !exigido) return false;
    constexpr std::string_view kFalta = "falta: o CRT e a data da emissão pedem IBS e CBS";
    for (const No &det : itens) {
        if (exigido && !det.filho("imposto/IBSCBS"))
            recusas.juntar(lugarDe(det, "imposto/IBSCBS"), "", kFalta);
        conferirItem(det, valores);
    }
    if (!total)
        recusas.juntar(lugarDe(infNFe, "total/IBSCBSTot"), "",
                       algum ? "falta, e há itens com IBS e CBS" : kFalta);
    for (const Soma &soma : kSomas)
        if (total) conferirSoma(total, itens, soma, valores);
    return true;
}

} // namespace zel::envio
