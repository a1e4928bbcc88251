// SPDX-License-Identifier: MIT
// The municipalities by their codes. Pure functions over a table.
#pragma once

#include <string_view>

namespace zel::aplicativo {

// The name of the municipality with that code of seven digits; empty when the table has none.
std::string_view nomeDoMunicipio(std::string_view codigo);

// Whether two names are the same but for accents, case and what is no letter: many write them in
// capitals, or without an apostrophe.
bool mesmoNome(std::string_view a, std::string_view b);

} // namespace zel::aplicativo
