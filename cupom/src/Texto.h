// SPDX-License-Identifier: MIT
// Words and numbers of settings that users write.
#pragma once

#include <algorithm>
#include <charconv>
#include <optional>
#include <string_view>

namespace zel::cupom {

constexpr std::string_view kBrancos = " \t\r";

constexpr std::string_view semBrancos(std::string_view texto) {
    texto.remove_prefix(std::min(texto.find_first_not_of(kBrancos), texto.size()));
    return texto.substr(0, texto.find_last_not_of(kBrancos) + 1);
}

// What stands before the first `separador`, which goes with it; everything when there is none.
constexpr std::string_view tirarAte(std::string_view &texto, std::string_view separador) {
    const std::string_view parte = texto.substr(0, texto.find_first_of(separador));
    texto.remove_prefix(std::min(parte.size() + 1, texto.size()));
    return parte;
}

// The first word, which is taken off; empty after the last one.
constexpr std::string_view tirarPalavra(std::string_view &texto) {
    texto.remove_prefix(std::min(texto.find_first_not_of(kBrancos), texto.size()));
    return tirarAte(texto, kBrancos);
}

// A number in digits and nothing else, at least `menor` and at most `maior`.
inline std::optional<int> numeroDe(std::string_view texto, int menor, int maior) {
    int numero = 0;
    const char *fim = texto.data() + texto.size();
    const auto [parou, erro] = std::from_chars(texto.data(), fim, numero);
    if (parou != fim || erro != std::errc() || texto.starts_with('-')) return {};
    if (numero < menor || numero > maior) return {};
    return numero;
}

} // namespace zel::cupom
