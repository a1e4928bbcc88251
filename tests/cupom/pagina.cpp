// SPDX-License-Identifier: MIT
// Where things stand on the paper, in dots.
#include "apoio.h"
#include "apoio/PaginaInteira.h"

#include <gtest/gtest.h>

using namespace zel::cupom;

namespace {

constexpr const Papel &k80 = kPapeis[0], &k76 = kPapeis[1], &k58 = kPapeis[2];

Pagina posta(std::string_view texto, const Papel &papel, TamanhoLogotipo logotipo = {}) {
    return paginar(ler(texto), papel, logotipo).value();
}

// Lines of the paper: each run with where it begins.
std::string linhas(const Pagina &pagina) {
    std::string texto;
    int base = -1;
    for (const Elemento &elemento : pagina.elementos) {
        const auto &posto = std::get<TextoPosto>(elemento.desenho);
        if (base >= 0 && posto.base != base) texto += '/';
        base = posto.base;
        texto += std::to_string(static_cast<int>(posto.x)) + ":" + posto.texto;
    }
    return texto;
}

} // namespace

TEST(Pagina, linha_continua_onde_o_papel_acaba) {
    const std::string n42(42, 'n'), n48(48, 'n'), c56(56, 'c'), c64(64, 'c');
    const struct {
        const Papel *papel;
        std::string texto, esperado;
    } casos[] = {
        {&k80, n48, "0:" + n48},
        {&k80, n48 + "x\ny", "0:" + n48 + "/0:x/0:y"},
        {&k80, n48 + "\n" + n48, "0:" + n48 + "/0:" + n48},
        {&k80, "<c>" + c64 + "x", "0:" + c64 + "/0:x"},
        {&k76, n42 + "x", "0:" + n42 + "/0:x"},
        {&k76, "<c>" + c56 + "x", "0:" + c56 + "/0:x"},
        {&k58, n42 + "x", "3:" + n42 + "/3:x"},
        {&k58, "<c>" + c56 + "x", "3:" + c56.substr(14) + "/3:" + c56.substr(42) + "x"},
        {&k80, "<ce>" + n48 + "xx</ce>", "0:" + n48 + "/276:xx"},
        {&k76, "<ad>" + n42 + "xx</ad>", "0:" + n42 + "/480:xx"},
        {&k80, "<ce>x</ce>", "282:x"},
        {&k58, "<ad>x</ad>", "372:x"},
        {&k80, n48.substr(1) + "<c>cc</c>", "0:" + n48.substr(1) + "564:c/0:c"},
        {&k80, n48.substr(1) + "<e>e</e>", "0:" + n48.substr(1) + "/0:e"},
        // Blanks go first, from the widest gap; then fields stay whole.
        {&k80, n48 + "  ", "0:" + n48},
        {&k80, "  " + n48, "0:" + n48},
        {&k80, "a   " + n42 + " bcd", "0:a " + n42 + " bcd"},
        {&k58, "<c>001 789  Caneta azul              2.0000 UN X 5.25 10.50",
         "3:001 789 Caneta azul 2.0000 UN X 5.25 10.50"},
        {&k58, "<c>   002 7891000100103  Caderno capa dura 200 folhas azul",
         "3:002 7891000100103/3:Caderno capa dura 200 folhas azul"},
        {&k58, "<c>3514 0111 2223 3300 0181 6500 1000 0001 2311 7102 5446",
         "3:3514 0111 2223 3300 0181 6500 1000 0001/3:2311 7102 5446"},
        {&k80, "a  " + n48 + n48 + "x y", "0:a/0:" + n48 + "/0:" + n48 + "/0:x y"},
        {&k58, "a " + n42.substr(2) + "<b>  b</b> c", "3:a " + n42.substr(2) + "/3:b12: c"},
    };
    for (const auto &[papel, texto, esperado] : casos)
        EXPECT_EQ(linhas(posta(texto, *papel)), esperado) << texto;
}

// Were a letter lost or a line overlapped in any mixture, this would see it.
TEST(Pagina, nada_se_perde_e_nada_se_sobrepoe) {
    const std::string texto = "<bmp></bmp>a<xl>bbb</xl><c>c</c>\r\n<da>d</da>\r\n\r\ne<sl>2</sl>f"
                              "<qrcode>g</qrcode><gui></gui><s>h</s>\r\n";
    for (const Papel &papel : kPapeis)
        EXPECT_EQ(faltaNa(posta(texto, papel, {100, 50}), "abbbcdefh"), "");
}

TEST(Pagina, qr_code_tem_o_seu_modulo_ou_o_maior_que_cabe) {
    // Versions 1 to 40 are 21 to 177 modules a side; the quiet zone adds 8.
    const std::string longo(kMaiorQr, 'x');
    const struct {
        const Papel *papel;
        std::string texto;
        int x, modulo;
    } casos[] = {
        {&k80, "<qrcode>u<lmodulo>11</lmodulo></qrcode>", 44, 11},
        {&k80, "<ce><qrcode>u<lmodulo>4</lmodulo></qrcode></ce>", (576 - 21 * 10) / 2, 10}, // 25 mm
        {&k80, "<ad><qrcode>u<lmodulo>11</lmodulo></qrcode></ad>", 576 - 25 * 11, 11},
        {&k58, "<ce><qrcode>u<lmodulo>16</lmodulo></qrcode></ce>", 55, 13},
        {&k76, "<ce><qrcode>" + longo + "</qrcode></ce>", 75, 2},
    };
    for (const auto &[papel, texto, x, modulo] : casos) {
        const Pagina pagina = posta(texto, *papel);
        const auto &qr = std::get<QrPosto>(pagina.elementos.at(0).desenho);
        EXPECT_EQ(qr.modulo, modulo) << texto;
        EXPECT_EQ(qr.x, x) << texto;
        EXPECT_EQ(faltaNa(pagina, ""), "") << texto;
    }
}

TEST(Pagina, papel_tem_fim) {
    const int linhasQueCabem = kMaiorAltura / k80.passo - 1;
    EXPECT_EQ(posta("<sl>255</sl>", k80).altura, posta("", k80).altura + 255 * k80.passo);
    EXPECT_TRUE(paginar(ler(std::string(linhasQueCabem, '\n')), k80, {}));
    for (const std::string &texto : {std::string(kMaiorTexto, '\n'), std::string(kMaiorTexto, 'x'),
                                     repetir("<sl>255</sl>", 60)})
        EXPECT_FALSE(paginar(ler(texto), k80, {}));
}
