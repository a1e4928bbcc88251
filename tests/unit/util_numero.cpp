// Numbers as they cross the border: a digit read or written otherwise than here is a wrong total.
#include "util/Numero.h"
#include "util/TextoXml.h"

#include <gtest/gtest.h>

using namespace zel;

namespace {

TEST(Numero, decimal_reading_ends_at_the_first_other_character) {
    const struct {
        std::string_view texto;
        double valor;
    } casos[] = {{"1.5", 1.5},  {"  -2", -2},   {"+3.", 3},  {".5", 0.5},  {"1.2.3", 1.2},
                 {"1,5", 1},    {"1e5", 1},     {"0x10", 0}, {"inf", 0},   {"nan", 0},
                 {"", 0},       {"-", 0},       {"- 1", 0},  {"\t1", 0},   {"007", 7},
                 {"12abc", 12}, {"0.29", 0.29}, {"--1", 0},  {"1 000", 1}, {"-.5x", -0.5}};
    for (const auto &[texto, valor] : casos)
        EXPECT_EQ(lerDecimal(texto), valor) << texto;
    const std::string enorme(400, '9');
    EXPECT_TRUE(lerDecimal(enorme) > 1e300 && lerDecimal("-" + enorme) < -1e300);
    EXPECT_EQ(lerDecimal("0." + std::string(400, '0')), 0);
    EXPECT_EQ(lerInteiro(" 12.9"), 12);
    EXPECT_GT(lerInteiro(enorme), 1000000000000LL);
}

TEST(Numero, decimal_writing_is_correctly_rounded_and_knows_no_negative_zero) {
    const struct {
        double valor;
        int casas;
        std::string_view texto;
    } casos[] = {{0.125, 2, "0.12"},    {0.375, 2, "0.38"},
                 {2.675, 2, "2.67"},    {1e15, 2, "1000000000000000.00"},
                 {-0.004, 2, "0.00"},   {-0.005, 2, "-0.01"},
                 {-0.0, 4, "0.0000"},   {-1, 2, "-1.00"},
                 {0.99999, 4, "1.0000"}};
    for (const auto &[valor, casas, texto] : casos)
        EXPECT_EQ(formatarDecimal(valor, casas), texto) << valor;
    EXPECT_EQ(formatarInteiro(-7, 3), "-07");
    EXPECT_EQ(formatarInteiro(1234, 2), "1234");
}

TEST(Numero, rounding_and_truncation) {
    EXPECT_EQ(arredondarOuTruncar(2.999, false), 3.0);
    EXPECT_EQ(arredondarOuTruncar(2.999, true), 2.99);
    EXPECT_EQ(arredondarOuTruncar(-2.999, true), -2.99);
    EXPECT_EQ(arredondarOuTruncar(0.29, true), 0.28) << "by its binary value";
    EXPECT_EQ(arredondarOuTruncar(4.9975, false), 5.0);
    EXPECT_EQ(fnRetirarZerosLeft("000"), "0");
    EXPECT_EQ(fnRetirarZerosLeft("0.50"), "0.50");
    EXPECT_EQ(fnRetirarZerosLeft("0012.3"), "12.3");
    EXPECT_EQ(fnZerosLeft("123", 2), "123");
    for (const std::string_view impuro : {"", ".", "-1", "1,2", "1.2.3", "1 ", "a"})
        EXPECT_FALSE(ehDecimalPuro(impuro)) << impuro;
}

TEST(TextoXml, lengths_and_cuts_count_a_reference_as_one) {
    EXPECT_EQ(comprimentoXml("a&amp;&#233;&#xE9;&x;"), 7U);
    EXPECT_EQ(cortarXml("a&amp;b", 2), "a&amp;");
    EXPECT_EQ(cortarXml("&amp;", 0), "");
    EXPECT_EQ(cortarBytes("ab&amp;", 6), "ab");
    EXPECT_EQ(cortarBytes("ab&amp;", 7), "ab&amp;");
    EXPECT_EQ(cortarBytes("ab&nada;x", 5), "ab&na");
}

} // namespace
