// SPDX-License-Identifier: MIT
#include "imposto/GruposContribuicao.h"

#include "imposto/Grupo.h"
#include "recusa/Recusa.h"
#include "texto/Numero.h"
#include "texto/TextoXml.h"
#include "zel_felbor/codigos.h"

#include <span>
#include <utility>

namespace zel {

namespace {

using namespace vocabulario;

constexpr double porQuantidade(const Parcelas &p) {
    return p.quantidade * p.vAliqProd / 100;
}
constexpr double quantidadeVendida(const Parcelas &p) {
    return p.quantidade;
}
constexpr bool temAliquota(const Parcelas &p) {
    return p.temAliquota;
}
constexpr bool semAliquota(const Parcelas &p) {
    return !p.temAliquota;
}

// One of the two contributions: its own names.
struct Tributo {
    std::string_view sigla;        // "PIS"
    std::string_view aliquota;     // "pPIS"
    std::string_view imposto;      // "vPIS"
    std::string_view secaoCstQtde; // section of the quantity group's CST, when not its own
};

// The quantity group of PIS reads the CST of the percentage section, and is kept so.
constexpr Tributo kPis{"PIS", "pPIS", "vPIS", R"(IMPOSTO\PIS\PISALIQ)"};
constexpr Tributo kCofins{"COFINS", "pCOFINS", "vCOFINS", {}};

constexpr Elemento CST = codigo("CST", 2);
constexpr Elemento vBC = calculado("vBC", baseCheia);
constexpr Elemento vAliqProd = valor("vAliqProd", &Parcelas::vAliqProd);
constexpr Elemento qBCProd = quantidade("qBCProd");
constexpr Elemento qBCProdDuasCasas = calculado("qBCProd", quantidadeVendida);

constexpr Grupo linha(const Tributo &t, std::string_view sufixo,
                      std::initializer_list<Elemento> elementos, std::optional<Fonte> fonte = {}) {
    const auto nome = juntar({t.sigla, sufixo});
    return linhaDeGrupo(juntar({R"(IMPOSTO\)", t.sigla, R"(\)", nome}), nome, elementos, "CST",
                        fonte);
}

// Groups, elements and their order: Manual de Orientação do Contribuinte 6.0 (September 2015),
// Anexo I, groups Q and R (PIS), S and T (COFINS). The substitution groups have no CST key, so no
// configuration can choose them.
constexpr std::array<Grupo, 7> linhas(const Tributo &t) {
    const Elemento pT = aliquota(t.aliquota);
    const Elemento vT = calculado(t.imposto, impostoProprio);
    const Elemento vTporQuantidade = calculado(t.imposto, porQuantidade);
    return {
        linha(t, "Aliq", {CST, vBC, pT, vT}),
        linha(t, "Qtde", {daSecao(t.secaoCstQtde, CST), qBCProdDuasCasas, exigido(vAliqProd), vT},
              Fonte::kZelXml),
        linha(t, "Qtde", {CST, qBCProdDuasCasas, vAliqProd, vTporQuantidade}, Fonte::kConfTemp),
        linha(t, "NT", {CST}),
        linha(t, "Outr", {CST, vBC, pT, qBCProd, exigido(vAliqProd), vT}, Fonte::kZelXml),
        linha(t, "Outr",
              {CST, quando(temAliquota, vBC), quando(temAliquota, pT), quando(semAliquota, qBCProd),
               quando(semAliquota, vAliqProd), vTporQuantidade},
              Fonte::kConfTemp),
        linha(t, "ST", {vBC, pT, qBCProd, decimal("vAliqProd"), vT}, Fonte::kZelXml),
    };
}

constexpr auto kGruposPIS = linhas(kPis);
constexpr auto kGruposCOFINS = linhas(kCofins);
static_assert(naOrdemDoArquivo(kGruposPIS) && naOrdemDoArquivo(kGruposCOFINS),
              "rows in another order than src/config/CatalogoTabela.h");

constexpr Grupo kISSQN = linhaDeGrupo(R"(IMPOSTO\ISSQN)", "ISSQN",
                                      {vBC, aliquota("vAliq"), calculado("vISSQN", impostoProprio),
                                       exigido(codigo("cMunFG", 7)),
                                       exigido(codigo("cListServ", 4)), exigido(texto("cSitTrib"))},
                                      {});

int tratar(const Tributo &t, const std::optional<Selecao> &selecao, const Preset &preset,
           const ValoresItem &valores, ST_tagZEL &imposto) {
    if (!selecao) return ZEL_OK;
    const Grupo *grupo = selecao->grupo;
    if (!grupo) return recusar(Motivo::kGrupoDesconhecido, {.campo = preset.grupo});
    const bool doPreset = selecao->fonte == Fonte::kConfTemp;
    auto montado = montarGrupo(*grupo, doPreset ? &preset : nullptr, valores);
    if (!montado) return jaRecusado(Motivo::kImpostoSemValor);
    ST_tagZEL tag(t.sigla);
    tag.addSubTag(std::move(*montado));
    imposto.addSubTag(std::move(tag));
    return ZEL_OK;
}

// A stored group keeps no trace of the source it was built from, so one rule rebuilds them all.
void remontarContribuicao(const Tributo &t, const Grupo &grupo, ST_tagZEL &guardado,
                          const ValoresItem &valores, Mudancas &mudancas) {
    const auto trocar = [&](std::string_view nome, std::string_view texto) {
        if (ST_tagZEL *elemento = guardado.getSubTag(nome)) mudancas.trocarValor(*elemento, texto);
    };
    const double baseNova = lerNumero(valores.base);
    const double quantidadeNova = lerNumero(valores.quantidade);
    trocar("vBC", formatarMoeda(baseNova));
    const Elemento *qtde = grupo.elemento("qBCProd");
    trocar("qBCProd", qtde && qtde->formato == Formato::kCalculado ? formatarMoeda(quantidadeNova)
                                                                   : valorXml(valores.quantidade));
    if (guardado.getSubTag(t.aliquota)) {
        const double taxa = lerNumero(guardado.valorDe(t.aliquota));
        trocar(t.imposto, formatarMoeda(baseNova * taxa / 100));
    } else if (guardado.getSubTag("vAliqProd")) {
        const double porUnidade = lerNumero(guardado.valorDe("vAliqProd"));
        trocar(t.imposto, formatarMoeda(quantidadeNova * porUnidade / 100));
    }
}

int atualizar(const Tributo &t, std::span<const Grupo> grupos, ST_tagZEL &tributo,
              const ValoresItem &valores, Mudancas &mudancas) {
    for (std::size_t i = 0; tributo.subTags && i < tributo.subTags->size(); ++i) {
        ST_tagZEL &guardado = (*tributo.subTags)[i];
        const Grupo *grupo = procurarGrupo(grupos, guardado.nome);
        if (!grupo) return recusar(Motivo::kGrupoDesconhecido, {.campo = guardado.nome});
        remontarContribuicao(t, *grupo, guardado, valores, mudancas);
    }
    return ZEL_OK;
}

} // namespace

std::span<const Grupo> gruposPIS() {
    return kGruposPIS;
}

std::span<const Grupo> gruposCOFINS() {
    return kGruposCOFINS;
}
std::span<const Grupo> gruposISSQN() {
    return {&kISSQN, 1};
}

std::optional<Selecao> fnIdentificarImpostoPIS(const Preset &preset) {
    return selecionarGrupo(kGruposPIS, preset);
}

std::optional<Selecao> fnIdentificarImpostoCOFINS(const Preset &preset) {
    return selecionarGrupo(kGruposCOFINS, preset);
}

int fnTratarPIS(const Preset &preset, std::string_view aliquotaVenda, std::string_view base,
                std::string_view quantidade, ST_tagZEL &imposto) {
    return tratar(kPis, fnIdentificarImpostoPIS(preset), preset, {aliquotaVenda, base, quantidade},
                  imposto);
}

int fnTratarCOFINS(const Preset &preset, std::string_view aliquotaVenda, std::string_view base,
                   std::string_view quantidade, ST_tagZEL &imposto) {
    return tratar(kCofins, fnIdentificarImpostoCOFINS(preset), preset,
                  {aliquotaVenda, base, quantidade}, imposto);
}

int fnTratarISS(std::string_view aliquotaVenda, std::string_view base, ST_tagZEL &imposto) {
    auto issqn = montarGrupo(kISSQN, nullptr, {aliquotaVenda, base, {}});
    if (!issqn) return jaRecusado(Motivo::kImpostoSemValor);
    imposto.addSubTag(std::move(*issqn));
    return ZEL_OK;
}

int fnAtualizarPIS(ST_tagZEL &pis, std::string_view base, std::string_view quantidade,
                   Mudancas &mudancas) {
    return atualizar(kPis, kGruposPIS, pis, {{}, base, quantidade}, mudancas);
}

int fnAtualizarCOFINS(ST_tagZEL &cofins, std::string_view base, std::string_view quantidade,
                      Mudancas &mudancas) {
    return atualizar(kCofins, kGruposCOFINS, cofins, {{}, base, quantidade}, mudancas);
}

int fnAtualizarISS(ST_tagZEL &issqn, std::string_view base, Mudancas &mudancas) {
    remontarGrupo(kISSQN, issqn, {issqn.valorDe("vAliq"), base, {}}, mudancas);
    return ZEL_OK;
}

} // namespace zel
