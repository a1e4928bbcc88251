// SPDX-License-Identifier: MIT
// The forms of the ICMS group: one table of what each holds, and the tag that carries the one
// group of an item. How a row is chosen and becomes a tag is Grupo's.
#pragma once

#include "imposto/Grupo.h"
#include "imposto/Presets.h"
#include "secao/Tag.h"

#include <string_view>

namespace zel {

// The rows, in the order of choice.
std::span<const Grupo> gruposICMS();

// The group in force for an item with that preset of ICMS.
std::optional<Selecao> fnIdentificarImpostoICMS(const Preset &preset);

// Adds the `ICMS` tag with the group in force to `imposto`. `preset`: that of ICMS; `aliquota`: the
// sale's rate with two decimals; `base`: the tax base. ZEL_OK; ZEL_RECUSADO when no group is in
// force or a required value of it is missing, except that ICMS00, ICMS40 and ICMS60 then leave the
// `ICMS` tag empty and answer 1.
int fnTratarICMS(const Preset &preset, std::string_view aliquota, std::string_view base,
                 ST_tagZEL &imposto);

// Rebuilds the stored `ICMS` tag: its group's values are computed anew from the new base and the
// stored `pICMS` (0.00 when the group has none). A tag without a group stays as it is. ZEL_OK;
// ZEL_RECUSADO when it holds a group that does not exist.
int fnAtualizarICMS(ST_tagZEL &icms, std::string_view base, Mudancas &mudancas);

} // namespace zel
