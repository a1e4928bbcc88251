#include "imposto/Presets.h"

#include "ZEL_FelborFramework.h"
#include "documento/ZEL_Controle.h"
#include "util/Numero.h"
#include "util/Texto.h"
#include "util/TextoXml.h"

#include <algorithm>
#include <initializer_list>
#include <string>

namespace zel {

ST_tagImpostoConfTemp G_stTagImpostoConfTemp;

std::string_view Preset::valor(std::string_view elemento) const {
    for (const auto &valor : valores)
        if (valor.elemento == elemento) return valor.texto;
    return {};
}

namespace {

// One tax: its place in the record, the names of its groups and of its rate.
struct Tributo {
    Preset ST_tagImpostoConfTemp::*preset;
    std::string_view aliq, qtde, nt, outr, aliquota;
};

constexpr Tributo kIcms{&ST_tagImpostoConfTemp::icms, {}, {}, {}, {}, {}};
constexpr Tributo kPis{
    &ST_tagImpostoConfTemp::pis, "PiSAliq", "PISQtde", "PISNT", "PISOutr", "pPIS"};
constexpr Tributo kCofins{&ST_tagImpostoConfTemp::cofins,
                          "COFINSAliq",
                          "COFINSQtde",
                          "COFINSNT",
                          "COFINSOutr",
                          "pCOFINS"};

// An argument with the bounds of its length in characters.
struct Argumento {
    std::string texto; // plain characters
    std::size_t minimo;
    std::size_t maximo;

    Argumento(std::string_view dado, std::size_t min, std::size_t max)
        : texto(textoSimples(dado)), minimo(min), maximo(max) {}

    bool cabe() const { return texto.size() >= minimo && texto.size() <= maximo; }
};

// State and erasing, in front of the bounds: a refused preset leaves its tax without any.
bool prepararPreset(const Tributo &tributo) {
    const int estado = fnCFVerificarStatus_ZEL();
    if (estado < kAberto || estado > kTotalizado) return false;
    G_stTagImpostoConfTemp.*tributo.preset = {};
    return true;
}

bool cabem(std::initializer_list<const Argumento *> argumentos) {
    return std::all_of(argumentos.begin(), argumentos.end(),
                       [](const Argumento *argumento) { return argumento->cabe(); });
}

int guardar(const Tributo &tributo, std::string_view grupo,
            std::initializer_list<Preset::Valor> valores) {
    Preset &preset = G_stTagImpostoConfTemp.*tributo.preset;
    preset.grupo = grupo;
    std::copy(valores.begin(), valores.end(), preset.valores.begin());
    return ZEL_OK;
}

std::string duasCasas(std::string_view texto) {
    return formatarMoeda(lerDecimal(trocarVirgula(texto)));
}

// ICMS40 and ICMS60: two codes with bounds, two more texts without.
int presetIcms(std::string_view grupo, const Argumento &origem, const Argumento &cst,
               Preset::Valor terceiro, Preset::Valor quarto) {
    if (!prepararPreset(kIcms)) return ZEL_ESTADO_INVALIDO;
    if (!cabem({&origem, &cst})) return ZEL_ARGUMENTO_INVALIDO;
    return guardar(kIcms, grupo,
                   {{"orig", {origem.texto}}, {"CST", {cst.texto}}, terceiro, quarto});
}

int presetAliq(const Tributo &tributo, const Argumento &cst, const Argumento &aliquota) {
    if (!prepararPreset(tributo)) return ZEL_ESTADO_INVALIDO;
    if (!cabem({&cst, &aliquota})) return ZEL_ARGUMENTO_INVALIDO;
    return guardar(tributo, tributo.aliq,
                   {{"CST", {cst.texto}}, {tributo.aliquota, {duasCasas(aliquota.texto)}}});
}

int presetQtde(const Tributo &tributo, const Argumento &cst, const Argumento &valorUnidade) {
    if (!prepararPreset(tributo)) return ZEL_ESTADO_INVALIDO;
    if (!cabem({&cst, &valorUnidade})) return ZEL_ARGUMENTO_INVALIDO;
    return guardar(tributo, tributo.qtde,
                   {{"CST", {cst.texto}}, {"vAliqProd", {trocarVirgula(valorUnidade.texto)}}});
}

int presetNT(const Tributo &tributo, const Argumento &cst) {
    if (!prepararPreset(tributo)) return ZEL_ESTADO_INVALIDO;
    if (!cst.cabe()) return ZEL_ARGUMENTO_INVALIDO;
    return guardar(tributo, tributo.nt, {{"CST", {cst.texto}}});
}

int presetOutr(const Tributo &tributo, const Argumento &cst, const Argumento &aliquota,
               const Argumento &valorUnidade) {
    if (!prepararPreset(tributo)) return ZEL_ESTADO_INVALIDO;
    if (!cst.cabe() || (!aliquota.cabe() && !valorUnidade.cabe())) return ZEL_ARGUMENTO_INVALIDO;
    return guardar(tributo, tributo.outr,
                   {{"CST", {cst.texto}},
                    {tributo.aliquota, {duasCasas(aliquota.texto)}},
                    {"vAliqProd", {duasCasas(valorUnidade.texto)}}});
}

} // namespace

int fnCFConfICMS00_ZEL_Felbor(std::string_view origem, std::string_view cst, std::string_view modBC,
                              std::string_view aliquota) {
    const Argumento argOrigem(origem, 1, 1), argCst(cst, 2, 2), argModo(modBC, 1, 1),
        argAliquota(aliquota, 2, 5);
    if (!prepararPreset(kIcms)) return ZEL_ESTADO_INVALIDO;
    if (!cabem({&argOrigem, &argCst, &argModo, &argAliquota})) return ZEL_ARGUMENTO_INVALIDO;
    const double centesimos = lerDecimal(fnRetirarCaracter(argAliquota.texto));
    return guardar(kIcms, "ICMS00",
                   {{"orig", {argOrigem.texto}},
                    {"CST", {argCst.texto}},
                    {"modBC", {argModo.texto}},
                    {"pICMS", {formatarMoeda(centesimos / 100)}}});
}

int fnCFConfICMS40_ZEL_Felbor(std::string_view origem, std::string_view cst,
                              std::string_view vICMSDeson, std::string_view motDesICMS) {
    return presetIcms("ICMS40", {origem, 1, 1}, {cst, 2, 2},
                      {"vICMSDeson", {textoSimples(vICMSDeson)}},
                      {"motDesICMS", {textoSimples(motDesICMS)}});
}

int fnCFConfICMS60_ZEL_Felbor(std::string_view origem, std::string_view cst,
                              std::string_view vBCSTRet, std::string_view vICMSSTRet) {
    return presetIcms("ICMS60", {origem, 1, 1}, {cst, 2, 2}, {"vBCSTRet", {textoSimples(vBCSTRet)}},
                      {"vICMSSTRet", {textoSimples(vICMSSTRet)}});
}

int fnCFConfPisAliq_ZEL_Felbor(std::string_view cst, std::string_view aliquota) {
    return presetAliq(kPis, {cst, 2, 2}, {aliquota, 1, 6});
}

int fnCFConfCofinsAliq_ZEL_Felbor(std::string_view cst, std::string_view aliquota) {
    return presetAliq(kCofins, {cst, 2, 2}, {aliquota, 1, 6});
}

int fnCFConfPisQtde_ZEL_Felbor(std::string_view cst, std::string_view valorUnidade) {
    return presetQtde(kPis, {cst, 2, 2}, {valorUnidade, 1, 14});
}

int fnCFConfCofinsQtde_ZEL_Felbor(std::string_view cst, std::string_view valorUnidade) {
    return presetQtde(kCofins, {cst, 2, 2}, {valorUnidade, 1, 14});
}

int fnCFConfPisNT_ZEL_Felbor(std::string_view cst) {
    return presetNT(kPis, {cst, 2, 2});
}

int fnCFConfCofinsNT_ZEL_Felbor(std::string_view cst) {
    return presetNT(kCofins, {cst, 2, 2});
}

int fnCFConfPisOutr_ZEL_Felbor(std::string_view cst, std::string_view aliquota,
                               std::string_view valorUnidade) {
    return presetOutr(kPis, {cst, 2, 2}, {aliquota, 1, 6}, {valorUnidade, 1, 14});
}

int fnCFConfCofinsOutr_ZEL_Felbor(std::string_view cst, std::string_view aliquota,
                                  std::string_view valorUnidade) {
    return presetOutr(kCofins, {cst, 2, 2}, {aliquota, 1, 6}, {valorUnidade, 1, 14});
}

int fnZerarConfTempICMS() {
    G_stTagImpostoConfTemp.icms = {};
    return ZEL_OK;
}

int fnZerarConfTempPIS() {
    G_stTagImpostoConfTemp.pis = {};
    return ZEL_OK;
}

int fnZerarConfTempCONFINS() {
    G_stTagImpostoConfTemp.cofins = {};
    return ZEL_OK;
}

} // namespace zel
