// SPDX-License-Identifier: MIT
// The most characters of elements that an operation cuts or measures before a section template
// checks them: both use what stands here. What an operation takes in another length on purpose
// stands with the operation.
#pragma once

namespace zel {

inline constexpr int kMaiorTexto = 60; // names, streets, districts, municipalities, product codes
inline constexpr int kMaiorDescricao = 120;
inline constexpr int kMaiorUnidade = 6;
inline constexpr int kMaiorEstrangeiro = 20; // of a consumer's foreign id
inline constexpr int kMaiorInfCpl = 5000;
inline constexpr int kDigitosMunicipio = 7;
inline constexpr int kDigitosCep = 8;
inline constexpr int kLetrasUf = 2;

} // namespace zel
