// SPDX-License-Identifier: MIT
// The shop's logo: read from a PNG file, brought to the size and the shades of the paper.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zel::cupom {

// Row by row, 0 black to 255 paper.
struct ImagemCinza {
    int largura = 0;
    int altura = 0;
    std::vector<std::uint8_t> pontos;

    std::uint8_t em(int x, int y) const {
        return pontos[static_cast<std::size_t>(y) * static_cast<std::size_t>(largura) +
                      static_cast<std::size_t>(x)];
    }
};

constexpr int kMaiorLadoDoArquivo = 4096;   // pixels
constexpr int kMaiorAlturaDoLogotipo = 320; // dots, 40 mm

// Reads a PNG file of up to kMaiorLadoDoArquivo pixels a side; transparent pixels are paper. None
// when it is not readable, no PNG file or larger.
std::optional<ImagemCinza> lerLogotipo(const std::string &arquivo);

// The same picture, made smaller in its proportions, by the mean of what each dot covers, when it
// is wider or higher than that.
ImagemCinza caber(const ImagemCinza &imagem, int largura, int altura);

// In black and white alone: each dot's error is spread over the dots that follow.
ImagemCinza pontilhar(ImagemCinza imagem);

} // namespace zel::cupom
