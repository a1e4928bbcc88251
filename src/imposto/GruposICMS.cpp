// SPDX-License-Identifier: MIT
#include "imposto/GruposICMS.h"

#include "imposto/Grupo.h"
#include "recusa/Recusa.h"
#include "texto/Numero.h"
#include "zel_felbor/codigos.h"

#include <array>
#include <utility>

namespace zel {

namespace {

using namespace vocabulario;

// The bases and values of the substitution. They differ from group to group and are kept so: what
// is subtracted is the ICMS itself, or the base, or nothing.
constexpr double baseST(const Parcelas &p) {
    return p.base + p.base * p.pMVAST;
}
constexpr double icmsSTMenosProprio(const Parcelas &p) {
    return p.pICMSST * baseST(p) - impostoProprio(p);
}
constexpr double icmsSTMenosBase(const Parcelas &p) {
    return p.pICMSST * baseST(p) - p.base;
}
constexpr double icmsSTSobreBase(const Parcelas &p) {
    return p.pICMSST * p.base;
}
constexpr double zero(const Parcelas &) {
    return 0;
}

bool temDesoneracao(const Parcelas &p) {
    return formatarMoeda(p.vICMSDeson) != "0.00";
}

// Elements that many groups share.
constexpr Elemento orig = codigo("orig", 1);
constexpr Elemento CST = exigido(codigo("CST", 2));
constexpr Elemento CSOSN = exigido(codigo("CSOSN", 3));
constexpr Elemento modBC = exigido(codigo("modBC", 1));
constexpr Elemento pRedBC = decimal("pRedBC");
constexpr Elemento vBC = calculado("vBC", baseCheia);
constexpr Elemento pICMS = aliquota("pICMS");
constexpr Elemento vICMS = calculado("vICMS", impostoProprio);
constexpr Elemento modBCST = exigido(codigo("modBCST", 1));
constexpr Elemento pMVAST = decimal("pMVAST", &Parcelas::pMVAST);
constexpr Elemento pRedBCST = decimal("pRedBCST");
constexpr Elemento vBCST = calculado("vBCST", baseST);
constexpr Elemento pICMSST = exigido(decimal("pICMSST", &Parcelas::pICMSST));
constexpr Elemento vICMSST = calculado("vICMSST", icmsSTMenosProprio);
constexpr Elemento pCredSN = exigido(decimal("pCredSN"));
constexpr Elemento vCredICMSSN = exigido(decimal("vCredICMSSN"));

constexpr Grupo icms(std::string_view nome, std::initializer_list<Elemento> elementos) {
    return linhaDeGrupo(juntar({R"(IMPOSTO\ICMS\)", nome}), nome, elementos, "Orig");
}

// Groups, elements and their order: Manual de Orientação do Contribuinte 6.0 (September 2015),
// Anexo I, group N. Two elements are not what the layout asks for and are kept: ICMS10 writes its
// CST with seven digits, ICMS30 names its base mode "modBCS". The section check refuses both. An
// item of ICMS00, ICMS40 or ICMS60 is sold without its tax, with an empty `ICMS` tag, when their
// section lacks a required value. In the sums ICMSPart has the spelling that the section check
// gives it; what is summed as ICMSSN900 is spelt "ICMS900", so that the layout's group adds
// nothing: kept.
constexpr auto kGrupos = std::to_array<Grupo>({
    aceitandoVazio(icms("ICMS00", {orig, CST, modBC, vBC, pICMS, vICMS})),
    icms("ICMS10",
         {orig, exigido(codigo("CST", 7)), modBC, vBC, pICMS, vICMS, modBCST, exigido(pMVAST),
          exigido(pRedBCST), vBCST, pICMSST, calculado("vICMSST", icmsSTMenosBase)}),
    icms("ICMS20", {orig, CST, modBC, exigido(pRedBC), vBC, pICMS, vICMS}),
    icms("ICMS30", {orig, CST, daChave("modBCST", exigido(codigo("modBCS", 1))), exigido(pMVAST),
                    exigido(pRedBCST), calculado("vBCST", baseCheia), pICMSST,
                    calculado("vICMSST", icmsSTSobreBase)}),
    aceitandoVazio(icms(
        "ICMS40",
        {orig, CST,
         quando(temDesoneracao, daChave("vICMS", decimal("vICMSDeson", &Parcelas::vICMSDeson))),
         quando(temDesoneracao, texto("motDesICMS"))})),
    icms("ICMS51", {orig, CST, codigo("modBC", 1), pRedBC, vBC, pICMS, vICMS}),
    aceitandoVazio(icms("ICMS60", {orig, CST, decimal("vBCSTRet"), decimal("vICMSSTRet")})),
    icms("ICMS70", {orig, CST, modBC, exigido(pRedBC), vBC, pICMS, vICMS, modBCST, pMVAST, pRedBCST,
                    vBCST, pICMSST, vICMSST}),
    icms("ICMS90", {orig, CST, modBC, vBC, pRedBC, pICMS, vICMS, modBCST, pMVAST, pRedBCST, vBCST,
                    pICMSST, vICMSST}),
    somadoComo("ICMSPART", icms("ICMSPart", {orig, CST, modBC, vBC, pRedBC, pICMS, vICMS, modBCST,
                                             pMVAST, pRedBCST, vBCST, pICMSST, vICMSST,
                                             exigido(decimal("pBCOp")), exigido(texto("UFST"))})),
    icms("ICMSST", {orig, CST, exigido(decimal("vBCSTRet")), exigido(decimal("vICMSSTRet")),
                    exigido(decimal("vBCSTDest")), exigido(decimal("vICMSSTDest"))}),
    icms("ICMSSN101", {exigido(orig), CSOSN, pCredSN, vCredICMSSN}),
    icms("ICMSSN102", {exigido(orig), CSOSN}),
    icms("ICMSSN201", {orig, CSOSN, modBCST, pMVAST, pRedBCST, vBCST, pICMSST,
                       calculado("vICMSST", icmsSTMenosBase), pCredSN, vCredICMSSN}),
    icms("ICMSSN202", {orig, CSOSN, modBCST, pMVAST, pRedBCST, vBCST, pICMSST, vICMSST}),
    icms("ICMSSN500", {orig, CSOSN, exigido(decimal("vBCSTRet")), decimal("vICMSSTRet")}),
    somadoComo(
        "ICMS900",
        icms("ICMSSN900", {exigido(orig), CSOSN, modBC, calculado("vBC", zero), pICMS,
                           calculado("vICMS", zero), modBCST, calculado("vBCST", zero), pICMSST,
                           calculado("vICMSST", zero), pCredSN, calculado("vCredICMSSN", zero)})),
});
static_assert(naOrdemDoArquivo(kGrupos), "rows in another order than src/config/CatalogoTabela.h");

} // namespace

std::span<const Grupo> gruposICMS() {
    return kGrupos;
}

std::optional<Selecao> fnIdentificarImpostoICMS(const Preset &preset) {
    return selecionarGrupo(kGrupos, preset);
}

int fnTratarICMS(const Preset &preset, std::string_view aliquotaVenda, std::string_view base,
                 ST_tagZEL &imposto) {
    const auto selecao = fnIdentificarImpostoICMS(preset);
    const Grupo *grupo = selecao ? selecao->grupo : nullptr;
    if (!grupo) return recusar(Motivo::kSemGrupoIcms);
    const bool doPreset = selecao->fonte == Fonte::kConfTemp;
    ST_tagZEL tag("ICMS");
    if (auto montado = montarGrupo(*grupo, doPreset ? &preset : nullptr, {aliquotaVenda, base, {}}))
        tag.addSubTag(std::move(*montado));
    else if (!grupo->aceitaVazio)
        return jaRecusado(Motivo::kImpostoSemValor);
    imposto.addSubTag(std::move(tag));
    return ZEL_OK;
}

int fnAtualizarICMS(ST_tagZEL &icms, std::string_view base, Mudancas &mudancas) {
    for (std::size_t i = 0; icms.subTags && i < icms.subTags->size(); ++i) {
        ST_tagZEL &guardado = (*icms.subTags)[i];
        const Grupo *grupo = procurarGrupo(kGrupos, guardado.nome);
        if (!grupo) return recusar(Motivo::kGrupoDesconhecido, {.campo = guardado.nome});
        remontarGrupo(*grupo, guardado, {guardado.valorDe("pICMS"), base, {}}, mudancas);
    }
    return ZEL_OK;
}

} // namespace zel
