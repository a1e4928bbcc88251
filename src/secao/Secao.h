// SPDX-License-Identifier: MIT
// The sections of the document in progress, by the numbers that the section check takes, and the
// names of their roots.
#pragma once

#include <array>
#include <string_view>

namespace zel {

enum class Secao { kAbertura, kVenda, kTotalizacao, kPagamento, kTransporte, kEncerramento };

inline constexpr std::array<std::string_view, 6> kNomesDasSecoes{
    "ABERTURA", "VENDA", "TOTALIZACAO", "PAGAMENTO", "TRANSPORTE", "ENCERRAMENTO"};

constexpr std::string_view nomeSecao(Secao secao) {
    return kNomesDasSecoes[static_cast<std::size_t>(secao)];
}

} // namespace zel
