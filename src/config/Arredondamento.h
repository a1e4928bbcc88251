// SPDX-License-Identifier: MIT
// The money rule: how amounts are cut to two decimals, as the shop has configured it.
#pragma once

namespace zel {

// Cuts to two decimals: toward zero when "CONFIGURACAO\ArredondarTruncar" is "T" or "t", otherwise
// by correct rounding of the binary value.
double fnArredondarTruncar(double valor);

} // namespace zel
