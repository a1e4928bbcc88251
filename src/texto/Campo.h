// SPDX-License-Identifier: MIT
// A text field of fixed capacity: its type says how many characters are kept, assignment cuts at
// that length. Plain records of such fields replace buffers with magic sizes.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace zel {

template <std::size_t Capacidade>
class Campo {
public:
    constexpr Campo() = default;
    constexpr Campo(std::string_view texto) { *this = texto; }

    constexpr Campo &operator=(std::string_view texto) {
        tamanho_ = std::min(texto.size(), Capacidade);
        std::copy_n(texto.begin(), tamanho_, bytes_.begin());
        return *this;
    }

    constexpr std::string_view texto() const { return {bytes_.data(), tamanho_}; }
    constexpr operator std::string_view() const { return texto(); }
    constexpr bool vazio() const { return tamanho_ == 0; }
    constexpr std::size_t tamanho() const { return tamanho_; }
    constexpr void limpar() { tamanho_ = 0; }

private:
    std::array<char, Capacidade> bytes_{};
    std::size_t tamanho_ = 0;
};

} // namespace zel
