// SPDX-License-Identifier: MIT
// zel vender, cancelar, inutilizar and consultar over a till's directory: what they leave on disk,
// and what they say of a sale that was refused.
#include "Loja.h"

#include "apoio/Funcoes.h"

#include <gtest/gtest.h>

namespace {

using Argumentos = std::vector<std::string>;

constexpr const char *kPao = "101;P\xc3\xa3o franc\xc3\xaas;6;0,75";
constexpr const char *kCafe = "202;Caf\xc3\xa9;2;18,90;UN;N;-10%;09012100;5102";
constexpr const char *kImpossivel = "303;Queijo;1;10;KG;N;-100%";

Resultado zel(const Loja &loja, Argumentos argumentos, std::string_view entrada = {}) {
    argumentos.insert(argumentos.end(), {"--diretorio", loja.diretorio()});
    return rodar(argumentos, {}, entrada);
}

bool contem(std::string_view texto, std::string_view parte) {
    return texto.find(parte) != texto.npos;
}

void esperarEstado(const Loja &loja, std::string_view estado) {
    EXPECT_TRUE(contem(zel(loja, {"estado"}).saida, "Estado:            " + std::string(estado)))
        << zel(loja, {"estado"}).saida;
}

TEST(Vender, umCupomInteiro) {
    const Loja loja;
    const Resultado venda = zel(loja, {"vender", kPao, kCafe, "--pagamento",
                                       "Cart\xc3\xa3o de D\xc3\xa9"
                                       "bito=10",
                                       "--pagamento", "Dinheiro=50", "--cpf", "123.456.789-09",
                                       "--ajuste", "-0,52", "--mensagem", "At\xc3\xa9 logo"});
    ASSERT_EQ(venda.codigo, 0) << venda.erros;
    for (const char *linha : {"Itens:             2\n", "Total:             38.00\n",
                              "Troco:             22.00\n", "Chave de acesso:   35"})
        EXPECT_TRUE(contem(venda.saida, linha)) << venda.saida;
    const std::string documento = loja.ler("documentosEnvio.xml");
    for (const char *parte :
         {"<xProd>P\xe3o franc\xeas</xProd>", "<NCM>09012100</NCM>", "<CPF>12345678909</CPF>",
          "<vNF>38.00</vNF>", "<tPag>04</tPag><vPag>10.00</vPag>", "At\xe9 logo"})
        EXPECT_TRUE(contem(documento, parte)) << parte << "\n" << documento;
    esperarEstado(loja, "5 encerrado");
}

// From a file or the input, beside arguments; without a payment all is paid in cash.
TEST(Vender, itensDeUmArquivo) {
    const Loja loja;
    loja.escrever("itens.txt", "# caf\xe9 da manh\xe3\n1;P\xe3o;1;1,00\n\n2;Leite;1;4,00\n");
    const Resultado arquivo =
        zel(loja, {"vender", "--itens", loja.diretorio() + "itens.txt", kPao, "--json"});
    EXPECT_TRUE(contem(arquivo.saida,
                       R"("itens":"3","total":"9.50","pago":"9.50","troco":"0.00","chave":"35)"))
        << arquivo.saida << arquivo.erros;
    EXPECT_EQ(zel(loja, {"vender", "--itens", "-"}, "1;P\xe3o;1;1,00\n").codigo, 0);
    EXPECT_TRUE(contem(loja.ler("documentosEnvio.xml"), "<xProd>P\xe3o</xProd>"));
    const Resultado errado = zel(loja, {"vender", "--itens", "-"}, "1;P\xe3o;1;1,00\n2;Leite;1\n");
    EXPECT_EQ(errado.codigo, 2);
    EXPECT_TRUE(contem(errado.erros, "linha 2: ")) << errado.erros;
    esperarEstado(loja, "5 encerrado");
}

// What can be seen beforehand opens no receipt.
TEST(Vender, conferidoAntesDeAbrir) {
    const Loja loja;
    const std::pair<Argumentos, std::string_view> casos[] = {
        {{"vender"}, "falta o que vender"},
        {{"vender", "101;Leite"}, "CÓDIGO;DESCRIÇÃO"},
        {{"vender", kPao, "--pagamento", "Pix"}, "a forma de pagamento é uma destas"},
        {{"vender", kPao, "--cpf", "12345678900"}, "confira os dígitos"},
        {{"vender", kPao, "--ajuste", "10%"}, "um ajuste é"},
        {{"vender", kPao, "--mensagem", "\xe2\x82\xac"}, "ISO-8859-1"},
        {{"vender", "--itens", "/nada/itens.txt"}, "/nada/itens.txt"},
        {{"vender", kPao, "--continuar", "--cancelar"}, "se excluem"},
        {{"vender", "--continuar"}, "não há cupom em andamento"},
    };
    for (const auto &[argumentos, dito] : casos) {
        const Resultado resultado = zel(loja, argumentos);
        EXPECT_EQ(resultado.codigo, 2) << dito;
        EXPECT_TRUE(contem(resultado.erros, dito)) << resultado.erros;
        esperarEstado(loja, "0 nenhum");
    }
}

struct Recusa {
    Loja::Valores valores;
    Argumentos argumentos; // after "vender"
    std::string_view passo, nome, estado;
    Argumentos remedio; // after "vender --continuar"
    Loja::Valores corrigidos;
};

const Recusa kRecusas[] = {
    {{},
     {kPao, kImpossivel},
     "vender o item 2 (Queijo)",
     "ZEL_AJUSTE_EXCESSIVO",
     "2 vendendo",
     {},
     {}},
    {{}, {kPao, "--ajuste", "-99"}, "totalizar", "ZEL_AJUSTE_EXCESSIVO", "2 vendendo", {}, {}},
    {{},
     {kPao, "--pagamento", "Cheque=4"},
     "encerrar",
     "ZEL_ENCERRAMENTO_FORA_DE_ORDEM",
     "3 totalizado",
     {"--pagamento", "Dinheiro"},
     {}},
    {{},
     {kPao, "--pagamento", "Cheque", "--pagamento", "Dinheiro=1"},
     "pagar 1 na forma 01",
     "ZEL_JA_PAGO",
     "4 pago",
     {},
     {}},
    {{{R"(CONFIGURACAO\ValorMaxIdeCliente)", "4.00"}},
     {kPao},
     "encerrar",
     "ZEL_CONSUMIDOR_OBRIGATORIO",
     "4 pago",
     {"--cpf", "12345678909"},
     {}},
    {{{R"(IDE\cUF)", "SP"}},
     {kPao},
     "encerrar",
     "ZEL_RECUSADO",
     "4 pago",
     {},
     {{R"(IDE\cUF)", "35"}}},
};

// Each refusal is said with its code, what is left, and a way on that works.
TEST(Vender, recusaDizOQueFicouEComoContinuar) {
    for (const Recusa &caso : kRecusas) {
        Loja loja;
        loja.configurar(caso.valores);
        Argumentos venda = caso.argumentos;
        venda.insert(venda.begin(), "vender");
        const Resultado recusada = zel(loja, venda);
        EXPECT_EQ(recusada.codigo, 2);
        for (const std::string_view dito :
             {caso.passo, caso.nome, caso.estado, std::string_view("Remédio: "),
              std::string_view("zel cancelar --diretorio '/")})
            EXPECT_TRUE(contem(recusada.erros, dito)) << dito << "\n" << recusada.erros;
        esperarEstado(loja, caso.estado);
        loja.configurar(caso.corrigidos);
        Argumentos resto{"vender", "--continuar"};
        resto.insert(resto.end(), caso.remedio.begin(), caso.remedio.end());
        const Resultado continuada = zel(loja, resto);
        EXPECT_EQ(continuada.codigo, 0) << caso.nome << "\n" << continuada.erros;
        esperarEstado(loja, "5 encerrado");
    }
}

TEST(Vender, recusaEmJsonECanceladaSePedido) {
    const Loja loja;
    const Resultado recusada = zel(loja, {"vender", kImpossivel, "--cancelar", "--json"});
    EXPECT_EQ(recusada.codigo, 2);
    EXPECT_TRUE(contem(recusada.saida,
                       R"j({"resultado":"recusado","passo":"vender o item 1 (Queijo)",)j"
                       R"j("codigo":-35,"nome":"ZEL_AJUSTE_EXCESSIVO")j"))
        << recusada.saida;
    EXPECT_TRUE(contem(recusada.saida, R"("estado":"6 cancelado"})")) << recusada.saida;
    esperarEstado(loja, "6 cancelado");
}

// A receipt that was there before is not this sale's to cancel.
TEST(Vender, cupomDeOutroFicaComoEstava) {
    const Loja loja;
    loja.noCaixa([](const Funcoes &caixa) { Loja::vender(caixa, 2); });
    const Resultado recusada = zel(loja, {"vender", kPao, "--cancelar"});
    EXPECT_EQ(recusada.codigo, 2);
    EXPECT_TRUE(contem(recusada.erros, "ZEL_CUPOM_EM_ANDAMENTO")) << recusada.erros;
    esperarEstado(loja, "2 vendendo");
    loja.comCaixaAberto([](const Funcoes &caixa) { EXPECT_EQ(caixa.aCFTotalizar_ZEL("", ""), 1); },
                        [&] {
                            EXPECT_TRUE(contem(zel(loja, {"vender", "--continuar"}).erros,
                                               "ZEL_ARQUIVO_INDISPONIVEL"));
                        });
    esperarEstado(loja, "3 totalizado");
}

TEST(Cancelar, oCupomEmAndamentoEmCadaEstado) {
    for (int estado = 1; estado <= 4; ++estado) {
        const Loja loja;
        loja.noCaixa([&](const Funcoes &caixa) { Loja::vender(caixa, estado); });
        EXPECT_EQ(zel(loja, {"cancelar", "--justificativa", "Desistiu da compra"}).codigo, 2);
        EXPECT_EQ(zel(loja, {"cancelar"}).codigo, 0);
        esperarEstado(loja, "6 cancelado");
        EXPECT_TRUE(contem(zel(loja, {"cancelar"}).erros, "não há o que cancelar"));
        EXPECT_FALSE(std::filesystem::exists(loja.diretorio() + "documentosEnvio.xml"));
    }
}

TEST(Cancelar, oUltimoDocumento) {
    Loja loja;
    ASSERT_EQ(zel(loja, {"vender", kPao}).codigo, 0);
    const Resultado semProtocolo = zel(loja, {"cancelar"});
    EXPECT_EQ(semProtocolo.codigo, 1);
    EXPECT_TRUE(contem(semProtocolo.saida, "sem protocolo")) << semProtocolo.saida;
    loja.configurar({{R"(NFCE\ProtocoloAutorizacao)", "135260000000007"}});
    EXPECT_EQ(zel(loja, {"cancelar", "--justificativa", "Curta"}).codigo, 2);
    const Resultado pedido =
        zel(loja, {"cancelar", "--justificativa", "Troca de mercadoria \xc3\xa0 vista", "--json"});
    EXPECT_EQ(pedido.codigo, 0) << pedido.erros;
    EXPECT_TRUE(contem(pedido.saida, R"("numero":"2","serie":"1","chave":"35)")) << pedido.saida;
    const std::string evento = loja.ler("documentosEnvio.xml");
    for (const char *parte : {"<NtfNumero>2<", "<EvenProt>135260000000007<",
                              "<EvexJust>Troca de mercadoria \xe0 vista<"})
        EXPECT_TRUE(contem(evento, parte)) << evento;
    // An older document was printed since: which one is meant must be said.
    loja.configurar({{R"(IDE\nNF)", "3"}});
    EXPECT_TRUE(contem(zel(loja, {"cancelar"}).erros, "diga a CHAVE"));
}

TEST(Cancelar, umDocumentoPelaChave) {
    const Loja loja;
    const std::string chave = "35261111222333000181650010000000011171025456";
    EXPECT_EQ(zel(loja, {"cancelar", chave.substr(1) + "0"}).codigo, 2);
    EXPECT_EQ(zel(loja, {"cancelar", chave, "--protocolo", "12"}).codigo, 2);
    EXPECT_EQ(zel(loja, {"cancelar", chave, "--protocolo", "135260000000001"}).codigo, 0);
    const std::string evento = loja.ler("documentosEnvio.xml");
    for (const std::string &parte :
         {"<NtfNumero>1<" + std::string(), chave, std::string("<EvenProt>135260000000001<")})
        EXPECT_TRUE(contem(evento, parte)) << evento;
}

struct Pedido {
    Argumentos argumentos;
    int codigo;
    std::string_view dito;    // on either output
    std::string_view gravado; // in documentosEnvio.xml, when not empty
};

const Pedido kPedidos[] = {
    {{"inutilizar", "9", "41", "--serie", "7", "--justificativa",
      "N\xc3\xbameros pulados na troca"},
     0,
     "pedido gravado",
     "<Justificativa>N\xfameros pulados na troca<"},
    {{"inutilizar", "9", "--serie", "7", "--justificativa", "Pulado na troca", "--json"},
     0,
     R"("inicial":"9","final":"9","serie":"7")",
     "<NumeroFinal>9<"},
    {{"inutilizar", "9", "41", "--justificativa", "Pulados na troca"}, 1, "IDE\\nNF", "<Serie>1<"},
    {{"inutilizar", "41", "9", "--justificativa", "Pulados na troca"}, 2, "vem antes", ""},
    {{"inutilizar", "9"}, 2, "falta --justificativa", ""},
    {{"inutilizar", "9", "--justificativa", "Curta"}, 2, "de 15 a 60", ""},
    {{"inutilizar"}, 2, "faltam ou sobram", ""},
    {{"consultar"}, 2, "não há um último documento", ""},
    {{"consultar", "35261111222333000181650010000000011171025456"},
     0,
     "pedido gravado",
     "35261111222333000181650010000000011171025456"},
    {{"consultar", "35261111222333000181650010000000011171025457"}, 2, "confira os 44", ""},
    {{"consultar", "numero", "1", "9", "--json"}, 0, R"("serie":"1")", ">9<"},
    {{"consultar", "numero", "9", "1"}, 2, "vem antes", ""},
    {{"consultar", "data", "2026-01-01", "2026-01-31"}, 0, "2026-01-31", "2026-01-31"},
    {{"consultar", "data", "2026-01-01", "2026-02-30"}, 2, "não é uma data", ""},
    {{"consultar", "data", "2026-01-01"}, 2, "INICIAL e FINAL", ""},
    {{"consultar", "data", "2026-01-01", "2026-01-02", "--serie", "1"}, 2, "vai com numero", ""},
};

TEST(Pedidos, umaLinhaCada) {
    const Loja loja;
    for (const Pedido &caso : kPedidos) {
        loja.escrever("documentosEnvio.xml", "");
        const Resultado resultado = zel(loja, caso.argumentos);
        const std::string escrito = resultado.saida + resultado.erros;
        EXPECT_EQ(resultado.codigo, caso.codigo) << escrito;
        EXPECT_TRUE(contem(escrito, caso.dito)) << caso.dito << "\n" << escrito;
        const std::string gravado = loja.ler("documentosEnvio.xml");
        EXPECT_EQ(gravado.empty(), caso.gravado.empty()) << caso.dito << gravado;
        EXPECT_TRUE(contem(gravado, caso.gravado)) << gravado;
    }
}

} // namespace
