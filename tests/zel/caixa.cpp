// SPDX-License-Identifier: MIT
// zel vender, cancelar, inutilizar and consultar over a till's directory: what they leave on disk,
// and what they say of a sale that was refused.
#include "Loja.h"

#include "apoio/Funcoes.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

namespace {

constexpr const char *kPao = "101;P\xc3\xa3o franc\xc3\xaas;6;0,75";
constexpr const char *kCafe = "202;Caf\xc3\xa9;2;18,90;UN;N;-10%;09012100;5102";
constexpr const char *kImpossivel = "303;Queijo;1;10;KG;N;-100%";
constexpr const char *kChave = "35261111222333000181650010000000011171025456";

testing::AssertionResult estaEm(const Loja &loja, std::string_view estado) {
    return loja.zel({"estado"}).deu(0, "Estado:            " + std::string(estado));
}

TEST(Vender, um_cupom_inteiro) {
    const Loja loja;
    const Resultado venda = loja.zel({"vender", kPao, kCafe, "--pagamento",
                                      "Cart\xc3\xa3o de D\xc3\xa9"
                                      "bito=10",
                                      "--pagamento", "Dinheiro=50", "--cpf", "123.456.789-09",
                                      "--ajuste", "-0,52", "--mensagem", "At\xc3\xa9 logo"});
    ASSERT_TRUE(venda.deu(0));
    EXPECT_TRUE(contemTodas(venda.saida, {"Itens:             2\n", "Total:             38.00\n",
                                          "Troco:             22.00\n", "Chave de acesso:   35"}));
    EXPECT_TRUE(contemTodas(loja.ler("documentosEnvio.xml"),
                            {"<xProd>P\xe3o franc\xeas</xProd>", "<NCM>09012100</NCM>",
                             "<CPF>12345678909</CPF>", "<vNF>38.00</vNF>",
                             "<tPag>04</tPag><vPag>10.00</vPag>", "At\xe9 logo"}));
    EXPECT_TRUE(estaEm(loja, "5 encerrado"));
}

// From a file or the input, beside arguments; without a payment all is paid in cash.
TEST(Vender, itens_de_um_arquivo) {
    const Loja loja;
    loja.gravar("itens.txt", "# caf\xe9 da manh\xe3\n1;P\xe3o;1;1,00\n\n2;Leite;1;4,00\n");
    EXPECT_TRUE(
        loja.zel({"vender", "--itens", loja / "itens.txt", kPao, "--json"})
            .deu(0, R"("itens":"3","total":"9.50","pago":"9.50","troco":"0.00","chave":"35)"));
    EXPECT_TRUE(loja.zel({"vender", "--itens", "-"}, {}, "1;P\xe3o;1;1,00\n").deu(0));
    EXPECT_TRUE(contem(loja.ler("documentosEnvio.xml"), "<xProd>P\xe3o</xProd>"));
    EXPECT_TRUE(loja.zel({"vender", "--itens", "-"}, {}, "1;P\xe3o;1;1,00\n2;Leite;1\n")
                    .deu(2, "linha 2: "));
    EXPECT_TRUE(estaEm(loja, "5 encerrado"));
}

// What can be seen beforehand opens no receipt.
TEST(Vender, conferido_antes_de_abrir) {
    const Loja loja;
    const std::pair<Argumentos, std::string_view> casos[] = {
        {{"vender"}, "falta o que vender"},
        {{"vender", kPao, "--cpf", "12345678900"}, "confira os dígitos"},
        {{"vender", kPao, "--cpf", "12345678909", "--estrangeiro", "123456"}, "se excluem"},
        {{"vender", "--continuar", "--estrangeiro", "123456"}, "só vale na abertura"},
        {{"vender", kPao, "--mensagem", std::string(5001, 'x')}, "--cortar"},
        {{"vender", kPao, "--mensagem", "\xe2\x82\xac"}, "ISO-8859-1"},
        {{"vender", "--itens", "/nada/itens.txt"}, "/nada/itens.txt"},
        {{"vender", kPao, "--continuar", "--cancelar"}, "se excluem"},
        {{"vender", "--continuar"}, "não há cupom em andamento"},
    };
    for (const auto &[argumentos, dito] : casos) {
        EXPECT_TRUE(loja.zel(argumentos).deu(2, dito));
        EXPECT_TRUE(estaEm(loja, "0 nenhum"));
    }
}

struct Recusa {
    Argumentos argumentos; // after "vender"
    std::string_view passo, nome, estado;
    Loja::Valores valores = {}, corrigidos = {};
    Argumentos remedio = {};         // after "vender --continuar"
    std::string_view encerrado = {}; // said at the end
};

const Recusa kRecusas[] = {
    {{kPao, kImpossivel}, "vender o item 2 (Queijo)", "ZEL_AJUSTE_EXCESSIVO", "2 vendendo"},
    {{kPao, "--ajuste", "-99"}, "totalizar", "ZEL_AJUSTE_EXCESSIVO", "2 vendendo"},
    {{kPao, "--pagamento", "Cheque=4"},
     "encerrar",
     "ZEL_ENCERRAMENTO_FORA_DE_ORDEM",
     "3 totalizado",
     {},
     {},
     {"--pagamento", "Dinheiro"}},
    {{kPao, "--pagamento", "Cheque=10", "--pagamento", "Dinheiro=1"},
     "pagar 1 na forma 01",
     "ZEL_JA_PAGO",
     "4 pago",
     {},
     {},
     {},
     "Troco:             5.50\n"},
    {{kPao},
     "encerrar",
     "ZEL_CONSUMIDOR_OBRIGATORIO",
     "4 pago",
     {{R"(CONFIGURACAO\ValorMaxIdeCliente)", "4.00"}},
     {},
     {"--cpf", "12345678909"}},
    {{kPao}, "encerrar", "ZEL_RECUSADO", "4 pago", {{R"(IDE\cUF)", "SP"}}, {{R"(IDE\cUF)", "35"}}},
};

// Each refusal is said with its code, what is left, and a way on that works.
TEST(Vender, recusa_diz_o_que_ficou_e_como_continuar) {
    for (const auto &[argumentos, passo, nome, estado, valores, corrigidos, remedio, encerrado] :
         kRecusas) {
        const Loja loja;
        loja.configurar(valores);
        Argumentos venda = argumentos, resto = remedio;
        venda.insert(venda.begin(), "vender");
        const Resultado recusada = loja.zel(venda);
        EXPECT_EQ(recusada.codigo, 2);
        EXPECT_TRUE(contemTodas(recusada.erros,
                                {passo, nome, estado, "Remédio: ", "zel cancelar --diretorio '/"}));
        EXPECT_TRUE(estaEm(loja, estado));
        loja.configurar(corrigidos);
        resto.insert(resto.begin(), {"vender", "--continuar"});
        // What is there is said before it is closed.
        const Resultado continuada = loja.zel(resto);
        EXPECT_TRUE(continuada.deu(0, "Cupom em andamento, que se leva ao fim:\nItem 1:")) << nome;
        EXPECT_TRUE(contem(continuada.saida, encerrado)) << nome;
        EXPECT_TRUE(estaEm(loja, "5 encerrado"));
    }
}

TEST(Vender, consumidor_estrangeiro_e_texto_cortado_se_pedido) {
    const Loja loja;
    ASSERT_TRUE(loja.zel({"vender", "1;" + std::string(121, 'x') + ";1;1", "--cortar",
                          "--estrangeiro", "1234567890"})
                    .deu(0));
    EXPECT_TRUE(contemTodas(loja.ler("documentosEnvio.xml"),
                            {"<idEstrangeiro>1234567890<", ">" + std::string(120, 'x') + "<"}));
}

// Ctrl-C, or a machine that is shut down, in the middle of a sale: nothing of it is left, unless
// the receipt was there before. That one is taken to its end, and said to programs, too.
TEST(Vender, interrompida_eh_inteira_ou_nada) {
    const auto venda = [](const Loja &loja, int sinal, Argumentos argumentos) {
        loja.gravar("itens.txt", repetir("1;P\xe3o;1;1,00\n", 600));
        argumentos.insert(argumentos.begin(), {"vender", "--itens", loja / "itens.txt"});
        return loja.zel(argumentos, {}, {}, [&](pid_t processo) {
            const std::string cupom = loja / "ArqPersist.bin";
            std::error_code erro;
            for (int i = 0; i < 20000 && (!std::filesystem::exists(cupom) ||
                                          std::filesystem::file_size(cupom, erro) < 3000);
                 ++i)
                usleep(1000);
            kill(processo, sinal);
        });
    };
    for (const int sinal : {SIGINT, SIGTERM}) {
        const Loja loja;
        EXPECT_TRUE(venda(loja, sinal, {}).deu(2, "nada foi vendido, e o cupom foi cancelado"));
        EXPECT_TRUE(estaEm(loja, "6 cancelado"));
        EXPECT_FALSE(std::filesystem::exists(loja / "documentosEnvio.xml"));
    }
    const Loja loja;
    loja.noCaixa([](const Funcoes &caixa) { Loja::vender(caixa, 2); });
    EXPECT_TRUE(venda(loja, SIGINT, {"--continuar", "--json"})
                    .deu(0, R"("havia":{"consumidor":{"tipo":"cpf",)"));
    EXPECT_TRUE(estaEm(loja, "5 encerrado"));
}

TEST(Vender, recusa_em_json_e_cancelada_se_pedido) {
    const Loja loja;
    const Resultado recusada = loja.zel({"vender", kImpossivel, "--cancelar", "--json"});
    EXPECT_EQ(recusada.codigo, 2);
    EXPECT_TRUE(contemTodas(recusada.saida,
                            {R"j({"resultado":"recusado","passo":"vender o item 1 (Queijo)",)j"
                             R"j("codigo":-35,"nome":"ZEL_AJUSTE_EXCESSIVO")j",
                             R"("estado":"6 cancelado"})"}));
    EXPECT_TRUE(estaEm(loja, "6 cancelado"));
}

// A receipt that was there before is not this sale's to cancel.
TEST(Vender, cupom_de_outro_fica_como_estava) {
    const Loja loja;
    loja.noCaixa([](const Funcoes &caixa) { Loja::vender(caixa, 2); });
    EXPECT_TRUE(loja.zel({"vender", kPao, "--cancelar"}).deu(2, "não é desta venda"));
    EXPECT_TRUE(estaEm(loja, "2 vendendo"));
    loja.comCaixaAberto(
        [](const Funcoes &caixa) { EXPECT_EQ(caixa.aCFTotalizar_ZEL("", ""), 1); },
        [&] {
            for (const char *venda : {"--continuar", kPao}) {
                const Resultado recusada = loja.zel({"vender", venda});
                EXPECT_TRUE(recusada.deu(2, "o cupom é de outro programa, que está aberto"));
                // It is not to be cancelled from here.
                EXPECT_FALSE(contem(recusada.erros, "Para cancelar"));
            }
        });
    EXPECT_TRUE(estaEm(loja, "3 totalizado"));
}

TEST(Cancelar, o_cupom_em_andamento_em_cada_estado) {
    for (int estado = 1; estado <= 4; ++estado) {
        const Loja loja;
        loja.noCaixa([&](const Funcoes &caixa) { Loja::vender(caixa, estado); });
        EXPECT_TRUE(loja.zel({"cancelar", "--justificativa", "Desistiu da compra"}).deu(2));
        EXPECT_TRUE(loja.zel({"cancelar"}).deu(0));
        EXPECT_TRUE(estaEm(loja, "6 cancelado"));
        EXPECT_TRUE(loja.zel({"cancelar"}).deu(2, "não há o que cancelar"));
        EXPECT_FALSE(std::filesystem::exists(loja / "documentosEnvio.xml"));
    }
}

TEST(Cancelar, o_ultimo_documento) {
    const Loja loja;
    ASSERT_TRUE(loja.zel({"vender", kPao}).deu(0));
    EXPECT_TRUE(loja.zel({"cancelar"}).deu(1, "sem protocolo"));
    loja.configurar({{R"(NFCE\ProtocoloAutorizacao)", "135260000000007"}});
    EXPECT_TRUE(loja.zel({"cancelar", "--justificativa", "Curta"}).deu(2));
    EXPECT_TRUE(
        loja.zel({"cancelar", "--justificativa", "Troca de mercadoria \xc3\xa0 vista", "--json"})
            .deu(0, R"("numero":"2","serie":"1","chave":"35)"));
    EXPECT_TRUE(contemTodas(loja.ler("documentosEnvio.xml"),
                            {"<NtfNumero>2<", "<EvenProt>135260000000007<",
                             "<EvexJust>Troca de mercadoria \xe0 vista<"}));
    // An older document was printed since: which one is meant must be said.
    loja.configurar({{R"(IDE\nNF)", "3"}});
    EXPECT_TRUE(loja.zel({"cancelar"}).deu(2, "diga a CHAVE"));
}

TEST(Cancelar, um_documento_pela_chave) {
    const Loja loja;
    EXPECT_TRUE(loja.zel({"cancelar", std::string(kChave + 1) + "0"}).deu(2));
    EXPECT_TRUE(loja.zel({"cancelar", kChave, "--protocolo", "12"}).deu(2));
    EXPECT_TRUE(loja.zel({"cancelar", kChave, "--protocolo", "135260000000001"}).deu(0));
    EXPECT_TRUE(contemTodas(loja.ler("documentosEnvio.xml"),
                            {"<NtfNumero>1<", kChave, "<EvenProt>135260000000001<"}));
}

struct Pedido {
    Argumentos argumentos;
    int codigo;
    std::string_view dito;         // on either output
    std::string_view gravado = {}; // in documentosEnvio.xml, when not empty
};

const Pedido kPedidos[] = {
    {{"inutilizar", "9", "41", "--serie", "7", "--justificativa", "N\xc3\xbameros pulados"},
     0,
     "pedido gravado",
     "<Justificativa>N\xfameros pulados<"},
    {{"inutilizar", "9", "--serie", "7", "--justificativa", "Pulado na troca", "--json"},
     0,
     R"("inicial":"9","final":"9","serie":"7")",
     "<NumeroFinal>9<"},
    {{"inutilizar", "9", "41", "--justificativa", "Pulados na troca"}, 1, "IDE\\nNF", "<Serie>1<"},
    {{"inutilizar", "9"}, 2, "falta --justificativa"},
    {{"inutilizar", "9", "--justificativa", "x"}, 2, "tem 1 caractere; são"},
    {{"inutilizar"}, 2, "faltam ou sobram"},
    {{"consultar"}, 2, "não há um último documento"},
    {{"consultar", kChave}, 0, "pedido gravado", kChave},
    {{"consultar", "35261111222333000181650010000000011171025457"}, 2, "confira os 44"},
    {{"consultar", "numero", "1", "9", "--json"}, 0, R"("serie":"1")", ">9<"},
    {{"consultar", "data", "2026-01-01", "2026-01-31"}, 0, "2026-01-31", "2026-01-31"},
    {{"consultar", "data", "2026-01-01"}, 2, "INICIAL e FINAL"},
    {{"consultar", "data", "2026-01-01", "2026-01-02", "--serie", "1"}, 2, "vai com numero"},
};

TEST(Pedidos, uma_linha_cada) {
    const Loja loja;
    for (const auto &[argumentos, codigo, dito, gravado] : kPedidos) {
        loja.gravar("documentosEnvio.xml", "");
        EXPECT_TRUE(loja.zel(argumentos).deu(codigo, dito));
        const std::string documento = loja.ler("documentosEnvio.xml");
        EXPECT_EQ(documento.empty(), gravado.empty()) << dito << documento;
        EXPECT_TRUE(contem(documento, gravado));
    }
}

} // namespace
