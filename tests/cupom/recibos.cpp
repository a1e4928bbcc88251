// Whole receipts as pictures: every receipt that the fiscal library prints in its own tests, and
// one that shows all of the mark-up. ZEL_REGENERAR=1 draws the reference pictures anew; look at
// them before they are committed. A picture that differs is left in the directory of the build.
#include "apoio.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

using namespace zel::cupom;

namespace {

struct Recibo {
    std::string nome;
    std::string texto;
    const Papel *papel;
    bool comLogotipo = false;
};

// Words in the letters that they name.
constexpr std::string_view kMostruario =
    "<bmp></bmp><ce><xl>LOJA DO Z\xC9</xl>\r\n<e>dupla largura</e>\r\n<da>dupla "
    "altura</da></ce>\r\n"
    "normal <b>negrito</b> <i>it\xE1lico</i> <s>sublinhado</s>\r\n"
    "<c>condensado <b>negrito</b> <i>it\xE1lico</i> <s>sublinhado</s></c>\r\n"
    "<ad>\xE0 direita</ad>\r\n<ad><c>condensado \xE0 direita</c></ad>\r\n"
    "\xC1\xC9\xCD\xD3\xDA\xC2\xCA\xD4\xC3\xD5\xC0\xDC\xC7 \xE1\xE9\xED\xF3\xFA\xE2\xEA\xF4\xE3\xF5"
    "\xE0\xFC\xE7 \xAA\xBA\xA7 R$ 1.234,56 ()[]{}|\r\n"
    "uma linha mais longa que o papel continua na linha seguinte, e nada se perde\r\n"
    "<c>tamb\xE9m a condensada, que leva mais letras em cada linha, continua quando n\xE3o cabe</c>"
    "\r\n<ce>e a linha centrada continua centrada na linha seguinte do papel</ce>\r\n"
    "grande <xl>G</xl>, alta <da>A</da>, larga <e>L</e> e <c>pequena</c> na mesma linha\r\n"
    "<qrcode>http://esquerda<lmodulo>4</lmodulo></qrcode>\r\n"
    "<ad><qrcode>http://direita<lmodulo>5</lmodulo></qrcode></ad>\r\n"
    "<ce><qrcode>http://centro<lmodulo>8</lmodulo></qrcode></ce>\r\n"
    "<sl>2</sl><ce>duas linhas acima</ce>\r\n<gui></gui>segunda via\r\n<gui></gui>";

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
    for (const Papel &papel : kPapeis)
        lista.push_back({"mostruario_" + std::to_string(papel.milimetros) + "mm",
                         std::string(kMostruario), &papel, true});
    return lista;
}

ImagemCinza desenhada(const Recibo &recibo) {
    const ImagemCinza logotipo = pontilhar(logotipoDoTeste(200, 80));
    return desenharTexto(recibo.texto, *recibo.papel, recibo.comLogotipo ? &logotipo : nullptr)
        .imagem;
}

std::string referencia(const std::string &nome) {
    return std::string(ZEL_REFERENCIA "/") + nome + ".png";
}

void gravar(const std::string &caminho, const ImagemCinza &imagem) {
    std::ofstream(caminho, std::ios::binary) << pngDaImagem(imagem);
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
