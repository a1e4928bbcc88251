// SPDX-License-Identifier: MIT
// Rows of dots as a printer takes them: eight to the byte, the first one the highest bit.
#pragma once

#include "Comando.h"

#include <string>

namespace zel::cupom {

class Pontos {
public:
    Pontos(int largura, int altura)
        : passo_(static_cast<std::size_t>(largura + 7) / 8),
          altura_(static_cast<std::size_t>(altura)), bytes_(passo_ * altura_, '\0') {}

    void preencher(int x, int largura, int y, int altura) {
        for (int linha = y; linha < y + altura; ++linha)
            for (int coluna = x; coluna < x + largura; ++coluna)
                escurecer(static_cast<std::size_t>(coluna), static_cast<std::size_t>(linha));
    }

    Valores valores() const { return {0, 0, passo_, altura_, bytes_}; }
    // Of the first rows alone.
    Valores valores(int altura) const {
        const auto linhas = static_cast<std::size_t>(altura);
        return {0, 0, passo_, linhas, std::string_view(bytes_).substr(0, passo_ * linhas)};
    }

private:
    void escurecer(std::size_t x, std::size_t y) {
        char &byte = bytes_[y * passo_ + x / 8];
        byte = static_cast<char>(static_cast<unsigned char>(byte) | 0x80U >> x % 8);
    }

    std::size_t passo_;
    std::size_t altura_;
    std::string bytes_;
};

} // namespace zel::cupom
