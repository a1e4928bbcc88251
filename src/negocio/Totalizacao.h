// Totalization: closes the list of items, spreads an adjustment of the whole receipt over them and
// stores the totals group that payment and closing compare against.
#pragma once

#include <string_view>

namespace zel {

// Type: "D%", "D$", "A%", "A$"; value: decimal text, not above zero for none. From state 2 to 3.
// 1; -131, -133 the state; -52 no document in progress; -35 the adjustment cannot be spread; -120 a
// total beyond its length; -40.
int fnCFTotalizar_ZEL_Felbor(std::string_view tipo, std::string_view valor);

// Stores a totals section given as tag text, and state 3, without a look at the state; an empty
// text stands for an empty `total`. Items that changed in memory are saved with it.
enum class Itens { kComoEstavam, kMudados };
int fnCFeTotalizarTAG_ZEL(std::string_view texto, Itens itens = Itens::kMudados);

} // namespace zel
