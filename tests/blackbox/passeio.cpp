// SPDX-License-Identifier: MIT
// A seeded random walk over sales, adjustments and totals against a model in whole cents: what the
// document says of each item and of the receipt must add up, whatever came before.
#include "apoio/Chamadas.h"
#include "apoio/Passos.h"
#include "apoio/Trecho.h"
#include "blackbox/Caixa.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

long long centavos(std::string_view texto) {
    return std::llround(std::stod(std::string(texto)) * 100);
}

std::string dinheiro(long long valor) {
    const std::string resto = std::to_string(valor % 100);
    return std::to_string(valor / 100) + (resto.size() == 1 ? ".0" : ".") + resto;
}

struct Item {
    long long bruto;   // vProd
    long long ajuste;  // vOutro, or vDesc below zero
    long long base;    // vBC
    long long imposto; // vICMS
    double naoArredondado;
};

std::vector<Item> lerItens(const Caixa &caixa) {
    const std::string registros = caixa.lerArquivo("ArqPersist.bin");
    std::vector<Item> itens;
    for (std::size_t inicio = registros.find("02|"); inicio != std::string::npos;
         inicio = registros.find("\n02|", inicio + 1)) {
        const std::size_t fim = registros.find('\r', inicio + 1);
        const std::string linha = registros.substr(inicio, fim - inicio);
        const std::string desconto = elemento(linha, "vDesc");
        const std::string acrescimo = elemento(linha, "vOutro");
        itens.push_back(
            {centavos(elemento(linha, "vProd")),
             desconto.empty() ? centavos("0" + acrescimo) : -centavos(desconto),
             centavos(elemento(linha, "vBC")), centavos(elemento(linha, "vICMS")),
             std::stod(elemento(linha, "qCom")) * std::stod(elemento(linha, "vUnCom"))});
    }
    return itens;
}

class Passeio {
public:
    explicit Passeio(unsigned semente) : sorteio_(semente) {}

    void vender(const Caixa &caixa) {
        const long long preco = entre(1, 9999);
        const std::string quantidade =
            std::to_string(entre(1, 9)) + (entre(0, 1) ? "" : "." + std::to_string(entre(1, 9999)));
        const char *tipo = entre(0, 1) ? "D$" : "A$";
        const std::string ajuste = entre(0, 2) ? "" : dinheiro(entre(0, preco));
        const int codigo =
            fazer(caixa, Pedido("aCFVender_ZEL", "T1800", quantidade, dinheiro(preco), tipo, ajuste,
                                "1", "UN", "Produto"));
        ASSERT_TRUE(codigo == ZEL_OK || codigo == ZEL_AJUSTE_EXCESSIVO) << codigo;
    }

    void ajustarItem(const Caixa &caixa) {
        const std::string item = std::to_string(entre(0, 9)), valor = dinheiro(entre(0, 500));
        const Pedido pedidos[] = {
            Pedido("aCFLancarDescontoItem_ZEL", item, "D$", valor),
            Pedido("aCFLancarAcrescimoItem_ZEL", item, "A$", valor),
            Pedido("aCFCancelarDescontoItem_ZEL", item),
            Pedido("aCFCancelarAcrescimoItem_ZEL", item),
            Pedido("aCFCancelarItemParcial_ZEL", item, "0.37"),
            Pedido("aCFCancelarItem_ZEL", item),
        };
        fazer(caixa, pedidos[entre(0, 5)]);
    }

    long long entre(long long menor, long long maior) {
        return menor +
               static_cast<long long>(sorteio_() % static_cast<unsigned long>(maior - menor + 1));
    }

private:
    std::mt19937 sorteio_;
};

// The shares of an amount in cents, by the rule: each cut to whole cents, what that leaves to the
// first of the largest.
std::vector<long long> parcelas(const std::vector<Item> &itens, long long quantia) {
    double soma = 0;
    for (const Item &item : itens)
        soma += item.naoArredondado;
    std::vector<long long> partes;
    long long distribuido = 0;
    for (const Item &item : itens) {
        partes.push_back(static_cast<long long>(
            item.naoArredondado * static_cast<double>(quantia) / soma + 1e-9));
        distribuido += partes.back();
    }
    const auto maior = std::max_element(partes.begin(), partes.end());
    if (*maior > 0) *maior += quantia - distribuido;
    return partes;
}

class Semente : public testing::TestWithParam<unsigned> {};

TEST_P(Semente, itens_e_totais_fecham_em_centavos) {
    Passeio passeio(GetParam());
    Caixa caixa;
    for (int cupom = 0; cupom < 12; ++cupom) {
        SCOPED_TRACE("receipt " + std::to_string(cupom));
        ASSERT_EQ(abrir(caixa), ZEL_OK);
        const long long vendas = passeio.entre(1, 8);
        for (int i = 0; i < vendas; ++i)
            passeio.vender(caixa);
        for (long long i = passeio.entre(0, 6); i > 0; --i)
            passeio.ajustarItem(caixa);
        const std::vector<Item> antes = lerItens(caixa);
        if (antes.empty()) { // every sale was refused, or cancelled again
            caixa.config("CONFIGURACAO\\estadoCFe", "0");
            continue;
        }

        long long bruto = 0;
        for (const Item &item : antes)
            bruto += item.bruto;
        const bool desconto = passeio.entre(0, 1);
        const long long quantia = passeio.entre(0, 1) ? passeio.entre(1, bruto / 2 + 1) : 0;
        int codigo = totalizar(caixa, desconto ? "D$" : "A$", dinheiro(quantia).c_str());
        if (codigo == ZEL_AJUSTE_EXCESSIVO) {
            EXPECT_EQ(lerItens(caixa).size(), antes.size());
            codigo = totalizar(caixa);
        } else if (quantia > 0) {
            const std::vector<Item> depois = lerItens(caixa);
            const std::vector<long long> partes = parcelas(antes, quantia);
            ASSERT_EQ(depois.size(), antes.size());
            for (std::size_t i = 0; i < antes.size(); ++i) {
                EXPECT_EQ(depois[i].ajuste, antes[i].ajuste + (desconto ? -partes[i] : partes[i]))
                    << "item " << i + 1;
                EXPECT_EQ(depois[i].base, depois[i].bruto + depois[i].ajuste) << "item " << i + 1;
            }
        }
        ASSERT_EQ(codigo, ZEL_OK);

        const std::string totais = elemento(caixa.lerArquivo("ArqPersist.bin"), "ICMSTot");
        long long produtos = 0, descontos = 0, outros = 0, base = 0, imposto = 0;
        for (const Item &item : lerItens(caixa)) {
            produtos += item.bruto;
            (item.ajuste < 0 ? descontos : outros) += std::abs(item.ajuste);
            base += item.base;
            imposto += item.imposto;
        }
        EXPECT_EQ(elemento(totais, "vProd"), dinheiro(produtos));
        EXPECT_EQ(elemento(totais, "vDesc"), dinheiro(descontos));
        EXPECT_EQ(elemento(totais, "vOutro"), dinheiro(outros));
        EXPECT_EQ(elemento(totais, "vBC"), dinheiro(base));
        EXPECT_EQ(elemento(totais, "vICMS"), dinheiro(imposto));
        EXPECT_EQ(centavos(elemento(totais, "vNF")), produtos + outros - descontos);

        // Whatever the customer hands over, the payments close exactly on the total.
        const long long total = produtos + outros - descontos, dado = total + passeio.entre(0, 999);
        ASSERT_EQ(pagar(caixa, "03", dinheiro(total / 3).c_str()), ZEL_OK);
        const std::string resto = dinheiro(dado - total / 3);
        ASSERT_EQ(pagar(caixa, "01", resto.c_str()), total > 2 ? ZEL_OK : -34);
        ASSERT_EQ(encerrar(caixa), ZEL_OK);
        const std::string documento = caixa.lerArquivo("documentosEnvio.xml");
        EXPECT_TRUE(contem(documento, "<tPag>01</tPag><vPag>" + dinheiro(total - total / 3) + "<"));
    }
}

INSTANTIATE_TEST_SUITE_P(Passeio, Semente, testing::Range(1U, 9U));

} // namespace
