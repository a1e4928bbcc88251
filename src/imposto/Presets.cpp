// SPDX-License-Identifier: MIT
#include "imposto/Presets.h"

#include "emcurso/ZEL_Controle.h"
#include "recusa/Recusa.h"
#include "texto/Numero.h"
#include "texto/Texto.h"
#include "texto/TextoXml.h"
#include "zel_felbor/codigos.h"

#include <algorithm>
#include <initializer_list>
#include <string>

namespace zel {

std::string_view Preset::valor(std::string_view elemento) const {
    for (const auto &valor : valores)
        if (valor.elemento == elemento) return valor.texto;
    return {};
}

namespace {

// The names of a tax's groups and of its rate.
struct Tributo {
    std::string_view aliq, qtde, nt, outr, aliquota;
};

constexpr Tributo kPis{"PiSAliq", "PISQtde", "PISNT", "PISOutr", "pPIS"};
constexpr Tributo kCofins{"COFINSAliq", "COFINSQtde", "COFINSNT", "COFINSOutr", "pCOFINS"};

// An argument in plain characters, and how many of them it may have.
struct Limite {
    std::string_view campo, simples;
    std::size_t minimo, maximo;

    bool cabe() const { return simples.size() >= minimo && simples.size() <= maximo; }
};

// The first one that does not fit; null when all do. It is one of those given.
const Limite *primeiroFora(std::initializer_list<Limite> limites) {
    const auto fora = std::ranges::find_if(limites, [](const Limite &um) { return !um.cabe(); });
    return fora == limites.end() ? nullptr : fora;
}

int recusarTamanho(const Limite &limite) {
    return recusar(Motivo::kArgumentoForaDoTamanho, {.campo = limite.campo,
                                                     .dado = limite.simples,
                                                     .minimo = static_cast<int>(limite.minimo),
                                                     .maximo = static_cast<int>(limite.maximo)});
}

// The steps of every preset operation, in order: the state, the erasing, the bounds, the storing. A
// refused preset thus leaves its tax without any.
int definirPreset(Preset &preset, std::string_view grupo, const Limite *fora,
                  std::initializer_list<Preset::Valor> valores) {
    const int estado = fnCFVerificarStatus_ZEL();
    if (estado < kAberto || estado > kTotalizado)
        return recusarNoEstado(Motivo::kImpostoForaDoEstado);
    preset = {};
    if (fora != nullptr) return recusarTamanho(*fora);
    preset.grupo = grupo;
    std::copy(valores.begin(), valores.end(), preset.valores.begin());
    return ZEL_OK;
}

std::string duasCasas(std::string_view simples) {
    return formatarMoeda(lerDecimal(trocarVirgula(simples)));
}

// ICMS40 and ICMS60: two codes with bounds, two more texts without.
int presetIcms(Preset &preset, std::string_view grupo, std::string_view origem,
               std::string_view cst, Preset::Valor terceiro, Preset::Valor quarto) {
    const std::string orig = textoSimples(origem), CST = textoSimples(cst);
    return definirPreset(preset, grupo, primeiroFora({{"origem", orig, 1, 1}, {"cst", CST, 2, 2}}),
                         {{"orig", {orig}}, {"CST", {CST}}, terceiro, quarto});
}

int presetAliq(Preset &preset, const Tributo &tributo, std::string_view cst,
               std::string_view aliquota) {
    const std::string CST = textoSimples(cst), taxa = textoSimples(aliquota);
    return definirPreset(preset, tributo.aliq,
                         primeiroFora({{"cst", CST, 2, 2}, {"aliquota", taxa, 1, 6}}),
                         {{"CST", {CST}}, {tributo.aliquota, {duasCasas(taxa)}}});
}

int presetQtde(Preset &preset, const Tributo &tributo, std::string_view cst,
               std::string_view valorUnidade) {
    const std::string CST = textoSimples(cst), valor = textoSimples(valorUnidade);
    return definirPreset(preset, tributo.qtde,
                         primeiroFora({{"cst", CST, 2, 2}, {"valorUnidade", valor, 1, 14}}),
                         {{"CST", {CST}}, {"vAliqProd", {valor}}});
}

int presetNT(Preset &preset, const Tributo &tributo, std::string_view cst) {
    const std::string CST = textoSimples(cst);
    return definirPreset(preset, tributo.nt, primeiroFora({{"cst", CST, 2, 2}}), {{"CST", {CST}}});
}

int presetOutr(Preset &preset, const Tributo &tributo, std::string_view cst,
               std::string_view aliquota, std::string_view valorUnidade) {
    const std::string CST = textoSimples(cst), taxa = textoSimples(aliquota),
                      valor = textoSimples(valorUnidade);
    // One of the two suffices.
    const Limite daTaxa{"aliquota", taxa, 1, 6}, doValor{"valorUnidade", valor, 1, 14};
    return definirPreset(
        preset, tributo.outr, primeiroFora({{"cst", CST, 2, 2}, doValor.cabe() ? doValor : daTaxa}),
        {{"CST", {CST}}, {tributo.aliquota, {duasCasas(taxa)}}, {"vAliqProd", {duasCasas(valor)}}});
}

} // namespace

int fnCFConfICMS00_ZEL_Felbor(ST_tagImpostoConfTemp &presets, std::string_view origem,
                              std::string_view cst, std::string_view modBC,
                              std::string_view aliquota) {
    const std::string orig = textoSimples(origem), CST = textoSimples(cst),
                      modo = textoSimples(modBC), taxa = textoSimples(aliquota);
    const double centesimos = lerDecimal(fnRetirarCaracter(taxa));
    return definirPreset(presets.icms, "ICMS00",
                         primeiroFora({{"origem", orig, 1, 1},
                                       {"cst", CST, 2, 2},
                                       {"modBC", modo, 1, 1},
                                       {"aliquota", taxa, 2, 5}}),
                         {{"orig", {orig}},
                          {"CST", {CST}},
                          {"modBC", {modo}},
                          {"pICMS", {formatarMoeda(centesimos / 100)}}});
}

int fnCFConfICMS40_ZEL_Felbor(ST_tagImpostoConfTemp &presets, std::string_view origem,
                              std::string_view cst, std::string_view vICMSDeson,
                              std::string_view motDesICMS) {
    return presetIcms(presets.icms, "ICMS40", origem, cst,
                      {"vICMSDeson", {textoSimples(vICMSDeson)}},
                      {"motDesICMS", {textoSimples(motDesICMS)}});
}

int fnCFConfICMS60_ZEL_Felbor(ST_tagImpostoConfTemp &presets, std::string_view origem,
                              std::string_view cst, std::string_view vBCSTRet,
                              std::string_view vICMSSTRet) {
    return presetIcms(presets.icms, "ICMS60", origem, cst, {"vBCSTRet", {textoSimples(vBCSTRet)}},
                      {"vICMSSTRet", {textoSimples(vICMSSTRet)}});
}

int fnCFConfPisAliq_ZEL_Felbor(ST_tagImpostoConfTemp &presets, std::string_view cst,
                               std::string_view aliquota) {
    return presetAliq(presets.pis, kPis, cst, aliquota);
}

int fnCFConfCofinsAliq_ZEL_Felbor(ST_tagImpostoConfTemp &presets, std::string_view cst,
                                  std::string_view aliquota) {
    return presetAliq(presets.cofins, kCofins, cst, aliquota);
}

int fnCFConfPisQtde_ZEL_Felbor(ST_tagImpostoConfTemp &presets, std::string_view cst,
                               std::string_view valorUnidade) {
    return presetQtde(presets.pis, kPis, cst, valorUnidade);
}

int fnCFConfCofinsQtde_ZEL_Felbor(ST_tagImpostoConfTemp &presets, std::string_view cst,
                                  std::string_view valorUnidade) {
    return presetQtde(presets.cofins, kCofins, cst, valorUnidade);
}

int fnCFConfPisNT_ZEL_Felbor(ST_tagImpostoConfTemp &presets, std::string_view cst) {
    return presetNT(presets.pis, kPis, cst);
}

int fnCFConfCofinsNT_ZEL_Felbor(ST_tagImpostoConfTemp &presets, std::string_view cst) {
    return presetNT(presets.cofins, kCofins, cst);
}

int fnCFConfPisOutr_ZEL_Felbor(ST_tagImpostoConfTemp &presets, std::string_view cst,
                               std::string_view aliquota, std::string_view valorUnidade) {
    return presetOutr(presets.pis, kPis, cst, aliquota, valorUnidade);
}

int fnCFConfCofinsOutr_ZEL_Felbor(ST_tagImpostoConfTemp &presets, std::string_view cst,
                                  std::string_view aliquota, std::string_view valorUnidade) {
    return presetOutr(presets.cofins, kCofins, cst, aliquota, valorUnidade);
}

int fnCFValorLeiImposto_ZEL_Felbor(TotalImposto &total, std::string_view texto) {
    const std::string aparado = trim(texto);
    if (aparado.empty()) return recusar(Motivo::kArgumentoVazio, {.campo = "valor", .dado = texto});
    total = aparado;
    return ZEL_OK;
}

int fnZerarConfTempICMS(ST_tagImpostoConfTemp &presets) {
    presets.icms = {};
    return ZEL_OK;
}

int fnZerarConfTempPIS(ST_tagImpostoConfTemp &presets) {
    presets.pis = {};
    return ZEL_OK;
}

int fnZerarConfTempCONFINS(ST_tagImpostoConfTemp &presets) {
    presets.cofins = {};
    return ZEL_OK;
}

} // namespace zel
