// SPDX-License-Identifier: MIT
// Whole receipts as pictures: every receipt that the fiscal library prints in its own tests, and
// one that shows all of the mark-up. ZEL_REGENERAR=1 draws the reference pictures anew; look at
// them before they are committed. A picture that differs is left in the directory of the build.
#include "apoio.h"
#include "apoio/Arquivo.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>

using namespace zel::cupom;

namespace {

ImagemCinza desenhada(const Recibo &recibo) {
    const ImagemCinza logotipo = pontilhar(logotipoDoTeste(200, 80));
    return desenharTexto(recibo.texto, *recibo.papel, recibo.comLogotipo ? &logotipo : nullptr)
        .imagem;
}

std::string referencia(const std::string &nome) {
    return std::string(ZEL_REFERENCIA "/") + nome + ".png";
}

void gravar(const std::string &caminho, const ImagemCinza &imagem) {
    EXPECT_TRUE(gravarTudo(caminho, pngDaImagem(imagem))) << caminho;
}

std::string substituir(std::string texto, std::string_view de, std::string_view para) {
    const std::size_t onde = texto.find(de);
    EXPECT_NE(onde, texto.npos) << de;
    return texto.replace(onde, de.size(), para);
}

} // namespace

TEST(Recibos, pictures_are_the_reference_ones) {
    const char *regenerar = std::getenv("ZEL_REGENERAR");
    const auto lista = recibos();
    EXPECT_GE(lista.size(), 18U);
    for (const Recibo &recibo : lista) {
        const ImagemCinza imagem = desenhada(recibo);
        if (regenerar != nullptr && std::string_view(regenerar) == "1")
            gravar(referencia(recibo.nome), imagem);
        const std::optional<ImagemCinza> esperada = lerLogotipo(referencia(recibo.nome));
        ASSERT_TRUE(esperada) << recibo.nome;
        const std::string onde = diferenca(*esperada, imagem);
        EXPECT_EQ(onde, "") << recibo.nome;
        if (!onde.empty()) gravar(std::string(ZEL_SAIDA "/") + recibo.nome + ".png", imagem);
    }
}

TEST(Recibos, qr_codes_say_what_the_text_says) {
    int lidos = 0;
    for (const Recibo &recibo : recibos()) {
        const auto esperados = qrsDe(ler(recibo.texto));
        EXPECT_EQ(qrsDe(desenhada(recibo)), esperados) << recibo.nome;
        lidos += static_cast<int>(esperados.size());
    }
    EXPECT_GE(lidos, 12 + 9);
}

// What the comparison is for, each on a receipt of each width: that it sees what a fault would do.
TEST(Recibos, comparison_sees_what_is_lost) {
    const std::pair<std::string_view, std::string_view> danos[] = {
        {"<b>", "<i>"},      {"Caneta azul", "           "},  {"--\r\n<c>QTD", "--\r\n\r\n<c>QTD"},
        {"<c>QTD", "QTD"},   {"CONSUMIDOR N", "ONSUMIDOR N"}, {"<lmodulo>3", "<lmodulo>4"},
        {"</gui>", "<gui>"},
    };
    const std::string texto = lerDado(ZEL_CUPONS "/cupom_offline_42.txt");
    for (const Papel *papel : {papelDe(42, 76), papelDe(42, 58)}) {
        const ImagemCinza inteira = desenharTexto(texto, *papel).imagem;
        EXPECT_EQ(diferenca(inteira, inteira), "");
        for (const auto &[de, para] : danos)
            EXPECT_NE(diferenca(inteira, desenharTexto(substituir(texto, de, para), *papel).imagem),
                      "")
                << de;
    }
}

TEST(Recibos, comparison_sees_a_qr_code_moved_by_one_module) {
    const std::string texto = lerDado(ZEL_CUPONS "/cupom_offline_48.txt");
    Desenhado desenhado = desenharTexto(texto, kPapeis[0]);
    ImagemCinza movida = desenhado.imagem;
    for (const Elemento &elemento : desenhado.pagina.elementos) {
        if (!std::holds_alternative<QrPosto>(elemento.desenho)) continue;
        const auto inicio = movida.pontos.begin() + elemento.topo * movida.largura;
        std::rotate(inicio, inicio + 3, movida.pontos.begin() + elemento.fim * movida.largura);
    }
    EXPECT_NE(diferenca(desenhado.imagem, movida), "");
}

// Letters a little smaller, and their outlines elsewhere by up to half a pixel.
TEST(Recibos, comparison_lets_another_version_of_the_font_pass) {
    const std::string texto = lerDado(ZEL_CUPONS "/cupom_normal_48.txt");
    const ImagemCinza antes = desenharTexto(texto, kPapeis[0]).imagem;
    Fontes &fontes = fontesDoTeste();
    const double normal = fontes.normal.avanco, negrito = fontes.negrito.value().avanco;
    fontes.normal.avanco *= 1.02;
    fontes.negrito->avanco *= 1.02;
    const ImagemCinza depois = desenharTexto(texto, kPapeis[0]).imagem;
    fontes.normal.avanco = normal;
    fontes.negrito->avanco = negrito;
    EXPECT_NE(antes.pontos, depois.pontos);
    EXPECT_EQ(diferenca(antes, depois), "");
}
