// SPDX-License-Identifier: MIT
// What the marks of a receipt ask for, by their names in comum/Marcas.h: two tables of those that
// mean something on paper. The others are known and do nothing.
#pragma once

#include "Modelo.h"
#include "comum/Marcas.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace zel::cupom {

// In force from its opening to its closing marker.
struct MarcaDeTexto {
    std::string_view nome;
    bool Estilo::*primeira = nullptr;
    bool Estilo::*segunda = nullptr;
    Alinhamento alinhamento = Alinhamento::kEsquerda;
};

constexpr std::array<MarcaDeTexto, 9> kMarcasDeTexto{{
    {"b", &Estilo::negrito},
    {"i", &Estilo::italico},
    {"ad", nullptr, nullptr, Alinhamento::kDireita},
    {"s", &Estilo::sublinhado},
    {"e", &Estilo::larguraDupla},
    {"c", &Estilo::condensado},
    {"ce", nullptr, nullptr, Alinhamento::kCentro},
    {"da", &Estilo::alturaDupla},
    {"xl", &Estilo::larguraDupla, &Estilo::alturaDupla},
}};
constexpr std::string_view kLetrasNormais = "n"; // the letters of all the others end

enum class Acao { kNenhuma, kLinha, kAvanco, kCorte, kLogotipo, kQr };

struct MarcaDeConteudo {
    std::string_view nome;
    Acao acao = Acao::kNenhuma;
};

constexpr std::array<MarcaDeConteudo, 5> kMarcasDeConteudo{{
    {"l", Acao::kLinha},
    {"gui", Acao::kCorte},
    {"bmp", Acao::kLogotipo},
    {"sl", Acao::kAvanco},
    {"qrcode", Acao::kQr},
}};

// The meanings of all names, in the order of the names: an empty one for those without.
template <class Marca, std::size_t N, std::size_t M>
consteval std::array<Marca, N> porNome(const std::array<std::string_view, N> &nomes,
                                       const std::array<Marca, M> &tabela) {
    std::array<Marca, N> todas{};
    for (const Marca &marca : tabela)
        todas[marcas::indiceDe(nomes, marca.nome)] =
            marca; // a name without a place does not compile
    return todas;
}
constexpr auto kSentidosDeTexto = porNome(marcas::kDeTexto, kMarcasDeTexto);
constexpr auto kSentidosDeConteudo = porNome(marcas::kDeConteudo, kMarcasDeConteudo);

} // namespace zel::cupom
