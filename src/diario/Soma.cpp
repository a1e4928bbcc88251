// SPDX-License-Identifier: MIT
#include "diario/Soma.h"

#include <array>
#include <cstddef>
#include <utility>

namespace zel {

namespace {

constexpr std::uint32_t kPolinomio = 0xEDB88320U; // reflected
constexpr std::size_t kPasso = 8;

// kTabelas[n][b]: the remainder of byte b followed by n zero bytes.
constexpr auto kTabelas = [] {
    std::array<std::array<std::uint32_t, 256>, kPasso> tabelas{};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::uint32_t resto = byte;
        for (int bit = 0; bit < 8; ++bit)
            resto = (resto >> 1) ^ ((resto & 1U) != 0 ? kPolinomio : 0U);
        tabelas[0][byte] = resto;
    }
    for (std::size_t n = 1; n < kPasso; ++n)
        for (std::size_t byte = 0; byte < 256; ++byte) {
            const std::uint32_t anterior = tabelas[n - 1][byte];
            tabelas[n][byte] = (anterior >> 8) ^ tabelas[0][anterior & 0xFFU];
        }
    return tabelas;
}();

constexpr std::uint32_t byteDe(std::string_view bytes, std::size_t i) {
    return static_cast<unsigned char>(bytes[i]);
}

// The remainder after the next kPasso bytes, of which the first four meet the one before.
template <std::size_t... Lugar>
constexpr std::uint32_t passo(std::uint32_t resto, std::string_view bytes,
                              std::index_sequence<Lugar...>) {
    const std::uint64_t antes = resto;
    return (... ^
            kTabelas[kPasso - 1 - Lugar][byteDe(bytes, Lugar) ^ (antes >> (8 * Lugar) & 0xFFU)]);
}

} // namespace

std::uint32_t somaCrc32(std::string_view bytes) {
    std::uint32_t resto = 0xFFFFFFFFU;
    for (; bytes.size() >= kPasso; bytes.remove_prefix(kPasso))
        resto = passo(resto, bytes, std::make_index_sequence<kPasso>());
    for (std::size_t i = 0; i < bytes.size(); ++i)
        resto = (resto >> 8) ^ kTabelas[0][(resto ^ byteDe(bytes, i)) & 0xFFU];
    return ~resto;
}

} // namespace zel
