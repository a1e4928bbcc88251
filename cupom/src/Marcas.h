// SPDX-License-Identifier: MIT
// The names of the mark-up and what each of them asks for: two tables, of names whose content is
// text of the receipt, and of names whose content is not.
#pragma once

#include "Modelo.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace zel::cupom {

// In force from its opening to its closing marker. A name without letters and without an alignment
// has no meaning on paper, except "n".
struct MarcaDeTexto {
    std::string_view nome;
    bool Estilo::*primeira = nullptr;
    bool Estilo::*segunda = nullptr;
    Alinhamento alinhamento = Alinhamento::kEsquerda;
};

constexpr std::array<MarcaDeTexto, 12> kMarcasDeTexto{{
    {"b", &Estilo::negrito},
    {"i", &Estilo::italico},
    {"ad", nullptr, nullptr, Alinhamento::kDireita},
    {"s", &Estilo::sublinhado},
    {"e", &Estilo::larguraDupla},
    {"c", &Estilo::condensado},
    {"n"}, // the letters of all the others end
    {"ce", nullptr, nullptr, Alinhamento::kCentro},
    {"tb"},
    {"da", &Estilo::alturaDupla},
    {"xl", &Estilo::larguraDupla, &Estilo::alturaDupla},
    {"fe"},
}};
constexpr std::string_view kLetrasNormais = "n";

enum class Acao { kNenhuma, kLinha, kAvanco, kCorte, kLogotipo, kQr };

struct MarcaDeConteudo {
    std::string_view nome;
    Acao acao = Acao::kNenhuma;
};

constexpr std::array<MarcaDeConteudo, 31> kMarcasDeConteudo{{
    {"l", Acao::kLinha},
    {"dt"},
    {"hr"},
    {"dti"},
    {"hri"},
    {"g"},
    {"a"},
    {"gui", Acao::kCorte},
    {"bmp", Acao::kLogotipo},
    {"sl", Acao::kAvanco},
    {"sn"},
    {"slm"},
    {"qrcode", Acao::kQr},
    {"ean13"},
    {"ean8"},
    {"code93"},
    {"code39"},
    {"codabar"},
    {"cespl"},
    {"mg"},
    {"ibmp"},
    {"confgui"},
    {"sp"},
    {"tc"},
    {"upc-a"},
    {"msi"},
    {"code11"},
    {"pdf"},
    {"code128"},
    {"i2of5"},
    {"s2of5"},
}};

// Place of a name in its table; the table's size when it is not there.
template <class Tabela>
constexpr std::size_t indiceDe(const Tabela &tabela, std::string_view nome) {
    return static_cast<std::size_t>(
        std::find_if(tabela.begin(), tabela.end(),
                     [=](const auto &marca) { return marca.nome == nome; }) -
        tabela.begin());
}

constexpr std::size_t maiorNome() {
    std::size_t maior = 0;
    for (const auto &marca : kMarcasDeTexto)
        maior = std::max(maior, marca.nome.size());
    for (const auto &marca : kMarcasDeConteudo)
        maior = std::max(maior, marca.nome.size());
    return maior;
}

} // namespace zel::cupom
