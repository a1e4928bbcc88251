// SPDX-License-Identifier: MIT
// What every tax group is: a row of a table that names its elements in order, where their contents
// come from, their format and formula, which must be filled, the key that chooses it, and what it
// adds to the totals. The rows' order is that of choice. One builder, one rebuilder and the sums
// work from such rows; the rows themselves stand with their taxes (GruposICMS, GruposContribuicao).
#pragma once

#include "config/Catalogo.h"
#include "imposto/Presets.h"
#include "secao/Mudancas.h"
#include "secao/Tag.h"
#include "texto/Campo.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <string_view>

namespace zel {

// The item's numbers that a group is computed from, as decimal texts: the rate of the sale (or the
// one stored in the group), the tax base and the quantity.
struct ValoresItem {
    std::string_view aliquota;
    std::string_view base;
    std::string_view quantidade;
};

// The operands of the formulas. The substitution percentages are factors (0.40 for 40 %).
struct Parcelas {
    double base = 0;
    double aliquota = 0;
    bool temAliquota = false; // the group's own rate is filled
    double quantidade = 0;
    double pMVAST = 0;
    double pICMSST = 0;
    double vAliqProd = 0;
    double vICMSDeson = 0;
};

using Formula = double (*)(const Parcelas &);
using Condicao = bool (*)(const Parcelas &);

enum class Formato {
    kCodigo,     // a whole number, zeros in front up to `largura` digits
    kDecimal,    // two decimals
    kTexto,      // as given
    kValor,      // as given, its first comma turned into a point
    kAliquota,   // the rate with two decimals; a preset may bring its own
    kQuantidade, // the quantity as given
    kCalculado,  // the formula's result with two decimals
};

// Has its own key in the configuration; the rest comes from the sale.
constexpr bool ehConfigurado(Formato formato) {
    return formato <= Formato::kValor;
}

struct Elemento {
    std::string_view nome;
    Formato formato = Formato::kDecimal;
    int largura = 0;
    Formula formula = nullptr;           // of a computed element
    double Parcelas::*parcela = nullptr; // the operand that a given value is
    Condicao presente = nullptr;         // left out when it does not hold; always there without one
    bool exigido = false;                // the group cannot be built while it is empty
    std::string_view nomeChave = {};     // its configuration key, when not named as the element
    std::string_view secao = {};         // the path of its section, when not the group's own
    std::optional<Chave> chave = {}; // resolved by `linhaDeGrupo`; none when it comes from the sale
};

// Where a group's codes and percentages come from: the preset or the configuration.
enum class Fonte { kConfTemp, kZelXml };

struct Grupo {
    Campo<12> nome;
    std::optional<Fonte> fonte; // none: the row serves both sources
    std::array<Elemento, 15> elementos;
    std::size_t quantidade = 0;
    std::optional<Chave> escolha = {};  // chooses it when it is filled; none: only a preset does
    bool aceitaVazio = false;           // without a required value the item is sold without its tax
    std::string_view nomeNasSomas = {}; // that its values are summed under, when not its own

    constexpr std::span<const Elemento> lista() const { return {elementos.data(), quantidade}; }
    const Elemento *elemento(std::string_view procurado) const;

    std::string_view somadoComo() const {
        return nomeNasSomas.empty() ? nome.texto() : nomeNasSomas;
    }
    // Whether the element's value counts in the totals: it does in whatever group has it. An
    // element that is configured under the name counts as well: a relieved ICMS that is stored as
    // `vICMS`.
    bool soma(std::string_view elemento) const;
};

// The vocabulary of the tables.
namespace vocabulario {

constexpr Elemento codigo(std::string_view nome, int largura) {
    return {.nome = nome, .formato = Formato::kCodigo, .largura = largura};
}
constexpr Elemento decimal(std::string_view nome, double Parcelas::*parcela = nullptr) {
    return {.nome = nome, .parcela = parcela};
}
constexpr Elemento texto(std::string_view nome) {
    return {.nome = nome, .formato = Formato::kTexto};
}
constexpr Elemento valor(std::string_view nome, double Parcelas::*parcela) {
    return {.nome = nome, .formato = Formato::kValor, .parcela = parcela};
}
constexpr Elemento aliquota(std::string_view nome) {
    return {.nome = nome, .formato = Formato::kAliquota};
}
constexpr Elemento quantidade(std::string_view nome) {
    return {.nome = nome, .formato = Formato::kQuantidade};
}
constexpr Elemento calculado(std::string_view nome, Formula formula) {
    return {.nome = nome, .formato = Formato::kCalculado, .formula = formula};
}
constexpr Elemento exigido(Elemento elemento) {
    elemento.exigido = true;
    return elemento;
}
constexpr Elemento quando(Condicao condicao, Elemento elemento) {
    elemento.presente = condicao;
    return elemento;
}
constexpr Elemento daChave(std::string_view nomeChave, Elemento elemento) {
    elemento.nomeChave = nomeChave;
    return elemento;
}
constexpr Elemento daSecao(std::string_view secao, Elemento elemento) {
    elemento.secao = secao;
    return elemento;
}

// Formulas that all taxes share.
constexpr double baseCheia(const Parcelas &p) {
    return p.base;
}
constexpr double impostoProprio(const Parcelas &p) {
    return p.base * p.aliquota / 100;
}

// Names joined while the tables are compiled.
constexpr Campo<64> juntar(std::initializer_list<std::string_view> partes) {
    std::array<char, 64> bytes{};
    auto fim = bytes.begin();
    for (const auto parte : partes)
        fim = std::copy(parte.begin(), parte.end(), fim);
    return std::string_view{bytes.data(), static_cast<std::size_t>(fim - bytes.begin())};
}

// A row whose keys stand in the section at the path; a key that the catalogue does not have stops
// the compilation of a constexpr table.
constexpr Grupo linhaDeGrupo(std::string_view secao, std::string_view nome,
                             std::initializer_list<Elemento> elementos, std::string_view escolha,
                             std::optional<Fonte> fonte = {}) {
    Grupo grupo{.nome = nome, .fonte = fonte, .elementos = {}, .quantidade = elementos.size()};
    std::copy(elementos.begin(), elementos.end(), grupo.elementos.begin());
    for (auto &elemento : grupo.elementos) {
        if (elemento.nome.empty() || !ehConfigurado(elemento.formato)) continue;
        const auto onde = elemento.secao.empty() ? secao : elemento.secao;
        const auto chave = elemento.nomeChave.empty() ? elemento.nome : elemento.nomeChave;
        elemento.chave = procurarChave(juntar({onde, "\\", chave}));
        if (!elemento.chave) throw "a key of this row is not in src/config/CatalogoTabela.h";
    }
    // No configuration can choose a section without that key.
    if (!escolha.empty() && fonte != Fonte::kConfTemp)
        grupo.escolha = procurarChave(juntar({secao, "\\", escolha}));
    return grupo;
}
// `zel conferir` and docs/configuracao.md take the order of the keys for the order of choice.
constexpr bool naOrdemDoArquivo(std::span<const Grupo> grupos) {
    std::uint16_t ultima = 0;
    for (const Grupo &grupo : grupos) {
        if (!grupo.escolha) continue;
        if (grupo.escolha->indice < ultima) return false;
        ultima = grupo.escolha->indice;
    }
    return true;
}
constexpr Grupo aceitandoVazio(Grupo grupo) {
    grupo.aceitaVazio = true;
    return grupo;
}
constexpr Grupo somadoComo(std::string_view nome, Grupo grupo) {
    grupo.nomeNasSomas = nome;
    return grupo;
}

} // namespace vocabulario

// A decimal text of the application, its comma counting as a point.
double lerNumero(std::string_view texto);

// The row of the group that a selection or a stored tag names, without regard to case; null when
// there is none. With a source, only a row that serves it.
const Grupo *procurarGrupo(std::span<const Grupo> grupos, std::string_view nome,
                           std::optional<Fonte> fonte = {});

// The group in force for an item, which an unknown name in a preset is none of, and where it comes
// from.
struct Selecao {
    const Grupo *grupo;
    Fonte fonte;
};

// The preset's group, else the first one whose key of choice is filled; none when neither is.
std::optional<Selecao> selecionarGrupo(std::span<const Grupo> grupos, const Preset &preset);

// Builds the group's tag from the preset or, when it is null, from the configuration. None when a
// required value is missing. Empty optional numbers are written as zero, an empty optional text
// empty.
std::optional<ST_tagZEL> montarGrupo(const Grupo &grupo, const Preset *preset,
                                     const ValoresItem &valores);

// Computes every computed value of the stored group anew by the row's formulas; everything else,
// and which elements there are in which order, stays as stored.
void remontarGrupo(const Grupo &grupo, ST_tagZEL &guardado, const ValoresItem &valores,
                   Mudancas &mudancas);

} // namespace zel
