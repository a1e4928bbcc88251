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

} // namespace

TEST(Recibos, figuras_sao_as_de_referencia_e_seus_qr_codes_se_leem) {
    const char *regenerar = std::getenv("ZEL_REGENERAR");
    const auto lista = recibos();
    std::size_t qrsLidos = 0;
    EXPECT_GE(lista.size(), 18U);
    for (const Recibo &recibo : lista) {
        const ImagemCinza imagem = desenhada(recibo);
        if (regenerar != nullptr && std::string_view(regenerar) == "1")
            gravarTudo(referencia(recibo.nome), pngDaImagem(imagem));
        const std::optional<ImagemCinza> esperada = lerLogotipo(referencia(recibo.nome));
        ASSERT_TRUE(esperada) << recibo.nome;
        EXPECT_TRUE(igual(*esperada, imagem, recibo.nome))
            << "ZEL_REGENERAR=1 draws it; look at both";
        const auto qrs = qrsDe(ler(recibo.texto));
        EXPECT_EQ(qrsDe(imagem), qrs) << recibo.nome;
        qrsLidos += qrs.size();
    }
    EXPECT_GE(qrsLidos, 12U + 9);
}

// What the comparison is for, each on a receipt of each width: that it sees what a fault would do.
TEST(Recibos, comparacao_ve_o_que_se_perde) {
    const std::pair<std::string_view, std::string_view> danos[] = {
        {"<b>", "<i>"},
        {"Caneta azul", "           "},
        {"--\r\n<c>QTD", "--\r\n\r\n<c>QTD"},
        {"<c>QTD", "<da>QTD"},
        {"CONSUMIDOR N", "ONSUMIDOR N"},
        {"<lmodulo>3", "<lmodulo>4"},
        {"</gui>", "<gui>"},
    };
    const std::string texto = lerDado(ZEL_CUPONS "/cupom_offline_42.txt");
    for (const Papel *papel : {papelDe(42, 76), papelDe(42, 58)}) {
        const ImagemCinza inteira = desenharTexto(texto, *papel).imagem;
        EXPECT_EQ(diferenca(inteira, inteira), "");
        for (const auto &[de, para] : danos)
            EXPECT_NE(diferenca(inteira, desenharTexto(trocar(texto, de, para), *papel).imagem), "")
                << de;
    }
}

TEST(Recibos, comparacao_ve_um_qr_code_um_modulo_ao_lado) {
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
TEST(Recibos, comparacao_deixa_passar_outra_versao_da_fonte) {
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
