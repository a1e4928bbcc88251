// SPDX-License-Identifier: MIT
// Whole sales, given as lists of calls and compared with golden documents and persistence files: a
// wrong digit, an element out of order or a record that changes its form shows here. Every sale is
// also run with a new process before each call: nothing may live in memory alone.
#include "apoio/Chamadas.h"
#include "apoio/Ouro.h"
#include "apoio/Passos.h"
#include "apoio/Trecho.h"
#include "blackbox/Caixa.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

struct Venda {
    const char *nome;
    std::vector<Pedido> pedidos;
};

// Short forms of the calls that most sales make.
Pedido abrir(const char *documento = "", const char *nome = "") {
    return Pedido("aCFAbrir_ZEL", documento, nome);
}
Pedido vender(const char *aliquota, const char *quantidade, const char *preco,
              const char *tipo = "", const char *valor = "", const char *nome = "Produto") {
    return Pedido("aCFVender_ZEL", aliquota, quantidade, preco, tipo, valor, "001", "UN", nome);
}
Pedido totalizar(const char *tipo = "", const char *valor = "") {
    return Pedido("aCFTotalizar_ZEL", tipo, valor);
}
Pedido pagar(const char *forma, const char *valor = "") {
    return Pedido("aCFEfetuarPagamento_ZEL", forma, valor);
}
Pedido encerrar(const char *texto = "") {
    return Pedido("tCFEncerrar_ZEL", texto);
}
Pedido configurar(const char *chave, const char *valor) {
    return Pedido("regAlterarValor_ZEL", chave, valor);
}

std::vector<Venda> vendas() { // NOLINT(readability-function-size): a table
    return {
        {"simples",
         {abrir(), vender("T1800", "1", "10.00"), totalizar(), pagar("dinheiro"), encerrar()}},
        {"consumidor_completo",
         {Pedido("aCFAbrir_ZEL", "123.456.789-09", "Jo\xE3o & Maria <Ltda>", "Rua A, 1", "12-B",
                 "Centro", "4321808", "Cidade", "RS", "95000000"),
          vender("T1800", "2,5", "1,999", "D%", "10", "\xC1gua &amp; g\xE1s"),
          Pedido("aCFIdentificarConsumidor_ZEL", "11.222.333/0001-81", "Loja", "", "", "", "", "",
                 "", "", "a@b.com.br"),
          totalizar(), pagar("Cart\xE3o de Cr\351dito", "1,00"), pagar("01", "20"),
          encerrar("Obrigado!\r\nVolte <b>sempre</b>   aqui")}},
        {"estrangeiro",
         {abrir("AB123456", "John"), vender("1200", "3", "0,10"), totalizar("A%", "5"),
          pagar("cheque"), encerrar("  ")}},
        {"ajustes",
         {abrir(), vender("T1800", "1", "10.00"), vender("T0700", "2", "20.00", "A$", "1,50"),
          vender("F", "1.2345", "7.77"), vender("T1800", "4", "5"),
          Pedido("aCFLancarDescontoItem_ZEL", "1", "D$", "0,99"),
          Pedido("aCFLancarAcrescimoItem_ZEL", "0", "A%", "12,5"),
          Pedido("aCFCancelarItemParcial_ZEL", "2", "0,5"),
          Pedido("aCFCancelarAcrescimoItem_ZEL", "4"), vender("T1800", "1", "99.90"),
          Pedido("aCFCancelarItem_ZEL", "3"), totalizar("D$", "12,34"),
          pagar("vale refeicao", "10"), pagar("05"),
          Pedido("aCFEstornarPagamento_ZEL", "vale refeicao", "12", "10,00"),
          Pedido("tCFEncerrarConfigMsg_ZEL", "ao consumidor", "ao fisco")}},
        {"servico",
         {configurar("IMPOSTO\\ISSQN\\cMunFG", "12"),
          configurar("IMPOSTO\\ISSQN\\cListServ", "101"),
          configurar("IMPOSTO\\ISSQN\\cSitTrib", "N"), abrir(), vender("S0500", "1", "100.00"),
          totalizar(), pagar("99", "30"), pagar("dinheiro", "100"), encerrar()}},
        {"transportadora",
         {configurar("IDE\\indPres", "4"), abrir("12345678909"), vender("T1800", "1", "10.00"),
          Pedido("aCFIdentificarTransportadora_ZEL", "11222333000181", "Transportes", "12", "Rua B",
                 "Cidade", "SP"),
          vender("T1800", "1", "5.00"), totalizar(), pagar("dinheiro"), encerrar()}},
        {"estado_mt_sem_acentos",
         {configurar("EMIT\\ENDEREMIT\\UF", "MT"), configurar("EMIT\\xNome", "Caf\xE9 & P\xE3o"),
          configurar("IDE\\Serie", "007"), configurar("CONFIGURACAO\\NumeracaoAutomatica", "0"),
          abrir(), vender("T1800", "1", "10.00", "", "", "Ma\xE7\xE3"), totalizar(),
          pagar("dinheiro"), encerrar("At\xE9 logo")}},
        {"truncando",
         {configurar("CONFIGURACAO\\ArredondarTruncar", "T"), abrir(),
          vender("T1800", "3", "0.333"), vender("T1800", "1", "0.29"), totalizar(),
          pagar("dinheiro"), encerrar()}},
        {"numero_dado",
         {Pedido("aCFAbrirNumSerie_ZEL", "41", "3"), vender("T1800", "1", "1.00"), totalizar(),
          pagar("dinheiro"), encerrar()}},
        {"item_em_xml",
         {abrir(), Pedido("aCFVenderXml_ZEL", kItemComST), totalizar(), pagar("dinheiro"),
          encerrar()}},
        {"presets",
         {abrir(), Pedido("aCFConfICMS00_ZEL", "1", "00", "0", "12,00"),
          Pedido("aCFConfPisAliq_ZEL", "01", "1,65"), Pedido("aCFConfCofinsAliq_ZEL", "01", "7.6"),
          vender("T1800", "1", "200.00"), Pedido("aCFConfICMS40_ZEL", "0", "41", "", ""),
          Pedido("aCFConfPisQtde_ZEL", "03", "0,50"), Pedido("aCFConfCofinsNT_ZEL", "06"),
          vender("N", "4", "2.50"), Pedido("aCFConfICMS60_ZEL", "0", "60", "10,00", "1,80"),
          Pedido("aCFConfPisOutr_ZEL", "99", "1,00", ""),
          Pedido("aCFConfCofinsOutr_ZEL", "99", "2,00", ""), vender("T0000", "1", "50.00"),
          totalizar("D%", "10"), pagar("13"), encerrar()}},
    };
}

// Presets are the one thing that a process takes with it: a new one starts without.
bool temPresets(const Venda &venda) {
    return std::string_view(venda.nome) == "presets";
}

std::string estadoFinal(const Caixa &caixa) {
    return mascarar(caixa.lerArquivo("documentosEnvio.xml")) + caixa.lerArquivo("ArqPersist.bin") +
           "estado " + std::to_string(caixa->rCFVerificarStatus_ZEL()) + ", nNF " +
           caixa.config("IDE\\nNF") + ", cNF " + caixa.config("IDE\\cNF") + ", troco " +
           caixa.config("CONFIGURACAO\\TrocoUltimaNFCe") + "\n";
}

class Vendas : public testing::TestWithParam<Venda> {};

TEST_P(Vendas, documento_e_registros_como_o_ouro) {
    Caixa caixa;
    for (std::size_t i = 0; i < GetParam().pedidos.size(); ++i)
        ASSERT_EQ(fazer(caixa, GetParam().pedidos[i]), ZEL_OK) << "call " << i;
    compararComOuro(std::string(ZEL_OURO "/") + GetParam().nome + ".txt", estadoFinal(caixa));
}

TEST_P(Vendas, nada_vive_so_na_memoria) {
    if (temPresets(GetParam())) return;
    Caixa direta, reiniciada;
    for (std::size_t i = 0; i < GetParam().pedidos.size(); ++i) {
        SCOPED_TRACE("call " + std::to_string(i));
        ASSERT_EQ(fazer(direta, GetParam().pedidos[i]), ZEL_OK);
        reiniciada.reiniciar();
        ASSERT_EQ(fazer(reiniciada, GetParam().pedidos[i]), ZEL_OK) << "in a new process";
        EXPECT_EQ(direta.lerArquivo("ZEL_Framework.xml"),
                  reiniciada.lerArquivo("ZEL_Framework.xml"));
    }
    EXPECT_EQ(estadoFinal(direta), estadoFinal(reiniciada));
}

INSTANTIATE_TEST_SUITE_P(Ouro, Vendas, testing::ValuesIn(vendas()),
                         [](const auto &caso) { return std::string(caso.param.nome); });

// A carrier's record that a payment wrote again behind itself would be the one that counts.
TEST(Registros, na_sua_ordem_e_a_transportadora_uma_vez) {
    Caixa caixa;
    caixa.config("IDE\\indPres", "4");
    const Pedido transportadora("aCFIdentificarTransportadora_ZEL", "11222333000181", "Frota");
    const std::pair<Pedido, std::string> passos[] = {
        {abrir(), "01"},
        {vender("T1800", "1", "10.00"), "0102"},
        {transportadora, "010204"},
        {vender("T1800", "1", "5.00"), "01020204"},
        {totalizar(), "0102020304"},
        {pagar("dinheiro", "4"), "010202030405"},
        {pagar("cheque", "4"), "01020203040505"},
        {transportadora, "01020203040505"},
        {pagar("vale refeicao"), "0102020304050505"},
        {encerrar(), "010202030405050506"},
    };
    for (const bool reiniciando : {false, true})
        for (const auto &[pedido, tipos] : passos) {
            if (reiniciando) caixa.reiniciar();
            ASSERT_EQ(fazer(caixa, pedido), ZEL_OK);
            std::istringstream registros(caixa.lerArquivo("ArqPersist.bin"));
            std::string vistos;
            for (std::string linha; std::getline(registros, linha);)
                vistos += linha.substr(0, 2);
            EXPECT_EQ(vistos, tipos) << reiniciando;
        }
}

} // namespace
