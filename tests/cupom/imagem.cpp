// SPDX-License-Identifier: MIT
// Logo, PNG and SVG.
#include "Imagem.h"
#include "apoio.h"
#include "apoio/PastaTemporaria.h"
#include "comum/Base64.h"

#include <gtest/gtest.h>
#include <numeric>
#include <png.h>
#include <regex>

using namespace zel::cupom;

namespace {

std::string fatia(const ImagemCinza &imagem, int y) {
    std::string texto;
    for (int x = 0; x < imagem.largura; ++x)
        texto += std::to_string(imagem.em(x, y)) + " ";
    return texto;
}

// Fills the rectangles of a picture in SVG, and nothing else of it.
ImagemCinza retangulosDoSvg(const std::string &svg, int largura, int altura) {
    ImagemCinza imagem{largura, altura, {}};
    imagem.pontos.assign(static_cast<std::size_t>(largura * altura), 255);
    const std::regex retangulo(R"(M(-?\d+) (\d+)h(\d+)v(\d+)h-(\d+)z)");
    for (std::sregex_iterator i(svg.begin(), svg.end(), retangulo), fim; i != fim; ++i) {
        const int x = std::stoi((*i)[1]), y = std::stoi((*i)[2]);
        for (int l = y; l < y + std::stoi((*i)[4]); ++l)
            for (int c = std::max(x, 0); c < std::min(x + std::stoi((*i)[3]), largura); ++c)
                imagem.pontos[static_cast<std::size_t>(l * largura + c)] = 0;
    }
    return imagem;
}

} // namespace

TEST(Logotipo, arquivo_e_cinza_em_papel_branco) {
    const PastaTemporaria pasta;
    // Black, transparent black, half transparent black, white.
    const unsigned char rgba[] = {0, 0, 0, 255, 0, 0, 0, 0, 0, 0, 0, 128, 255, 255, 255, 255};
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    png.format = PNG_FORMAT_RGBA;
    png.width = 4;
    png.height = 1;
    ASSERT_NE(png_image_write_to_file(&png, (pasta / "logo.png").c_str(), 0, rgba, 0, nullptr), 0);
    const ImagemCinza logotipo = lerLogotipo(pasta / "logo.png").value();
    EXPECT_EQ(logotipo.em(0, 0), 0);
    EXPECT_EQ(logotipo.em(1, 0), 255);
    EXPECT_GT(logotipo.em(2, 0), 100);
    EXPECT_LT(logotipo.em(2, 0), 200);
    EXPECT_EQ(logotipo.em(3, 0), 255);
}

TEST(Logotipo, grande_demais_fica_menor_em_proporcao) {
    const struct {
        int largura, altura, maiorLargura, maiorAltura, l, a;
    } casos[] = {
        {100, 50, 576, 320, 100, 50}, {1152, 100, 576, 320, 576, 50}, {4096, 1, 576, 320, 576, 1},
        {1, 4096, 576, 320, 1, 320},  {600, 640, 576, 320, 300, 320}, {577, 1, 576, 320, 576, 1},
    };
    for (const auto &[largura, altura, maiorLargura, maiorAltura, l, a] : casos) {
        const ImagemCinza menor =
            caber(logotipoDoTeste(largura, altura), maiorLargura, maiorAltura);
        EXPECT_EQ(menor.largura, l) << largura << "x" << altura;
        EXPECT_EQ(menor.altura, a) << largura << "x" << altura;
        EXPECT_EQ(menor.pontos.size(), static_cast<std::size_t>(l * a));
    }
    const ImagemCinza metade = caber({4, 2, {0, 100, 9, 9, 200, 100, 9, 9}}, 2, 2);
    EXPECT_EQ(fatia(metade, 0), "100 9 ");
}

// Read by another library; in large scales the picture has several bands.
TEST(Imagem, png_e_o_que_se_desenhou) {
    const PastaTemporaria pasta;
    const ImagemCinza logotipo = logotipoDoTeste(50, 20);
    std::string texto = "<bmp></bmp>";
    for (int i = 0; i < 20; ++i)
        texto += "<xl>linha " + std::to_string(i) + "</xl>\n";
    for (const int escala : {1, 2, 3}) {
        const auto [pagina, imagem] = desenharTexto(texto, kPapeis[0], &logotipo, escala);
        const auto png = gerarPng(pagina, {fontesDoTeste(), &logotipo}, escala);
        ASSERT_TRUE(png);
        // Pixels to the metre, in both directions.
        const std::string metro{'\0', '\0', static_cast<char>(8000 * escala >> 8),
                                static_cast<char>(8000 * escala & 0xFF)};
        EXPECT_NE(png->find("pHYs" + metro + metro + '\1'), png->npos);
        pasta.gravar("cupom.png", *png);
        const ImagemCinza lida = lerLogotipo(pasta / "cupom.png").value();
        EXPECT_EQ(lida.largura, 640 * escala);
        EXPECT_EQ(lida.altura, pagina.altura * escala);
        EXPECT_TRUE(lida.pontos == imagem.pontos) << escala;
    }
}

TEST(Imagem, cada_ponto_e_um_quadrado_de_pixels) {
    const ImagemCinza logotipo = logotipoDoTeste(60, 30);
    const std::string_view texto = "<bmp></bmp><qrcode>u</qrcode><gui></gui>";
    const ImagemCinza pontos = desenharTexto(texto, kPapeis[2], &logotipo, 1).imagem;
    const ImagemCinza grande = desenharTexto(texto, kPapeis[2], &logotipo, 3).imagem;
    int outros = 0;
    for (int y = 0; y < grande.altura; ++y)
        for (int x = 0; x < grande.largura; ++x)
            outros += grande.em(x, y) == pontos.em(x / 3, y / 3) ? 0 : 1;
    EXPECT_EQ(outros, 0);
}

TEST(Imagem, negrito_sem_fonte_negrita_e_mais_escuro) {
    const auto tinta = [](std::string_view texto) {
        const auto pontos = desenharTexto(texto, kPapeis[0]).imagem.pontos;
        return std::accumulate(pontos.begin(), pontos.end(), 0.0,
                               [](double soma, int tom) { return soma + 255 - tom; });
    };
    std::optional<Fonte> negrito = std::exchange(fontesDoTeste().negrito, std::nullopt);
    EXPECT_GT(tinta("<b>negrito</b>"), 1.2 * tinta("negrito"));
    fontesDoTeste().negrito = std::move(negrito);
}

TEST(Imagem, svg_tem_os_mesmos_pontos_e_cada_letra) {
    const ImagemCinza logotipo = pontilhar(logotipoDoTeste(50, 20));
    const std::string texto = "<bmp></bmp><b>a&<</b> <i>\xE7</i>\r\n"
                              "<ce><qrcode>http://x?a&b</qrcode></ce><gui></gui>";
    const Desenhado desenhado = desenharTexto(texto, kPapeis[1], &logotipo);
    const std::string svg = gerarSvg(desenhado.pagina, {fontesDoTeste(), &logotipo});
    EXPECT_EQ(svg, gerarSvg(desenhado.pagina, {fontesDoTeste(), &logotipo}));
    EXPECT_EQ(vezesEm(svg, "<use "), 4);
    EXPECT_EQ(vezesEm(svg, "<path id="), 4);
    EXPECT_EQ(vezesEm(svg, "d=\"M"), 6); // none of the outlines is empty; QR code and cut
    EXPECT_EQ(vezesEm(svg, "data:image/png;base64,iVBORw0KGgo"), 1);
    EXPECT_NE(svg.find("width=\"76mm\""), svg.npos);
    const ImagemCinza pontos =
        retangulosDoSvg(svg, desenhado.imagem.largura, desenhado.imagem.altura);
    EXPECT_EQ(qrsDe(pontos), std::vector<std::string>{"http://x?a&b"});
    const int qr = desenhado.pagina.elementos[desenhado.pagina.elementos.size() - 2].topo;
    for (int y = qr; y < desenhado.imagem.altura; ++y)
        ASSERT_EQ(fatia(pontos, y), fatia(desenhado.imagem, y)) << y;
}
