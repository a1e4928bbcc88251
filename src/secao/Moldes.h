// SPDX-License-Identifier: MIT
// The templates of the six sections: which elements a caller's text may hold, in which order, which
// of them it must hold, and how long each value may be. Owns the tables and the trees built from
// them; the check against them is Conformidade's.
#pragma once

#include "secao/Secao.h"
#include "secao/Tag.h"

#include <cstddef>
#include <optional>
#include <string_view>

namespace zel {

// None until construirMoldes.
extern std::optional<ST_tagZEL> G_stTagZEL_abertura;
extern std::optional<ST_tagZEL> G_stTagZEL_venda;
extern std::optional<ST_tagZEL> G_stTagZEL_totalizacao;
extern std::optional<ST_tagZEL> G_stTagZEL_transporte;
extern std::optional<ST_tagZEL> G_stTagZEL_pagamento;
extern std::optional<ST_tagZEL> G_stTagZEL_encerramento;

// Builds the six templates; does nothing when they exist.
void construirMoldes();

void liberarMoldes();

// The place of an element in the product group of an item, counted from 0, and how many there are.
std::size_t lugarNoProduto(std::string_view nome);
std::size_t elementosDoProduto();

// The template of the section.
const std::optional<ST_tagZEL> &moldeDaSecao(Secao secao);

} // namespace zel
