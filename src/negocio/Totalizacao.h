// SPDX-License-Identifier: MIT
// Totalization: closes the list of items, spreads an adjustment of the whole receipt over them and
// stores the totals group that payment and closing compare against.
#pragma once

#include "documento/ZEL_Tag.h"

#include <string_view>

namespace zel {

// Type: "D%", "D$", "A%", "A$"; value: decimal text, not above zero for none. From state 2 to 3.
// 1; -131, -133 the state; -52 no document in progress; -35 the adjustment cannot be spread; -120 a
// total beyond its length; -40.
int fnCFTotalizar_ZEL_Felbor(std::string_view tipo, std::string_view valor);

// Checks and stores the group `total`, and state 3, without a look at the state. Items that changed
// in memory are saved with it.
enum class Itens { kComoEstavam, kMudados };
int fnCFeTotalizarTAG_ZEL(ST_tagZEL total, Itens itens);

} // namespace zel
