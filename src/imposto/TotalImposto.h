// SPDX-License-Identifier: MIT
// The approximate total of taxes that the law wants on the receipt: a text that the application
// gives at the close, kept in memory until the receipt's layout has printed and emptied it.
#pragma once

#include "texto/Campo.h"

#include <string_view>

namespace zel {

using TotalImposto = Campo<19>;

// Known to the exported functions alone, which hand it to the operations.
extern TotalImposto G_szTotalImposto;

// Keeps the text without its outer blanks, cut to 19 characters. ZEL_OK, or ZEL_ARGUMENTO_INVALIDO
// when it is null, empty or blank.
int fnCFValorLeiImposto_ZEL_Felbor(TotalImposto &total, std::string_view texto);

} // namespace zel
