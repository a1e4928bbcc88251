// SPDX-License-Identifier: MIT
// Numbers as they cross the border: a digit read or written otherwise than here is a wrong total.
#include "texto/Numero.h"
#include "texto/TextoXml.h"

#include <gtest/gtest.h>

using namespace zel;

TEST(Numero, leitura_para_no_primeiro_outro_caractere) {
    const std::pair<std::string_view, double> casos[] = {
        {"1.5", 1.5}, {"  -2", -2}, {"+3.", 3},    {".5", 0.5}, {"1.2.3", 1.2}, {"1,5", 1},
        {"1e5", 1},   {"0x10", 0},  {"inf", 0},    {"nan", 0},  {"", 0},        {"-", 0},
        {"- 1", 0},   {"\t1", 0},   {"12abc", 12}, {"--1", 0},  {"1 000", 1},   {"-.5x", -0.5}};
    for (const auto &[texto, valor] : casos)
        EXPECT_EQ(lerDecimal(texto), valor) << texto;
    const std::string enorme(400, '9');
    EXPECT_TRUE(lerDecimal(enorme) > 1e300 && lerDecimal("-" + enorme) < -1e300);
    EXPECT_EQ(lerDecimal("0." + std::string(400, '0')), 0);
    EXPECT_EQ(lerInteiro(" 12.9"), 12);
    EXPECT_GT(lerInteiro(enorme), 1000000000000LL);
}

TEST(Numero, escrita_arredonda_certo_sem_zero_negativo) {
    const std::pair<double, std::string_view> casos[] = {
        {0.125, "0.12"},  {0.375, "0.38"},   {2.675, "2.67"}, {1e15, "1000000000000000.00"},
        {-0.004, "0.00"}, {-0.005, "-0.01"}, {-0.0, "0.00"},  {-1, "-1.00"}};
    for (const auto &[valor, texto] : casos)
        EXPECT_EQ(formatarDecimal(valor, 2), texto) << valor;
    EXPECT_EQ(formatarInteiro(-7, 3), "-07");
    EXPECT_EQ(formatarInteiro(1234, 2), "1234");
}

TEST(Numero, centavos_e_zeros_a_esquerda_nao_se_perdem) {
    EXPECT_EQ(arredondarOuTruncar(2.999, false), 3.0);
    EXPECT_EQ(arredondarOuTruncar(-2.999, true), -2.99);
    EXPECT_EQ(arredondarOuTruncar(0.29, true), 0.28) << "by its binary value";
    EXPECT_EQ(fnRetirarZerosLeft("000"), "0");
    EXPECT_EQ(fnRetirarZerosLeft("0.50"), "0.50");
    EXPECT_EQ(fnRetirarZerosLeft("0012.3"), "12.3");
    EXPECT_EQ(trocarVirgula("1,2,3"), "1.2,3");
    for (const std::string_view impuro : {"", ".", "-1", "1,2", "1.2.3", "1 ", "a"})
        EXPECT_FALSE(ehDecimalPuro(impuro)) << impuro;
}

TEST(TextoXml, referencia_conta_um_e_nunca_e_cortada) {
    EXPECT_EQ(comprimentoXml("a&amp;&#233;&#xE9;&x;"), 7U);
    EXPECT_EQ(cortarBytes("ab&amp;", 6), "ab");
    EXPECT_EQ(cortarBytes("ab&amp;c", 7), "ab&amp;");
    EXPECT_EQ(cortarBytes("ab&nada;x", 5), "ab&na");
}
