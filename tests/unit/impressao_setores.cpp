// Sectors whose text depends on a border: the length of an item line, the form of a payment, the
// change, the taxes message.
#include "impressao/Setores.h"
#include "impressao_apoio.h"

using namespace impressao;

namespace {

using Setores = Teste;

const ColunasLayout &layout(int colunas) {
    return *createLayout(colunas);
}

// "001 1  " + description + "  1 UN X 2.00 2.00": a description of 30 makes a line of 55.
std::string linhaDoItem(int colunas, std::size_t tamanho) {
    Item item;
    item.CodigoProduto = "1";
    item.DescricaoProduto = std::string(tamanho - 25, 'd');
    item.Quantidade = "1";
    item.Unidade = "UN";
    item.ValorUnitario = 2;
    std::string texto;
    imprimirSetor_III(layout(colunas), {&item, 1}, texto);
    return texto;
}

std::string totais(int colunas, const CupomFiscal &cf) {
    std::string texto;
    imprimirSetor_IV(layout(colunas), cf, texto);
    return texto;
}

} // namespace

TEST_F(Setores, item_line_at_the_border_of_its_width) {
    const auto uma = [](std::size_t descricao, std::size_t brancos) {
        return "<c>001 1  " + std::string(descricao, 'd') + std::string(brancos, ' ') +
               "  1 UN X 2.00 2.00</c>\r\n";
    };
    const auto duas = [](std::size_t descricao, std::string_view quebra, std::size_t brancos) {
        return "<c>001 1  " + std::string(descricao, 'd') + std::string(quebra) + "1" +
               std::string(brancos, ' ') + " UN     X 2.00                   2.00</c>\r\n";
    };
    EXPECT_EQ(linhaDoItem(42, 55), uma(30, 1));
    EXPECT_EQ(linhaDoItem(42, 56), duas(31, "\r\n", 18));
    EXPECT_EQ(linhaDoItem(42, 57), duas(32, "\r\n", 18));
    EXPECT_EQ(linhaDoItem(48, 55), uma(30, 2));
    EXPECT_EQ(linhaDoItem(48, 56), uma(31, 1));
    EXPECT_EQ(linhaDoItem(48, 57), duas(32, "</c>\r\n<c>", 19));
}

// Known forms stand in the golden receipts.
TEST_F(Setores, unknown_payment_form_keeps_the_label_before) {
    CupomFiscal cf;
    cf.Pagamentos = {{6, 1}, {2, 2}, {6, 3}};
    EXPECT_TRUE(contem(totais(48, cf), "Pago\r\n" + std::string(44, ' ') + "1.00\r\nCheque  "));
    EXPECT_TRUE(contem(totais(48, cf), "\r\nCheque ", 2));
}

TEST_F(Setores, change_is_added_to_the_last_payment_only_when_asked) {
    CupomFiscal cf;
    cf.Pagamentos = {{1, 4}, {1, 6.5}};
    const struct {
        std::string_view troco;
        bool indicador;
        std::string_view ultimo;
        int linhas;
    } casos[] = {
        {"", false, " 6.50\r\n", 0},     {"0.00", true, " 6.50\r\n", 0},
        {"9.50", false, " 6.50\r\n", 1}, {"9.50", true, "16.00\r\n", 1},
        {"-1.00", true, " 5.50\r\n", 0},
    };
    for (const auto &caso : casos) {
        configurar({{R"(CONFIGURACAO\TrocoUltimaNFCe)", caso.troco}});
        G_stDadosImpressao.IndicadorTroco = caso.indicador;
        for (const int colunas : {42, 48}) {
            const std::string texto = totais(colunas, cf);
            EXPECT_TRUE(contem(texto, " 4.00\r\n"));
            EXPECT_TRUE(contem(texto, caso.ultimo));
            EXPECT_TRUE(contem(texto, "TROCO                   ", caso.linhas));
        }
    }
}

TEST_F(Setores, taxes_take_the_place_of_the_bar) {
    const std::pair<std::string_view, std::string_view> casos[] = {
        {"antes|depois", "<c>antes12.30depois</c>\r\n"},
        {"a|b|c", "<c>a12.30b|c</c>\r\n"},
        {"Tributos", "<c>Tributos 12.30</c>\r\n"},
        {"", "<c> 12.30</c>\r\n"},
    };
    CupomFiscal cf;
    std::string nada;
    imprimirSetor_V(layout(42), cf, "Tributos", nada);
    EXPECT_EQ(nada, "");
    cf.ValorTotalTributos = 12.3;
    for (const auto &[mensagem, esperado] : casos) {
        std::string texto;
        imprimirSetor_V(layout(42), cf, mensagem, texto);
        EXPECT_EQ(texto, std::string(esperado).append(layout(42).separador));
    }
}

// The closing text of the document in progress prints with its mark-up; without one, or without a
// document, the receipt's own text does.
TEST_F(Setores, promotional_text_and_its_switch) {
    CupomFiscal cf;
    cf.MsgPromocional = "do [cupom]";
    const auto imprimir = [&cf](int colunas) {
        std::string texto;
        imprimirMsgPromocional(layout(colunas), cf, texto);
        return texto;
    };
    EXPECT_TRUE(contem(imprimir(42), "<ce>Mensagem Promocional</ce>\r\ndo [cupom]"));
    EXPECT_EQ(imprimir(48), "");
    configurar(
        {{R"(NFCE\MSGPROMOCIONAL\Imprimir)", "1"}, {R"(NFCE\MSGPROMOCIONAL\Titulo)", "Oba"}});
    EXPECT_TRUE(contem(imprimir(48), "-\r\n<ce>Oba</ce>\r\ndo [cupom]"));

    G_stXML_Persistencia.encerramento.emplace("ENCERRAMENTO");
    EXPECT_TRUE(contem(imprimir(48), "do [cupom]"));
    encerrarCom("[b]A &amp; B[/b]&#10;fim");
    EXPECT_TRUE(contem(imprimir(48), "</ce>\r\n<b>A & B</b>\nfim"));
}
