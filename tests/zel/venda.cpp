// SPDX-License-Identifier: MIT
// What zel vender and the requests read, before the library is asked: the sale and the ranges as
// texts, a table each.
#include "leitura/Venda.h"
#include "apoio/Trecho.h"
#include "leitura/Pedido.h"

#include <gtest/gtest.h>

namespace {

using namespace zel::aplicativo;

std::string escrito(const ItemVenda &item) {
    std::string texto;
    for (const std::string &campo :
         {item.codigo, item.descricao, item.quantidade, item.preco, item.unidade, item.aliquota,
          item.ajuste.tipo, item.ajuste.valor, item.ncm, item.cfop})
        texto += campo + "|";
    return texto;
}
std::string escrito(const PagamentoVenda &pagamento) {
    return pagamento.forma + " " + pagamento.valor;
}
std::string escrito(const Ajuste &ajuste) {
    return ajuste.tipo + " " + ajuste.valor;
}
std::string escrito(const std::string &consumidor) {
    return consumidor;
}

// Reads a text, and writes what was read.
template <class Lido, auto ler>
std::string relido(std::string_view texto, std::string &erro) {
    Lido lido;
    erro = ler(texto, lido);
    return escrito(lido);
}

// With and without what the library would cut.
template <class Lido, auto ler, Excesso excesso = Excesso::kErro>
constexpr auto *com =
    relido<Lido, [](std::string_view texto, Lido &lido) { return ler(texto, lido, excesso); }>;

constexpr auto *item = com<ItemVenda, lerItem>;
constexpr auto *cortado = com<ItemVenda, lerItem, Excesso::kCorta>;
constexpr auto *pagamento = com<PagamentoVenda, lerPagamento>;
constexpr auto *ajuste = com<Ajuste, lerAjuste>;
constexpr auto *consumidor = relido<std::string, lerConsumidor>;
constexpr auto *cnpj = relido<std::string, lerCnpj>;
constexpr auto *estrangeiro = relido<std::string, lerEstrangeiro>;

const struct {
    std::string (*ler)(std::string_view texto, std::string &erro);
    std::string texto, esperado;
    std::string erro = {}; // part of what is said when nothing was to be read
} kTextosDaVenda[] = {
    {item, "101;Leite;1;4,00", "101|Leite|1|4,00|UN|N|||||"},
    {item, " 101 ; P\xc3\xa3o ; 6 ; 0.75 ", "101|P\xe3o|6|0.75|UN|N|||||"},
    {item, "7;Queijo;0,350;39,90;KG;T1800;-1,50;04061010;5405",
     "7|Queijo|0,350|39,90|KG|T1800|D$|1,50|04061010|5405|"},
    {item, "7;Queijo;1;39,90;;;+ 5 %;;", "7|Queijo|1|39,90|UN|N|A%|5|||"},
    {item, "101;Leite;1", "", "CÓDIGO;DESCRIÇÃO"},
    {item, "101;Leite;1;4,00;UN;N;;;;", "", "CÓDIGO;DESCRIÇÃO"},
    {item, ";Leite;1;4,00", "", "falta código"},
    {item, "101; ;1;4,00", "", "falta descrição"},
    {item, "101;Leite;;4,00", "", "falta quantidade"},
    {item, "101;Leite;0,000;4,00", "", "quantidade 0,000"},
    {item, "101;Leite;-1;4,00", "", "quantidade -1"},
    {item, "101;Leite;1;1.234,56", "", "preço 1.234,56"},
    {item, "101;Leite;1;4,00 R$", "", "preço"},
    {item, "101;Leite;1;4,", "", "preço 4,"},
    {item, "101;Leite;1;.5", "", "preço .5"},
    {item, "101;Leite;1234567890123456;4,00", "", "mais de 15"},
    {item, "101;Leite;1;4,00;GARRAFA", "", "unidade com mais de 6"},
    {item, "101;Leite;1;4,00;UN;N;10%", "", "um ajuste é"},
    {item, "101;Caf\xe2\x82\xac;1;4,00", "", "ISO-8859-1"},
    // What the library would cut in silence.
    {item, "1;A;0,33333;1", "", "quantidade 0,33333: tem mais de 4 casas"},
    {item, "1;A;0,333300;1,2345678901000", "1|A|0,333300|1,2345678901000|UN|N|||||"},
    {item, "1;A;1;1,23456789012", "", "preço 1,23456789012: tem mais de 10 casas"},
    {item, "1;A;1;9;UN;N;-1,505", "", "1,505: tem mais de 2 casas"},
    {item, "1;A;1;9;UN;N;-1,505%", "1|A|1|9|UN|N|D%|1,505|||"},
    {item, "1;" + std::string(121, 'x') + ";1;1", "", "--cortar"},
    {cortado, "1;" + std::string(121, 'x') + ";0,33333;1;GARRAFA",
     "1|" + std::string(120, 'x') + "|0,33333|1|GARRAF|N|||||"},
    {cortado, "1;A;1234567890123456;1", "", "mais de 15"},
    {pagamento, "Dinheiro=50,001", "", "mais de 2 casas"},
    {pagamento, "Dinheiro=50,00", "01 50,00"},
    {pagamento,
     "CART\xc3\x83O de cr\xc3\xa9"
     "dito",
     "03 "},
    {pagamento, "04 = 10.5", "04 10.5"},
    {pagamento, "Vale Refei\xc3\xa7\xc3\xa3o", "11 "},
    {pagamento, "99", "99 "},
    // The library would take a misspelt form as "others".
    {pagamento, "Dinhero=5", "", "01 Dinheiro"},
    {pagamento, "", "", "é uma destas"},
    {pagamento, "Dinheiro=", "", "não é um número"},
    {pagamento, "Dinheiro=0", "", "não é um número"},
    {ajuste, "-10%", "D% 10"},
    {ajuste, "+2,00", "A$ 2,00"},
    {ajuste, "- 1.5 ", "D$ 1.5"},
    {ajuste, "", "", "um ajuste é"},
    {ajuste, "10", "", "um ajuste é"},
    {ajuste, "-", "", "um ajuste é"},
    {ajuste, "-%", "", "um ajuste é"},
    {ajuste, "%", "", "um ajuste é"},
    {ajuste, "-0%", "", "um ajuste é"},
    // The library would leave out without a word what is no consumer.
    {consumidor, "123.456.789-09", "12345678909"},
    {consumidor, "11.222.333/0001-81", "11222333000181"},
    {consumidor, "12345678900", "", "confira os dígitos"},
    {consumidor, "Maria", "", "não é um CPF"},
    {consumidor, "1234567890", "", "confira os dígitos"}, // is no foreigner
    {cnpj, "11.222.333/0001-81", "11222333000181"},
    {cnpj, "123.456.789-09", "", "não é um CNPJ"},
    {estrangeiro, "1234567890", "1234567890"},
    {estrangeiro, "AB123456", "", "só guarda os dígitos"},
    {estrangeiro, "12345678900", "", "o toma por um CPF"},
    {estrangeiro, "12345678901234", "", "o toma por um CNPJ"},
    {estrangeiro, "1234", "", "de 5 a 20"},
    {consumidor, "123", "", "confira"},
};

TEST(Venda, cada_texto_se_le_ou_diz_por_que_nao) {
    for (const auto &[ler, texto, esperado, erroEsperado] : kTextosDaVenda) {
        std::string erro;
        const std::string lido = ler(texto, erro);
        EXPECT_EQ(erro.empty(), erroEsperado.empty()) << texto << ": " << erro;
        EXPECT_TRUE(contem(erro, erroEsperado)) << texto;
        if (erro.empty()) {
            EXPECT_EQ(lido, esperado);
        }
    }
}

TEST(Venda, arquivo_de_itens) {
    std::vector<ItemVenda> itens;
    EXPECT_EQ(lerItens("\xEF\xBB\xBF# lista\r\n\r\n1;P\xc3\xa3o;1;1\r\n2;Leite;2;3", itens), "");
    ASSERT_EQ(itens.size(), 2U);
    EXPECT_EQ(itens[0].descricao, "P\xe3o");
    EXPECT_EQ(lerItens("3;P\xe3o;1;1\n", itens), "");
    EXPECT_EQ(itens[2].descricao, "P\xe3o");
    EXPECT_EQ(lerItens("# x\n4;A;1;1\n5;B;um;1", itens).substr(0, 9), "linha 3: ");
    itens.clear();
    EXPECT_EQ(lerItens(repetir("1;A;1;1\n", 999), itens), "");
    EXPECT_EQ(lerItens("9;A;1;1", itens), "linha 1: um cupom tem até 999 itens");
}

struct Texto {
    std::string (*conferir)(std::string_view);
    std::string texto;
    bool certo;
};

const Texto kTextos[] = {
    {conferirNumero, "1", true},         {conferirNumero, "999999999", true},
    {conferirNumero, "0", false},        {conferirNumero, "1000000000", false},
    {conferirNumero, "-1", false},       {conferirNumero, "", false},
    {conferirSerie, "0", true},          {conferirSerie, "999", true},
    {conferirSerie, "0001", false},      {conferirSerie, "1a", false},
    {conferirData, "2024-02-29", true},  {conferirData, "2026-12-31", true},
    {conferirData, "2026-02-29", false}, {conferirData, "2100-02-29", false},
    {conferirData, "2026-13-01", false}, {conferirData, "2026-04-31", false},
    {conferirData, "2026-1-1", false},   {conferirData, "2026-00-10", false},
    {conferirData, "31/01/2026", false},
};

TEST(Pedido, textos_de_um_pedido) {
    for (const Texto &caso : kTextos)
        EXPECT_EQ(caso.conferir(caso.texto).empty(), caso.certo) << caso.texto;
    EXPECT_EQ(conferirFaixa("9", "10"), "");
    EXPECT_NE(conferirFaixa("10", "9").find("vem antes"), std::string::npos);
    // Counted in characters, as the tax authority does.
    EXPECT_EQ(conferirJustificativa("N\xc3\xbameros pulados", 60), "");
    EXPECT_NE(conferirJustificativa("N\xc3\xbameros pulado", 60), "");
    EXPECT_NE(conferirJustificativa(std::string(61, 'x'), 60), "");
}

} // namespace
