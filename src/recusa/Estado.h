// SPDX-License-Identifier: MIT
// The states of the receipt, by the digit that the configuration keeps, and what the log calls them
// (UTF-8). Which operation may run in which state is emcurso/ZEL_Controle's.
#pragma once

#include <array>
#include <string_view>

namespace zel {

enum Estado { kNenhum, kAberto, kVendendo, kTotalizado, kPagamento, kEncerrado, kCancelado };

inline constexpr std::array<std::string_view, kCancelado + 1> kNomesDosEstados{
    "0 (nenhum cupom)", "1 (aberto)",    "2 (vendendo)", "3 (totalizado)",
    "4 (pago)",         "5 (encerrado)", "6 (cancelado)"};

} // namespace zel
