// SPDX-License-Identifier: MIT
// Sectors whose text depends on a border; the rest of them stands in the golden receipts.
#include "impressao/Escrita.h"
#include "impressao/Setores.h"
#include "impressao_apoio.h"

using namespace impressao;
using Setores = Teste;

namespace {

Item umPorDois() {
    Item item;
    item.CodigoProduto = "1";
    item.Quantidade = "1";
    item.Unidade = "UN";
    item.ValorUnitario = 2;
    return item;
}

} // namespace

// "001 1  " + description + "  1 UN X 2.00 2.00": a description of 30 makes a line of 55.
TEST_F(Setores, linha_do_item_so_quebra_na_sua_largura) {
    const std::string preco = " UN     X 2.00                   2.00</c>\r\n";
    const std::tuple<int, std::size_t, std::string> casos[] = {
        {42, 30, "   1 UN X 2.00 2.00</c>\r\n"},
        {42, 31, "\r\n1" + std::string(18, ' ') + preco},
        {48, 31, "   1 UN X 2.00 2.00</c>\r\n"},
        {48, 32, "</c>\r\n<c>1" + std::string(19, ' ') + preco},
    };
    for (const auto &[colunas, tamanho, resto] : casos) {
        Item item = umPorDois();
        item.DescricaoProduto = std::string(tamanho, 'd');
        std::string texto;
        imprimirSetor_III(*createLayout(colunas), {&item, 1}, texto);
        EXPECT_EQ(texto, "<c>001 1  " + std::string(tamanho, 'd') + resto);
    }
}

TEST_F(Setores, rotulo_e_troco_ficam_nas_suas_linhas) {
    const std::string semRotulo = "Pago\r\n" + std::string(44, ' ') + "1.00\r\nCheque  ";
    const std::tuple<std::string_view, bool, std::string_view, int> casos[] = {
        {"0.00", true, "  3.00\r\n", 0},
        {"9.50", false, "  3.00\r\n", 1},
        {"9.50", true, " 12.50\r\n", 1},
    };
    for (const auto &[troco, indicador, ultimo, linhas] : casos) {
        configurar({{R"(CONFIGURACAO\TrocoUltimaNFCe)", troco}});
        CupomFiscal cf;
        cf.Pagamentos = {{6, 1}, {2, 4}, {6, 3}}; // an unknown form keeps the label before
        std::string texto;
        imprimirSetor_IV(*createLayout(48), cf, indicador, texto);
        EXPECT_TRUE(contem(texto, semRotulo, 1));
        EXPECT_TRUE(contem(texto, "\r\nCheque ", 2));
        EXPECT_TRUE(contem(texto, " 4.00\r\n", 1));
        EXPECT_TRUE(contem(texto, ultimo, 1));
        EXPECT_TRUE(contem(texto, "TROCO                   ", linhas));
    }
}

TEST_F(Setores, so_as_marcas_de_um_valor_ganham_um_branco) {
    const Pares casos{
        {"<gui></gui> <xl>GRANDE", "< gui>< /gui> < xl>GRANDE"},
        {"<qrcode>x<lmodulo>9</lmodulo></qrcode>", "< qrcode>x< lmodulo>9< /lmodulo>< /qrcode>"},
        {"<bmp><logo><upc-a><code128><i2of5>", "< bmp>< logo>< upc-a>< code128>< i2of5>"},
        {"<B><QrCode></GUI>", "< B>< QrCode>< /GUI>"},
        {"<<b>> <b", "<< b>> <b"},
        {"Pao <doce> a < b > c <> </> <//b> < b> <b > <bb> [b]",
         "Pao <doce> a < b > c <> </> <//b> < b> <b > <bb> [b]"},
    };
    for (const auto &[valor, esperado] : casos) {
        EXPECT_EQ(inofensivo(valor), esperado);
        EXPECT_EQ(inofensivo(esperado), esperado);
    }
    // The text's size is promised.
    const std::string muitas = inofensivo(repetir("<b>", 1000));
    EXPECT_EQ(muitas.size(), 3100U);
    EXPECT_EQ(muitas.find("<b>"), muitas.npos);
}

// Made harmless the item below is a column wider, which is where its line breaks.
TEST_F(Setores, colunas_contam_o_valor_como_sai) {
    for (const auto &[colunas, tamanho] : {std::pair{42, 26U}, {48, 27U}}) {
        Item item = umPorDois();
        for (const bool quebra : {false, true}) {
            item.DescricaoProduto = "<b>" + std::string(tamanho + (quebra ? 1 : 0), 'd');
            std::string texto;
            imprimirSetor_III(*createLayout(colunas), {&item, 1}, texto);
            EXPECT_TRUE(contem(texto, "< b>d", 1));
            EXPECT_EQ(vezesEm(texto, "\r\n"), quebra ? 2 : 1) << texto;
        }
        item.DescricaoProduto = std::string(60, 'd');
        item.Unidade = "<b>";
        std::string texto;
        imprimirSetor_III(*createLayout(colunas), {&item, 1}, texto);
        EXPECT_TRUE(contem(texto, " < b>   X 2.00 ", 1));
    }
}
