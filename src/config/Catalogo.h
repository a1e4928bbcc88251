// SPDX-License-Identifier: MIT
// The catalogue of the configuration file: every group and key in file order, with the longest
// value of each key in characters and its default (stZELTAGs), and the look-up of a key by its
// path. Knows neither values nor files.
#pragma once

#include "config/CatalogoTabela.h"
#include "texto/Campo.h"
#include "texto/Texto.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace zel {

// The place of a key in the catalogue.
struct Chave {
    std::uint16_t indice;
    friend constexpr bool operator==(Chave, Chave) = default;
};

// Where an entry stands in the tree of groups.
struct LugarEntrada {
    std::uint16_t grupo; // the group directly around it; the root's is the root
    std::uint16_t fim;   // a group's closing entry; a key's own place
    std::uint8_t nivel;  // groups around it, for a closing entry those around its group
};

inline constexpr auto kLugares = [] {
    std::array<LugarEntrada, kTotalEntradas> lugares{};
    std::uint16_t grupo = 0;
    std::uint8_t nivel = 0;
    for (std::uint16_t i = 0; i < kTotalEntradas; ++i) {
        if (stZELTAGs[i].tipo == TipoEntrada::kFechaGrupo) {
            lugares[grupo].fim = i;
            lugares[i] = {lugares[grupo].grupo, i, --nivel};
            grupo = lugares[grupo].grupo;
            continue;
        }
        lugares[i] = {grupo, i, nivel};
        if (stZELTAGs[i].tipo == TipoEntrada::kAbreGrupo) {
            grupo = i;
            ++nivel;
        }
    }
    return lugares;
}();

// The first key or group directly under `grupo` that `aceita(indice)` takes.
template <class Aceita>
constexpr std::optional<std::uint16_t> procurarNoGrupo(std::uint16_t grupo, Aceita aceita) {
    for (std::uint16_t i = grupo; ++i < kLugares[grupo].fim; i = kLugares[i].fim)
        if (aceita(i)) return i;
    return std::nullopt;
}

// The key that a path names, groups and key joined by "\\", without regard to case; the first one
// when a name stands twice in its group. "IDE\NF" is another name of "IDE\nNF". Usable at compile
// time.
constexpr std::optional<Chave> procurarChave(std::string_view caminho) {
    if (igualSemCaixa(caminho, R"(IDE\NF)")) caminho = R"(IDE\nNF)";
    std::uint16_t grupo = 0;
    for (;;) {
        const std::size_t barra = caminho.find('\\');
        const bool ultimo = barra == caminho.npos;
        const auto tipo = ultimo ? TipoEntrada::kChave : TipoEntrada::kAbreGrupo;
        const std::string_view nome = caminho.substr(0, barra);
        const auto achado = procurarNoGrupo(grupo, [&](std::uint16_t i) {
            return stZELTAGs[i].tipo == tipo && igualSemCaixa(stZELTAGs[i].nome, nome);
        });
        if (!achado) return std::nullopt;
        if (ultimo) return Chave{*achado};
        grupo = *achado;
        caminho.remove_prefix(barra + 1);
    }
}

inline constexpr std::size_t kMaiorCaminhoDeChave = 80;

// The path of a key, which finds it again but for its second name in a group.
constexpr Campo<kMaiorCaminhoDeChave> caminhoDa(Chave chave) {
    std::array<char, kMaiorCaminhoDeChave> bytes{};
    std::size_t inicio = bytes.size();
    for (std::uint16_t i = chave.indice; i != 0; i = kLugares[i].grupo) {
        const std::string_view nome = stZELTAGs[i].nome;
        if (inicio != bytes.size()) bytes[--inicio] = '\\';
        inicio -= nome.size();
        std::copy(nome.begin(), nome.end(), bytes.begin() + static_cast<std::ptrdiff_t>(inicio));
    }
    return std::string_view(bytes.data() + inicio, bytes.size() - inicio);
}

// A path known when the library is compiled; a path that names no key stops the compilation.
consteval Chave operator""_chave(const char *caminho, std::size_t tamanho) {
    return procurarChave({caminho, tamanho}).value();
}

// The key whose value the key reads and writes: its own, but for the production address of RS,
// which has always been kept in AC's place.
constexpr Chave donaDoValor(Chave chave) {
    constexpr Chave kProducaoRS = R"(URLS\RS\Producao)"_chave;
    return chave == kProducaoRS ? R"(URLS\AC\Producao)"_chave : chave;
}

} // namespace zel
