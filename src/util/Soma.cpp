// SPDX-License-Identifier: MIT
#include "util/Soma.h"

#include <array>
#include <cstddef>

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

} // namespace

std::uint32_t somaCrc32(std::string_view bytes) {
    std::uint32_t resto = 0xFFFFFFFFU;
    for (; bytes.size() >= kPasso; bytes.remove_prefix(kPasso)) {
        std::uint32_t proximo = 0;
        for (std::size_t i = 0; i < kPasso; ++i) {
            const std::uint32_t doResto = i < 4 ? (resto >> (8 * i)) & 0xFFU : 0U;
            proximo ^= kTabelas[kPasso - 1 - i][byteDe(bytes, i) ^ doResto];
        }
        resto = proximo;
    }
    for (std::size_t i = 0; i < bytes.size(); ++i)
        resto = (resto >> 8) ^ kTabelas[0][(resto ^ byteDe(bytes, i)) & 0xFFU];
    return ~resto;
}

} // namespace zel
