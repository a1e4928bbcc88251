// SPDX-License-Identifier: MIT
// Every refusal answers its own code and changes nothing: an application decides by these numbers.
#include "apoio/Chamadas.h"
#include "apoio/Passos.h"
#include "apoio/Trecho.h"
#include "blackbox/Caixa.h"

#include <gtest/gtest.h>

#include <array>

namespace {

// A till brought to a state by the calls that lead there.
void levarAoEstado(const Caixa &c, int estado) {
    ASSERT_EQ(c->aCFInicializar_ZEL(), ZEL_OK);
    if (estado == 6) return c.config("CONFIGURACAO\\estadoCFe", "6");
    ASSERT_EQ(avancar(c, estado), estado);
    ASSERT_EQ(c->rCFVerificarStatus_ZEL(), estado);
}

// A sale as the rows of the tables below vary it.
Pedido venda(const char *quantidade, const char *preco, const char *tipo = "",
             const char *valor = "", const char *codigo = "1") {
    return Pedido("aCFVender_ZEL", "T1800", quantidade, preco, tipo, valor, codigo, "UN",
                  "Produto");
}

// One operation, and what it answers in each state 0 to 6.
struct LinhaDeEstados {
    Pedido pedido;
    std::array<int, 7> esperado;
};

const LinhaDeEstados kLinhas[] = {
    {Pedido("aCFAbrir_ZEL"), {1, -130, -130, -130, -130, 1, 1}},
    {Pedido("aCFAbrirNumSerie_ZEL", "7", "1"), {1, -130, -130, -130, -130, 1, 1}},
    {venda("1", "10.00"), {-131, 1, 1, -132, -132, -132, -132}},
    {Pedido("aCFTotalizar_ZEL"), {-131, -133, 1, -133, -133, -133, -133}},
    {Pedido("aCFEfetuarPagamento_ZEL", "dinheiro", "1"), {-131, -134, -134, 1, -34, -134, -134}},
    {Pedido("tCFEncerrar_ZEL"), {-131, -135, -135, -135, 1, -135, -135}},
    {Pedido("tCFEncerrarConfigMsg_ZEL", "a", "b"), {-131, -135, -135, -135, 1, -135, -135}},
    {Pedido("aCFLancarDescontoItem_ZEL", "1", "D$", "1"), {-100, -100, 1, -100, -100, -100, -100}},
    {Pedido("aCFLancarAcrescimoItem_ZEL", "1", "A$", "1"), {-100, -100, 1, -100, -100, -100, -100}},
    {Pedido("aCFCancelarItem_ZEL", "1"), {-100, -100, 1, -100, -100, -100, -100}},
    {Pedido("aCFCancelarItemParcial_ZEL", "1", "0.5"), {-100, -100, 1, -100, -100, -100, -100}},
    {Pedido("aCFCancelarDescontoItem_ZEL", "1"), {-100, -100, -21, -100, -100, -100, -100}},
    {Pedido("aCFEstornarPagamento_ZEL", "dinheiro", "cheque", "10.00"),
     {-100, -100, -100, -100, 1, -100, -100}},
    {Pedido("aCFConfPisNT_ZEL", "07"), {-100, 1, 1, 1, -100, -100, -100}},
    // No delivery, whatever the state.
    {Pedido("aCFIdentificarTransportadora_ZEL"), {-109, -109, -109, -109, -109, -100, -100}},
    // No state check: the consumer is identified at any point, once there is a document.
    {Pedido("aCFIdentificarConsumidor_ZEL", "12345678909"), {-52, 1, 1, 1, 1, 1, -52}},
};

TEST(Estados, cada_operacao_em_cada_estado) {
    for (int estado = 0; estado <= 6; ++estado)
        for (const LinhaDeEstados &linha : kLinhas) {
            Caixa caixa;
            ASSERT_NO_FATAL_FAILURE(levarAoEstado(caixa, estado));
            EXPECT_EQ(fazer(caixa, linha.pedido), linha.esperado[static_cast<std::size_t>(estado)])
                << linha.pedido.funcao << " in state " << estado;
        }
}

TEST(Estados, um_digito_danificado_nao_trava_o_caixa) {
    Caixa caixa;
    for (const char *valor : {"7", "9", "x", ""}) {
        caixa.config("CONFIGURACAO\\estadoCFe", valor);
        EXPECT_EQ(caixa->rCFVerificarStatus_ZEL(), 0) << valor;
    }
    EXPECT_EQ(abrir(caixa), ZEL_OK);
}

// Refusals with a receipt of two items (10.00 and 20.00, the second with a discount) in state 2.
struct Recusa {
    const char *descricao;
    Pedido pedido;
    int esperado;
};

const Recusa kRecusas[] = {
    {"price below zero", venda("1", "-1"), -99},
    {"price with two points", venda("1", "1.0.0"), -99},
    {"adjustment below zero", venda("1", "1", "D$", "-1"), -99},
    {"no price", venda("1", ""), -120},
    {"surcharge at the bound", venda("1", "1", "A$", "1"), -35},
    {"written amount decides", venda("1", "1", "D%", "99,6"), -35},
    {"no product code", venda("1", "1", "", "", ""), -120},
    {"null texts", Pedido("aCFVender_ZEL", kNulo, kNulo, kNulo, kNulo, kNulo, kNulo, kNulo, kNulo),
     -120},
    {"null tag text", Pedido("aCFVenderXml_ZEL", kNulo), -121},
    {"tag text with a comment", Pedido("aCFVenderXml_ZEL", "<!-- x --><prod></prod>"), -1},
    {"null value", Pedido("aCFLancarAcrescimoItem_ZEL", "1", "A$", kNulo), -99},
    {"value below zero", Pedido("aCFLancarAcrescimoItem_ZEL", "1", "A$", "-0,01"), -99},
    {"discount of all", Pedido("aCFLancarDescontoItem_ZEL", "1", "D$", "10"), -35},
    {"surcharge of all", Pedido("aCFLancarAcrescimoItem_ZEL", "1", "A%", "100"), -35},
    {"cancel a whole quantity", Pedido("aCFCancelarItemParcial_ZEL", "1", "1,0000"), -31},
    {"cancel nothing given", Pedido("aCFCancelarItemParcial_ZEL", "1"), -99},
    {"cancel a negative quantity", Pedido("aCFCancelarItemParcial_ZEL", "1", "-1"), -99},
    {"CPF of ten digits", Pedido("aCFIdentificarConsumidor_ZEL", "1234567890"), -120},
    {"blank tax amount", Pedido("aCFValorLeiImposto_ZEL", "  "), -99},
};

TEST(Recusas, respondem_seu_codigo_e_nada_muda) {
    Caixa caixa;
    ASSERT_NO_FATAL_FAILURE(levarAoEstado(caixa, 2));
    ASSERT_EQ(caixa->aCFVender_ZEL("T1800", "2", "10", "D$", "1", "2", "UN", "Outro"), ZEL_OK);
    const std::string registros = caixa.lerArquivo("ArqPersist.bin");
    const std::string configuracao = caixa.lerArquivo("ZEL_Framework.xml");
    for (const Recusa &recusa : kRecusas) {
        EXPECT_EQ(fazer(caixa, recusa.pedido), recusa.esperado) << recusa.descricao;
        EXPECT_EQ(caixa.lerArquivo("ArqPersist.bin"), registros) << recusa.descricao;
        EXPECT_EQ(caixa.lerArquivo("ZEL_Framework.xml"), configuracao) << recusa.descricao;
    }
    EXPECT_EQ(caixa.info("1"), "2");
}

// A relief without its reason: an invented one would be the shop's word to the tax authority.
TEST(Desoneracao, valor_sem_motivo_nao_vende) {
    Caixa caixa;
    ASSERT_NO_FATAL_FAILURE(levarAoEstado(caixa, 1));
    ASSERT_EQ(caixa->aCFConfICMS40_ZEL("0", "40", "1,50", ""), ZEL_OK);
    EXPECT_EQ(vender(caixa), ZEL_TAG_NAO_CONFORME);
    ASSERT_EQ(caixa->aCFConfICMS40_ZEL("0", "40", "0,00", ""), ZEL_OK);
    EXPECT_EQ(vender(caixa), ZEL_OK) << "without a value there is none to give reasons for";
    caixa.config("IMPOSTO\\ICMS\\ICMS00\\Orig", "");
    for (const auto &[chave, valor] : {std::pair("Orig", "0"), {"CST", "40"}, {"vICMS", "1.50"}})
        caixa.config((std::string("IMPOSTO\\ICMS\\ICMS40\\") + chave).c_str(), valor);
    EXPECT_EQ(vender(caixa), ZEL_TAG_NAO_CONFORME);
    caixa.config("IMPOSTO\\ICMS\\ICMS40\\motDesICMS", "9");
    EXPECT_EQ(vender(caixa), ZEL_OK);
}

// A size constant smaller than the longest value, a read that fails and leaves what the buffer
// held, a write to a text that is a result only on success: callers pass constants.
TEST(Buffers, tamanhos_bastam_e_recusas_nao_deixam_restos) {
    Caixa caixa;
    const std::string url(600, 'u');
    caixa.config("NFCE\\UrlQrcode", url.c_str());
    std::vector<char> lida(ZEL_TAMANHO_VALOR, '?'); // on the heap, for the sanitizer to see
    EXPECT_EQ(caixa->rURLQrcode_ZEL(lida.data()), ZEL_OK);
    EXPECT_EQ(lida.data(), url.substr(0, ZEL_TAMANHO_VALOR - 1));
    EXPECT_EQ(caixa->regRetornarValor_ZEL("IDE\\naoExiste", lida.data()), ZEL_RECUSADO);
    EXPECT_STREQ(lida.data(), "");
    static const char kDiretorios[] = "/tmp/|/var/";
    char *constante = const_cast<char *>(kDiretorios);
    EXPECT_EQ(caixa->aCFContingenciaUltimaNota_ZEL(4, constante), ZEL_RECUSADO) << "no document";
    EXPECT_EQ(caixa->aCFContingenciaUltimaNota_ZEL(9, constante), ZEL_RECUSADO) << "no such kind";
}

// A total adjustment that one item refuses: answering 1 would let part of it, or what the item
// carried before, disappear.
TEST(Rateio, ou_todos_os_itens_ou_nenhum) {
    const Pedido comAmbos(
        "aCFVenderXml_ZEL",
        trocar(kItem, "<indTot>", "<vDesc>1.00</vDesc><vOutro>2.00</vOutro><indTot>"));
    const Pedido comAcrescimo = venda("1", "300", "A$", "100");
    const struct {
        const char *descricao;
        Pedido venda;
        const char *tipo, *valor;
        const char *total;                           // null: refused
        std::optional<Pedido> depois = std::nullopt; // of the sale
    } casos[] = {
        {"0.99 of 0.994", venda("1", "0.994", "D$", "0.50"), "D$", "50.00", nullptr},
        {"0.98 of 0.994", venda("1", "0.994", "D$", "0.50"), "D$", "49.00", "51.49"},
        {"0.99 of 0.996", venda("1", "0.996", "D$", "0.50"), "D$", "50.00", "50.50"},
        {"surcharge into a discount", comAcrescimo, "D$", "399.99", "100.01"},
        {"surcharge into a discount of all", comAcrescimo, "D$", "400", nullptr,
         Pedido("aCFCancelarItem_ZEL", "1")},
        {"discount beyond what is left", venda("100", "3", "D$", "200"), "A$", "50.00", nullptr,
         Pedido("aCFCancelarItemParcial_ZEL", "0", "50")},
        {"item with both adjustments", comAmbos, "D$", "1.00", nullptr},
        {"price of nothing", venda("1", "0.00"), "A$", "1.00", nullptr},
        // Where nothing can be lost: what rounds to nothing takes no share, and needs none.
        {"no share of a discount", venda("0,001", "3,99"), "D$", "1.00", "99.00"},
        {"no share of a surcharge", venda("1", "0.004"), "A$", "1.00", "101.00"},
        {"no share of a percentage", venda("0,001", "3,99"), "D%", "10", "90.00"},
        {"no amount", venda("0,001", "3,99"), "D", "5", "100.00"},
        {"nothing to adjust", venda("0,001", "3,99"), "", "5", "100.00"},
        {"0.99 of 0.994, not written", venda("1", "0.994"), "X%", "99.8", "100.99"},
        {"nothing of nothing, not written", venda("1", "0.00"), "X$", "1.00", nullptr},
    };
    for (const auto &caso : casos) {
        SCOPED_TRACE(caso.descricao);
        Caixa caixa;
        ASSERT_NO_FATAL_FAILURE(levarAoEstado(caixa, 1));
        ASSERT_EQ(vender(caixa, "100.00"), ZEL_OK);
        ASSERT_EQ(fazer(caixa, caso.venda), ZEL_OK);
        ASSERT_EQ(caso.depois ? fazer(caixa, *caso.depois) : ZEL_OK, ZEL_OK);
        const std::string registros = caixa.lerArquivo("ArqPersist.bin");
        if (caso.total != nullptr) {
            ASSERT_EQ(totalizar(caixa, caso.tipo, caso.valor), ZEL_OK);
            EXPECT_EQ(caixa.info("1"), caso.total);
            continue;
        }
        EXPECT_EQ(totalizar(caixa, caso.tipo, caso.valor), ZEL_AJUSTE_EXCESSIVO);
        EXPECT_EQ(caixa->rCFVerificarStatus_ZEL(), 2);
        // What memory holds is written whole once more.
        ASSERT_EQ(vender(caixa), ZEL_OK);
        ASSERT_EQ(caixa->aCFCancelarItem_ZEL(std::stoi(caixa.info("1"))), ZEL_OK);
        EXPECT_EQ(caixa.lerArquivo("ArqPersist.bin"), registros);
    }
}

TEST(ConsumidorObrigatorio, acima_do_limite) {
    struct Caso {
        const char *documento;
        const char *preco;
        int simples, comDuasMensagens;
    };
    for (const Caso &caso :
         {Caso{"", "10000.00", 1, 1}, Caso{"", "10000.01", -108, -108},
          Caso{"12345678909", "10000.01", 1, 1}, Caso{"11222333000181", "10000.01", 1, -108},
          Caso{"123456", "10000.01", 1, -108}}) {
        for (const bool ambas : {false, true}) {
            Caixa caixa;
            ASSERT_EQ(abrir(caixa, caso.documento), ZEL_OK);
            ASSERT_EQ(vender(caixa, caso.preco), ZEL_OK);
            ASSERT_EQ(totalizar(caixa), ZEL_OK);
            ASSERT_EQ(pagar(caixa), ZEL_OK);
            EXPECT_EQ(ambas ? caixa->tCFEncerrarConfigMsg_ZEL("", "") : encerrar(caixa),
                      ambas ? caso.comDuasMensagens : caso.simples)
                << caso.documento << " " << caso.preco;
        }
    }
}

TEST(Pagamento, troco_estorno_e_informacoes) {
    Caixa caixa;
    ASSERT_NO_FATAL_FAILURE(levarAoEstado(caixa, 3));
    EXPECT_EQ(caixa.info("1"), "10.00");
    EXPECT_EQ(caixa.info("2"), "");
    EXPECT_EQ(pagar(caixa, "dinheiro", "-1"), -99);
    ASSERT_EQ(pagar(caixa, "vale presente", "4"), ZEL_OK);
    EXPECT_EQ(caixa->rCFVerificarStatus_ZEL(), 3);
    EXPECT_EQ(caixa.info("1"), "+");
    EXPECT_EQ(caixa.info("2"), "6.00");
    ASSERT_EQ(pagar(caixa, "dinheiro", "20,00"), ZEL_OK);
    EXPECT_EQ(caixa.config("CONFIGURACAO\\TrocoUltimaNFCe"), "14.00");
    EXPECT_EQ(caixa->rCFVerificarStatus_ZEL(), 4);
    // The last line is looked for by what the customer gave.
    EXPECT_EQ(caixa->aCFEstornarPagamento_ZEL("dinheiro", "cheque", "6.00"), -12);
    EXPECT_EQ(caixa->aCFEstornarPagamento_ZEL("dinheiro", "", "20"), -99);
    EXPECT_EQ(caixa->aCFEstornarPagamento_ZEL("dinheiro", "cheque", "20"), ZEL_OK);
    EXPECT_TRUE(contem(caixa.lerArquivo("ArqPersist.bin"), "<tPag>02</tPag><vPag>6.00</vPag>"));
    EXPECT_EQ(pagar(caixa, "01", "1"), -34);
    EXPECT_EQ(caixa.config("CONFIGURACAO\\TrocoUltimaNFCe"), "0");
}

// A barcode typed as the value: the document must carry the total, the drawer must not owe a change
// that no key can hold.
TEST(Pagamento, muito_acima_do_total) {
    const struct {
        const char *primeiro, *valor;
        int codigo;
        const char *linha, *troco;
    } casos[] = {
        {"", "999999999999.99", ZEL_OK, "10.01", "999999999989.98"},
        {"3.33", "999999999999.99", ZEL_OK, "6.68", "999999999993.31"},
        {"", "1000000000009.9", ZEL_OK, "10.01", "999999999999.89"},
        {"", "1000000000010.1", ZEL_PAGAMENTO_INEXISTENTE, "", "0"},
        {"10.00", "99999999999999", ZEL_PAGAMENTO_INEXISTENTE, "", "0"},
        {"", "7891234567895", ZEL_PAGAMENTO_INEXISTENTE, "", "0"},
        {"", "10.014", ZEL_OK, "10.01", "0"},
        {"", "-0.001", ZEL_ARGUMENTO_INVALIDO, "", "0"},
        {"10.00", "-0,00", ZEL_OK, "0.01", "0"},
    };
    for (const auto &caso : casos) {
        SCOPED_TRACE(std::string(caso.primeiro) + " then " + caso.valor);
        Caixa caixa;
        ASSERT_NO_FATAL_FAILURE(levarAoEstado(caixa, 1));
        ASSERT_EQ(vender(caixa, "10.01"), ZEL_OK);
        ASSERT_EQ(totalizar(caixa), ZEL_OK);
        caixa.config("CONFIGURACAO\\TrocoUltimaNFCe", "0");
        if (*caso.primeiro != '\0') {
            ASSERT_EQ(pagar(caixa, "cheque", caso.primeiro), ZEL_OK);
        }
        const std::string antes = caixa.lerArquivo("ArqPersist.bin");
        EXPECT_EQ(pagar(caixa, "dinheiro", caso.valor), caso.codigo);
        EXPECT_EQ(caixa.config("CONFIGURACAO\\TrocoUltimaNFCe"), caso.troco);
        const std::string depois = caixa.lerArquivo("ArqPersist.bin");
        if (caso.codigo != ZEL_OK) {
            EXPECT_EQ(depois, antes);
            continue;
        }
        EXPECT_EQ(elemento(depois.substr(antes.size()), "vPag"), caso.linha);
        EXPECT_EQ(caixa->aCFEstornarPagamento_ZEL("dinheiro", "cheque", caso.valor),
                  std::string_view(caso.valor) == "-0,00" ? ZEL_PAGAMENTO_INEXISTENTE : ZEL_OK);
        EXPECT_EQ(encerrar(caixa), ZEL_OK);
    }
}

TEST(InformacaoEstendida, vendendo_e_encerrado) {
    Caixa caixa;
    EXPECT_EQ(caixa.info("9"), "") << "no index is wrong before the first sale";
    ASSERT_NO_FATAL_FAILURE(levarAoEstado(caixa, 1));
    ASSERT_EQ(caixa->aCFVender_ZEL("T1800", "1", "7.50", "A%", "10", "1", "UN", "P"), ZEL_OK);
    EXPECT_EQ(caixa.info("1"), "1");
    EXPECT_EQ(caixa.info("2"), "A%");
    EXPECT_EQ(caixa.info("3"), "7.50");
    EXPECT_EQ(caixa.info("4"), "");
    ASSERT_EQ(totalizar(caixa), ZEL_OK);
    ASSERT_EQ(pagar(caixa, "01", "8.25"), ZEL_OK);
    ASSERT_EQ(encerrar(caixa), ZEL_OK);
    EXPECT_EQ(caixa.info("1"), "8.25");
    EXPECT_EQ(caixa.info("2"), "2");
    EXPECT_EQ(caixa.info("3"), caixa.config("NFCE\\ChaveDeAcesso"));
    EXPECT_EQ(caixa.info("5"), "1");
}

} // namespace
