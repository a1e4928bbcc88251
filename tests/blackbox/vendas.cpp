// SPDX-License-Identifier: MIT
// Whole sales, given as lists of calls and compared with golden documents and persistence files: a
// wrong digit, an element out of order or a record that changes its form shows here. Every sale is
// also run with a new process before each call: nothing may live in memory alone.
#include "blackbox/Caixa.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

using C = const Caixa &;

using Chamada = std::function<int(C)>;

struct Venda {
    const char *nome;
    std::vector<Chamada> chamadas;
};

// Short forms of the calls that most sales make.
Chamada abrir(const char *documento = "", const char *nome = "") {
    return [=](C c) { return c->aCFAbrir_ZEL(documento, nome, "", "", "", "", "", "", ""); };
}
Chamada vender(const char *aliquota, const char *quantidade, const char *preco,
               const char *tipo = "", const char *valor = "", const char *nome = "Produto") {
    return [=](C c) {
        return c->aCFVender_ZEL(aliquota, quantidade, preco, tipo, valor, "001", "UN", nome);
    };
}
Chamada totalizar(const char *tipo = "", const char *valor = "") {
    return [=](C c) { return c->aCFTotalizar_ZEL(tipo, valor); };
}
Chamada pagar(const char *forma, const char *valor = "") {
    return [=](C c) { return c->aCFEfetuarPagamento_ZEL(forma, valor); };
}
Chamada encerrar(const char *texto = "") {
    return [=](C c) { return c->tCFEncerrar_ZEL(texto); };
}
Chamada configurar(const char *chave, const char *valor) {
    return [=](C c) { return c->regAlterarValor_ZEL(chave, valor); };
}

std::vector<Venda> vendas() { // NOLINT(readability-function-size): a table
    return {
        {"simples",
         {abrir(), vender("T1800", "1", "10.00"), totalizar(), pagar("dinheiro"), encerrar()}},
        {"consumidor_completo",
         {[](C c) {
              return c->aCFAbrir_ZEL("123.456.789-09", "Jo\xE3o & Maria <Ltda>", "Rua A, 1", "12-B",
                                     "Centro", "4321808", "Cidade", "RS", "95000000");
          },
          vender("T1800", "2,5", "1,999", "D%", "10", "\xC1gua &amp; g\xE1s"),
          [](C c) {
              return c->aCFIdentificarConsumidor_ZEL("11.222.333/0001-81", "Loja", "", "", "", "",
                                                     "", "", "", "a@b.com.br");
          },
          totalizar(),
          pagar("Cart\xE3o de Cr\xE9"
                "dito",
                "1,00"),
          pagar("01", "20"), encerrar("Obrigado!\r\nVolte <b>sempre</b>   aqui")}},
        {"estrangeiro",
         {abrir("AB123456", "John"), vender("1200", "3", "0,10"), totalizar("A%", "5"),
          pagar("cheque"), encerrar("  ")}},
        {"ajustes",
         {abrir(), vender("T1800", "1", "10.00"), vender("T0700", "2", "20.00", "A$", "1,50"),
          vender("F", "1.2345", "7.77"), vender("T1800", "4", "5"),
          [](C c) { return c->aCFLancarDescontoItem_ZEL(1, "D$", "0,99"); },
          [](C c) { return c->aCFLancarAcrescimoItem_ZEL(0, "A%", "12,5"); },
          [](C c) { return c->aCFCancelarItemParcial_ZEL(2, "0,5"); },
          [](C c) { return c->aCFCancelarAcrescimoItem_ZEL(4); }, vender("T1800", "1", "99.90"),
          [](C c) { return c->aCFCancelarItem_ZEL(3); }, totalizar("D$", "12,34"),
          pagar("vale refeicao", "10"), pagar("05"),
          [](C c) { return c->aCFEstornarPagamento_ZEL("vale refeicao", "12", "10,00"); },
          [](C c) { return c->tCFEncerrarConfigMsg_ZEL("ao consumidor", "ao fisco"); }}},
        {"servico",
         {configurar("IMPOSTO\\ISSQN\\cMunFG", "12"),
          configurar("IMPOSTO\\ISSQN\\cListServ", "101"),
          configurar("IMPOSTO\\ISSQN\\cSitTrib", "N"), abrir(), vender("S0500", "1", "100.00"),
          totalizar(), pagar("99", "30"), pagar("dinheiro", "100"), encerrar()}},
        {"transportadora",
         {configurar("IDE\\indPres", "4"), abrir("12345678909"), vender("T1800", "1", "10.00"),
          [](C c) {
              return c->aCFIdentificarTransportadora_ZEL("11222333000181", "Transportes", "12",
                                                         "Rua B", "Cidade", "SP");
          },
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
         {[](C c) { return c->aCFAbrirNumSerie_ZEL(41, 3, "", "", "", "", "", "", "", "", ""); },
          vender("T1800", "1", "1.00"), totalizar(), pagar("dinheiro"), encerrar()}},
        {"item_em_xml",
         {abrir(),
          [](C c) {
              return c->aCFVenderXml_ZEL(
                  "<PROD><cProd>7</cProd><cEAN>7891234567895</cEAN><xProd>A &amp; B</xProd>\r\n"
                  "<NCM>22011000</NCM><CFOP>5405</CFOP><uCom>UN</uCom><qCom>2</qCom>"
                  "<vUnCom>3.50</vUnCom><vProd>7.00</vProd><cEANTrib>7891234567895</cEANTrib>"
                  "<uTrib>UN</uTrib><qTrib>2</qTrib><vUnTrib>3.50</vUnTrib><indTot>1</indTot>"
                  "</PROD><imposto><ICMS><ICMS10><orig>0</orig><CST>10</CST><modBC>3</modBC>"
                  "<vBC>7.00</vBC><pICMS>18.00</pICMS><vICMS>1.26</vICMS><modBCST>4</modBCST>"
                  "<pMVAST>0.40</pMVAST><pRedBCST>0.00</pRedBCST><vBCST>9.80</vBCST>"
                  "<pICMSST>0.18</pICMSST><vICMSST>0.50</vICMSST></ICMS10></ICMS></imposto>");
          },
          totalizar(), pagar("dinheiro"), encerrar()}},
        {"presets",
         {abrir(), [](C c) { return c->aCFConfICMS00_ZEL("1", "00", "0", "12,00"); },
          [](C c) { return c->aCFConfPisAliq_ZEL("01", "1,65"); },
          [](C c) { return c->aCFConfCofinsAliq_ZEL("01", "7.6"); }, vender("T1800", "1", "200.00"),
          [](C c) { return c->aCFConfICMS40_ZEL("0", "41", "", ""); },
          [](C c) { return c->aCFConfPisQtde_ZEL("03", "0,50"); },
          [](C c) { return c->aCFConfCofinsNT_ZEL("06"); }, vender("N", "4", "2.50"),
          [](C c) { return c->aCFConfICMS60_ZEL("0", "60", "10,00", "1,80"); },
          [](C c) { return c->aCFConfPisOutr_ZEL("99", "1,00", ""); },
          [](C c) { return c->aCFConfCofinsOutr_ZEL("99", "2,00", ""); },
          vender("T0000", "1", "50.00"), totalizar("D%", "10"), pagar("13"), encerrar()}},
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
    for (std::size_t i = 0; i < GetParam().chamadas.size(); ++i)
        ASSERT_EQ(GetParam().chamadas[i](caixa), ZEL_OK) << "call " << i;
    compararComOuro(std::string(GetParam().nome) + ".txt", estadoFinal(caixa));
}

TEST_P(Vendas, nada_vive_so_na_memoria) {
    if (temPresets(GetParam())) return;
    Caixa direta, reiniciada;
    for (std::size_t i = 0; i < GetParam().chamadas.size(); ++i) {
        SCOPED_TRACE("call " + std::to_string(i));
        ASSERT_EQ(GetParam().chamadas[i](direta), ZEL_OK);
        reiniciada.reiniciar();
        ASSERT_EQ(GetParam().chamadas[i](reiniciada), ZEL_OK) << "in a new process";
        EXPECT_EQ(direta.lerArquivo("ZEL_Framework.xml"),
                  reiniciada.lerArquivo("ZEL_Framework.xml"));
    }
    EXPECT_EQ(estadoFinal(direta), estadoFinal(reiniciada));
}

INSTANTIATE_TEST_SUITE_P(Ouro, Vendas, testing::ValuesIn(vendas()),
                         [](const auto &caso) { return std::string(caso.param.nome); });

// The key in the document: 44 digits in the documented order, closed by its own check digit.
TEST(ChaveDeAcesso, partes_e_digito) {
    Caixa caixa;
    caixa.config("IDE\\nNF", "41");
    caixa.config("IDE\\cNF", "00000009");
    caixa.config("IDE\\Serie", "001");
    for (const Chamada &chamada :
         {abrir(), vender("T1800", "1", "10.00"), totalizar(), pagar("dinheiro"), encerrar()})
        ASSERT_EQ(chamada(caixa), ZEL_OK);
    const std::string documento = caixa.lerArquivo("documentosEnvio.xml");
    const std::string chave = caixa.config("NFCE\\ChaveDeAcesso");
    ASSERT_EQ(chave.size(), 44U);
    EXPECT_NE(documento.find("<infNFe Id=\"NFe" + chave + "\" versao=\"3.10\">"),
              std::string::npos);
    const std::string emissao = elemento(documento, "dhEmi");
    EXPECT_EQ(chave.substr(0, 6), "43" + emissao.substr(2, 2) + emissao.substr(5, 2));
    EXPECT_EQ(chave.substr(6, 37), "11111111111111"
                                   "65"
                                   "001"
                                   "000000042"
                                   "1"
                                   "00000010");
    int soma = 0, peso = 2;
    for (std::size_t i = 43; i-- > 0; peso = peso == 9 ? 2 : peso + 1)
        soma += (chave[i] - '0') * peso;
    const int digito = soma % 11 < 2 ? 0 : 11 - soma % 11;
    EXPECT_EQ(chave.substr(43), std::to_string(digito));
    EXPECT_EQ(elemento(documento, "cDV"), std::to_string(digito));
    EXPECT_EQ(elemento(documento, "serie"), "1");
    EXPECT_EQ(elemento(documento, "cNF"), "00000010");
}

} // namespace
