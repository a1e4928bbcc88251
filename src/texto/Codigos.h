// SPDX-License-Identifier: MIT
// Codes and numbers that the tax authority defines: the written forms of CPF and CNPJ, the payment
// forms. Pure functions over digits; whether a CPF or CNPJ is a valid one is not asked here.
#pragma once

#include "texto/Latin1.h"

#include <string>
#include <string_view>

namespace zel {

// CPF (up to 11 digits) or CNPJ (12 to 15 digits, a fifteenth is dropped) with its punctuation,
// zeros put in front where digits are missing; whatever is no digit is dropped from the text first.
// None or more than 15 digits come back bare.
std::string fnFormatarCPFCNPJ(std::string_view documento);

// The values of tPag with the name that a receipt prints, which without accents and in capitals is
// the one that is sold by: Manual de Orientação do Contribuinte 6.0 (September 2015), Anexo I,
// group YA.
struct FormaPagamento {
    std::string_view codigo, rotulo;
};
inline constexpr FormaPagamento kFormasPagamento[] = {
    {"01", "Dinheiro"},
    {"02", "Cheque"},
    {"03", "Cartão de Crédito"_l1},
    {"04", "Cartão de Débito"_l1},
    {"05", "Crédito Loja"_l1},
    {"10", "Vale Alimentação"_l1},
    {"11", "Vale Refeição"_l1},
    {"12", "Vale Presente"},
    {"13", "Vale Combustivel"}, // without its accent: kept
    {"99", "Outros"},
};

// Two-digit code of a payment form given by its name, without regard to accents and case, or by its
// two-digit code; "99" (others) for anything else, "1" and the empty text too.
std::string fnRetornaCodigoFormaPgto(std::string_view nome);

} // namespace zel
