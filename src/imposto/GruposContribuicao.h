// SPDX-License-Identifier: MIT
// The PIS and COFINS groups of a goods item, one set of rows with the tax's own names, and the
// ISSQN group of a service item. How a row is chosen and becomes a tag is
// Grupo's. Rates, bases and quantities are decimal texts, rates in percent.
#pragma once

#include "imposto/Grupo.h"
#include "imposto/Presets.h"
#include "secao/Tag.h"

#include <string_view>

namespace zel {

// The rows, in the order of choice.
std::span<const Grupo> gruposPIS();
std::span<const Grupo> gruposCOFINS();
std::span<const Grupo> gruposISSQN(); // one, which nothing chooses: a service has it

// The group in force for an item with that preset of the tax.
std::optional<Selecao> fnIdentificarImpostoPIS(const Preset &preset);
std::optional<Selecao> fnIdentificarImpostoCOFINS(const Preset &preset);

// Add the `PIS` or `COFINS` tag with the group in force to `imposto`; when no group is in force
// they add nothing. `preset`: that of the tax. ZEL_OK; ZEL_RECUSADO when a required value of the
// group is missing.
int fnTratarPIS(const Preset &preset, std::string_view aliquota, std::string_view base,
                std::string_view quantidade, ST_tagZEL &imposto);
int fnTratarCOFINS(const Preset &preset, std::string_view aliquota, std::string_view base,
                   std::string_view quantidade, ST_tagZEL &imposto);

// Adds the `ISSQN` tag to `imposto`. ZEL_OK; ZEL_RECUSADO when a required value is missing.
int fnTratarISS(std::string_view aliquota, std::string_view base, ST_tagZEL &imposto);

// Rebuild the stored `PIS` or `COFINS` tag for a new base and quantity: codes, `pPIS` and
// `vAliqProd` stay as stored, the tax is base x `pPIS` / 100 or, in a group without `pPIS`,
// quantity x `vAliqProd` / 100. A tag without a group stays as it is. ZEL_OK; ZEL_RECUSADO when it
// holds a group that does not exist.
int fnAtualizarPIS(ST_tagZEL &pis, std::string_view base, std::string_view quantidade,
                   Mudancas &mudancas);
int fnAtualizarCOFINS(ST_tagZEL &cofins, std::string_view base, std::string_view quantidade,
                      Mudancas &mudancas);

// Rebuilds the stored `ISSQN` tag for a new base, at its stored `vAliq`. Always 1.
int fnAtualizarISS(ST_tagZEL &issqn, std::string_view base, Mudancas &mudancas);

} // namespace zel
