// SPDX-License-Identifier: MIT
// Finds the catalogue's groups and keys in the text of a configuration file, whatever else stands
// there: which entries are present, where the values lie, where a missing entry has its place.
// Takes time proportional to the length of any text, but for the sorting of its end tags; keeps
// places only, never a value.
#pragma once

#include "config/Catalogo.h"

#include <array>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace zel {

inline constexpr std::size_t kAusente = std::string_view::npos;

enum class FormaElemento {
    kCompleto, // "<key>value</key>"
    kSemFim,   // "<key>value" in front of another end tag
    kVazio,    // "<key/>"
};

// The value of one key in the text: the characters from `inicio` up to, not including, `fim`; in an
// empty element what follows its name, which makes way for a value with its tags.
struct ElementoConfig {
    Chave chave;
    std::size_t inicio;
    std::size_t fim;
    FormaElemento forma;

    bool operator==(const ElementoConfig &) const = default;
    std::string_view valor(std::string_view texto) const {
        return forma == FormaElemento::kVazio ? "" : texto.substr(inicio, fim - inicio);
    }
};

// Where a group ends: the place of its end tag, or in an empty element ("<GROUP/>") what follows
// its name, from `inicio` up to, not including, `fim`.
struct FimDeGrupo {
    std::size_t inicio = kAusente;
    std::size_t fim = kAusente;

    bool operator==(const FimDeGrupo &) const = default;
    bool existe() const { return inicio != kAusente; }
    bool vazio() const { return fim != inicio; }
};

struct Varredura {
    // In the order of the text. The n-th element of a name within a group belongs to the n-th entry
    // of that name, further ones to the last.
    std::vector<ElementoConfig> elementos;
    std::size_t totalEntendidos = 0;  // those in front of the first thing that is not understood
    bool regular = true;              // nothing was met but what the catalogue knows
    std::size_t fimDaRaiz = kAusente; // after the root's end tag
    std::array<bool, kTotalEntradas> presentes{};          // keys and groups, by entry
    std::array<FimDeGrupo, kTotalEntradas> fimDosGrupos{}; // the first one, by opening entry

    std::span<const ElementoConfig> entendidos() const {
        return std::span(elementos).first(totalEntendidos);
    }
    bool operator==(const Varredura &) const = default;
    bool inteira() const { return regular && fimDaRaiz != kAusente; }
};

// None when the text lacks "<FRAMEWORKZEL>" or "</FRAMEWORKZEL>".
std::optional<Varredura> varrerConfig(std::string_view texto);

} // namespace zel
