// SPDX-License-Identifier: MIT
#include "apoio.h"

#include "Png.h"
#include "apoio/Arquivo.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <stdexcept>
#include <zbar.h>

namespace zel::cupom {

namespace {

struct Campo {
    double tinta = 0;
    double trocados = 0;
};

constexpr int kLarguraDoCampo = 48, kAlturaDoCampo = 28;

// Both parts are means over the pixels of the field.
Campo campoEm(const ImagemCinza &uma, const ImagemCinza &outra, int x0, int y0) {
    Campo campo;
    const int x1 = std::min(x0 + kLarguraDoCampo, uma.largura);
    const int y1 = std::min(y0 + kAlturaDoCampo, uma.altura);
    for (int y = y0; y < y1; ++y) {
        for (int x = x0; x < x1; ++x) {
            campo.tinta += (255 - uma.em(x, y)) / 255.0;
            campo.trocados += std::abs(uma.em(x, y) - outra.em(x, y)) > 160 ? 1 : 0;
        }
    }
    const double pixels = (x1 - x0) * (y1 - y0);
    return {campo.tinta / pixels, campo.trocados / pixels};
}

} // namespace

Fontes &fontesDoTeste() {
    static std::optional<Fontes> fontes = acharFontes();
    if (!fontes) throw std::runtime_error("no monospaced font is installed");
    return *fontes;
}

std::string lerDado(const std::string &caminho) {
    return lerTudo(caminho).value_or("");
}

ImagemCinza logotipoDoTeste(int largura, int altura) {
    ImagemCinza imagem{largura, altura, {}};
    for (int y = 0; y < altura; ++y) {
        for (int x = 0; x < largura; ++x) {
            const bool moldura = x < 2 || y < 2 || x >= largura - 2 || y >= altura - 2;
            const bool quadrado = x < largura / 4 && y < altura / 2;
            const int tom = moldura || quadrado ? 0 : 255 * x / largura;
            imagem.pontos.push_back(static_cast<std::uint8_t>(tom));
        }
    }
    return imagem;
}

std::vector<Recibo> recibos() {
    std::vector<Recibo> lista;
    for (const auto &entrada : std::filesystem::directory_iterator(ZEL_CUPONS)) {
        const std::string nome = entrada.path().stem();
        if (entrada.path().extension() != ".txt") continue;
        const bool estreito = nome.ends_with("_42");
        lista.push_back({nome, lerDado(entrada.path()), papelDe(estreito ? 42 : 48, 0)});
        if (nome == "cupom_normal_42") // what the narrowest paper makes of it
            lista.push_back({"cupom_normal_58mm", lista.back().texto, papelDe(42, 58)});
    }
    const std::string mostruario = lerDado(ZEL_REFERENCIA "/mostruario.txt");
    for (const Papel &papel : kPapeis)
        lista.push_back(
            {"mostruario_" + std::to_string(papel.milimetros) + "mm", mostruario, &papel, true});
    return lista;
}

Desenhado desenharTexto(std::string_view texto, const Papel &papel, const ImagemCinza *logotipo,
                        int escala) {
    return desenharCupom(ler(texto), papel, logotipo, escala);
}

Desenhado desenharCupom(const Cupom &cupom, const Papel &papel, const ImagemCinza *logotipo,
                        int escala) {
    TamanhoLogotipo tamanho;
    if (logotipo != nullptr) tamanho = {logotipo->largura, logotipo->altura};
    Pagina pagina = paginar(cupom, papel, tamanho).value();
    ImagemCinza imagem = desenharPagina(pagina, logotipo, escala);
    return {std::move(pagina), std::move(imagem)};
}

ImagemCinza desenharPagina(const Pagina &pagina, const ImagemCinza *logotipo, int escala) {
    ImagemCinza imagem;
    imagem.largura = pagina.papel.largura() * escala;
    const bool feito =
        desenhar(pagina, {fontesDoTeste(), logotipo}, escala, [&](const Faixa &faixa) {
            for (int y = 0; y < faixa.altura(); ++y, ++imagem.altura)
                imagem.pontos.insert(imagem.pontos.end(), faixa.linha(y).begin(),
                                     faixa.linha(y).end());
        });
    if (!feito) throw std::runtime_error("cairo failed");
    return imagem;
}

std::string pngDaImagem(const ImagemCinza &imagem) {
    EscritorPng png(imagem.largura, imagem.altura, 0);
    const auto largura = static_cast<std::size_t>(imagem.largura);
    for (std::size_t y = 0; y < static_cast<std::size_t>(imagem.altura); ++y)
        png.escrever(std::span(imagem.pontos).subspan(y * largura, largura));
    return png.terminar();
}

std::vector<std::string> qrsDe(const ImagemCinza &imagem) {
    zbar::ImageScanner leitor;
    leitor.set_config(zbar::ZBAR_NONE, zbar::ZBAR_CFG_ENABLE, 0);
    leitor.set_config(zbar::ZBAR_QRCODE, zbar::ZBAR_CFG_ENABLE, 1);
    leitor.set_config(zbar::ZBAR_QRCODE, zbar::ZBAR_CFG_BINARY, 1);
    zbar::Image vista(static_cast<unsigned>(imagem.largura), static_cast<unsigned>(imagem.altura),
                      "Y800", imagem.pontos.data(), imagem.pontos.size());
    leitor.scan(vista);
    std::vector<std::pair<int, std::string>> achados;
    for (auto simbolo = vista.symbol_begin(); simbolo != vista.symbol_end(); ++simbolo)
        achados.emplace_back(simbolo->get_location_y(0), simbolo->get_data());
    std::sort(achados.begin(), achados.end());
    std::vector<std::string> textos;
    for (auto &[y, texto] : achados)
        textos.push_back(std::move(texto));
    return textos;
}

std::vector<std::string> qrsDe(const Cupom &cupom) {
    std::vector<std::string> textos;
    for (const Bloco &bloco : cupom.blocos)
        if (const auto *qr = std::get_if<Qr>(&bloco)) textos.push_back(qr->conteudo);
    return textos;
}

std::string diferenca(const ImagemCinza &uma, const ImagemCinza &outra) {
    if (uma.largura != outra.largura || uma.altura != outra.altura)
        return "sizes " + std::to_string(uma.largura) + "x" + std::to_string(uma.altura) + " and " +
               std::to_string(outra.largura) + "x" + std::to_string(outra.altura);
    for (int y = 0; y < uma.altura; y += kAlturaDoCampo) {
        for (int x = 0; x < uma.largura; x += kLarguraDoCampo) {
            const Campo a = campoEm(uma, outra, x, y), b = campoEm(outra, uma, x, y);
            const bool tinta = std::abs(a.tinta - b.tinta) > 0.01 + std::max(a.tinta, b.tinta) / 6;
            if (tinta || a.trocados > 0.125)
                return "at " + std::to_string(x) + "," + std::to_string(y) + ": ink " +
                       std::to_string(a.tinta) + " and " + std::to_string(b.tinta) + ", " +
                       std::to_string(a.trocados) + " changed";
        }
    }
    return {};
}

testing::AssertionResult igual(const ImagemCinza &esperada, const ImagemCinza &imagem,
                               const std::string &nome) {
    const std::string onde = diferenca(esperada, imagem);
    if (onde.empty()) return testing::AssertionSuccess();
    const std::string caminho = std::string(ZEL_SAIDA "/") + nome + ".png";
    gravarTudo(caminho, pngDaImagem(imagem));
    return testing::AssertionFailure() << caminho << " differs " << onde;
}

} // namespace zel::cupom
