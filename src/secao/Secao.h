// SPDX-License-Identifier: MIT
// The sections of the document in progress, by the numbers that the section check takes, and the
// names of their roots, and the lengths that operations and templates share.
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

// The most characters of elements that an operation cuts or measures before a section template
// checks them: both use what stands here. What an operation takes in another length on purpose
// stands with the operation.
inline constexpr int kMaiorTexto = 60; // names, streets, districts, municipalities, product codes
inline constexpr int kMaiorDescricao = 120;
inline constexpr int kMaiorUnidade = 6;
inline constexpr int kMaiorEstrangeiro = 20; // of a consumer's foreign id
inline constexpr int kMaiorInfCpl = 5000;
inline constexpr int kDigitosMunicipio = 7;
inline constexpr int kDigitosCep = 8;
inline constexpr int kLetrasUf = 2;

} // namespace zel
