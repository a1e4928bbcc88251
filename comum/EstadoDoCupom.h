// SPDX-License-Identifier: MIT
// The states of the receipt, by the digit that the configuration keeps, and their names (ISO-8859-1
// and UTF-8 alike). Which operation may run in which state is src/emcurso/ZEL_Controle's.
#pragma once

#include <array>
#include <string_view>

namespace zel {

enum Estado { kNenhum, kAberto, kVendendo, kTotalizado, kPagamento, kEncerrado, kCancelado };

// Of a receipt that was opened and not ended.
constexpr bool emAndamento(long long estado) {
    return estado >= kAberto && estado <= kPagamento;
}

inline constexpr std::array<std::string_view, kCancelado + 1> kNomesDosEstados{
    "nenhum cupom", "aberto", "vendendo", "totalizado", "pago", "encerrado", "cancelado"};

} // namespace zel
