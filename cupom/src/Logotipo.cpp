// SPDX-License-Identifier: MIT
#include "Logotipo.h"

#include "comum/Arquivo.h"

#include <algorithm>
#include <png.h>
#include <utility>

namespace zel::cupom {

namespace {

constexpr std::size_t kMaiorArquivo = 67'108'864; // four bytes for each pixel of the largest one

// What libpng keeps while it reads, freed whatever happens.
struct Leitor : png_image {
    Leitor() : png_image() { version = PNG_IMAGE_VERSION; }
    ~Leitor() { png_image_free(this); }
    Leitor(const Leitor &) = delete;
    Leitor &operator=(const Leitor &) = delete;
};

// Where the dot `i` of `para` begins among `de` pixels.
int limite(int i, int de, int para) {
    return static_cast<int>(static_cast<std::int64_t>(i) * de / para);
}

std::uint8_t media(const ImagemCinza &imagem, int x0, int x1, int y0, int y1) {
    unsigned soma = 0;
    for (int y = y0; y < y1; ++y)
        for (int x = x0; x < x1; ++x)
            soma += imagem.em(x, y);
    const auto quantos = static_cast<unsigned>((x1 - x0) * (y1 - y0));
    return static_cast<std::uint8_t>((soma + quantos / 2) / quantos);
}

} // namespace

std::optional<ImagemCinza> lerLogotipo(const std::string &arquivo) {
    const std::optional<std::string> bytes = comum::lerArquivo(arquivo, kMaiorArquivo);
    if (!bytes) return {};
    Leitor leitor;
    if (png_image_begin_read_from_memory(&leitor, bytes->data(), bytes->size()) == 0) return {};
    if (std::max(leitor.width, leitor.height) > kMaiorLadoDoArquivo) return {};
    leitor.format = PNG_FORMAT_GRAY;
    ImagemCinza imagem{static_cast<int>(leitor.width), static_cast<int>(leitor.height), {}};
    imagem.pontos.resize(PNG_IMAGE_SIZE(leitor));
    const png_color papel{255, 255, 255};
    if (png_image_finish_read(&leitor, &papel, imagem.pontos.data(), 0, nullptr) == 0) return {};
    return imagem;
}

ImagemCinza caber(const ImagemCinza &imagem, int largura, int altura) {
    // By width first, by height when it is still too high; never to nothing.
    int l = std::min(imagem.largura, largura);
    int a = std::max(1, limite(l, imagem.altura, imagem.largura));
    if (a > altura) {
        a = altura;
        l = std::clamp(limite(a, imagem.largura, imagem.altura), 1, l);
    }
    ImagemCinza menor{l, a, {}};
    menor.pontos.reserve(static_cast<std::size_t>(l) * static_cast<std::size_t>(a));
    for (int y = 0; y < a; ++y)
        for (int x = 0; x < l; ++x)
            menor.pontos.push_back(
                media(imagem, limite(x, imagem.largura, l), limite(x + 1, imagem.largura, l),
                      limite(y, imagem.altura, a), limite(y + 1, imagem.altura, a)));
    return menor;
}

// Floyd and Steinberg, "An adaptive algorithm for spatial greyscale", 1976.
ImagemCinza pontilhar(ImagemCinza imagem) {
    const auto largura = static_cast<std::size_t>(imagem.largura);
    // Errors in sixteenths, one place wider on either side.
    std::vector<int> esta(largura + 2), seguinte(largura + 2);
    for (std::size_t y = 0; y < static_cast<std::size_t>(imagem.altura); ++y) {
        for (std::size_t x = 0; x < largura; ++x) {
            std::uint8_t &ponto = imagem.pontos[y * largura + x];
            const int valor = ponto + esta[x + 1] / 16;
            ponto = valor < 128 ? 0 : 255;
            const int erro = valor - ponto;
            esta[x + 2] += erro * 7;
            seguinte[x] += erro * 3;
            seguinte[x + 1] += erro * 5;
            seguinte[x + 2] += erro;
        }
        std::swap(esta, seguinte);
        std::fill(seguinte.begin(), seguinte.end(), 0);
    }
    return imagem;
}

} // namespace zel::cupom
