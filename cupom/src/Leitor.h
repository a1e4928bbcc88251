// SPDX-License-Identifier: MIT
// Reads printer mark-up into the model. The mark-up, its limits and what becomes of broken mark-up
// are described in zel_cupom.h, which is what a user reads.
#pragma once

#include "Modelo.h"

#include <cstddef>
#include <string_view>

namespace zel::cupom {

constexpr std::size_t kMaiorTexto = 1048576;

// The receipt that `texto` (ISO-8859-1) describes. Whatever it holds it is read, in time
// proportional to its length; longer ones than kMaiorTexto are for the caller to refuse.
Cupom ler(std::string_view texto);

} // namespace zel::cupom
