#include "util/Marcacao.h"
#include "util/Quebra.h"

#include <gtest/gtest.h>
#include <tuple>

using namespace zel;

using Largura = std::tuple<std::string_view, std::size_t, std::string_view>;

// The tolerance of one character lost, or the text behind the last line end broken.
TEST(Quebra, lines_break_after_the_width) {
    const Largura casos[] = {{"12345678901", 10, "12345678901"},
                             {"123456789012", 10, "1234567890\n12"},
                             {"123456789012345678901", 10, "1234567890\n12345678901"},
                             {"abcdefgh\nabcdefgh", 3, "abc\ndef\ngh\nabcdefgh"},
                             {"\nabcd\nabcde\n", 3, "\nabcd\nabc\nde\n"},
                             {"abcdef", 0, "abcdef"}};
    for (const auto &[texto, largura, esperado] : casos)
        EXPECT_EQ(fnQuabraLinhaLayout(texto, largura), esperado) << texto;
}

TEST(Quebra, every_line_is_centred_on_its_own) {
    const Largura casos[] = {{"abc\nabcd", 10, "   abc\n   abcd"},
                             {"123456789012", 10, "1234567890\n    12"},
                             {"12345678901", 10, "12345678901"},
                             {"a\n\n", 5, "  a\n  \n"}};
    for (const auto &[texto, largura, esperado] : casos)
        EXPECT_EQ(fnCentralizarLayout(texto, largura), esperado) << texto;
    EXPECT_EQ(fnCentralizarLayout("x", 1000), std::string(99, ' ') + "x");
}

// A tag of the wrong table, a text without end, mark-up that eats the message around it.
TEST(Marcacao, text_loses_its_representatives) {
    const std::pair<std::string_view, std::string_view> casos[] = {
        {"[b]X[/b][qrcode]http://x/?a=1[/qrcode]", "X"},
        {"[ce][b]Volte[/b] [b]sempre[/b][/ce]", "Volte sempre"},
        {"a[upc-a]1[/upc-a]b[code128]2[/code128]c[s2of5]3[/s2of5]", "abc"},
        {"[b]a[g]b[b]c[/b][/g]d[/b]e", "ade"},
        {"a[l]b[g]c[b]d", "abcd"}, // never closed: the marker alone
        {"[/b]a[/g][b]c[/b][/b]", "[/b]a[/g]c[/b]"},
        {"[x]a[/x] [B]b[/B] [confguix]", "[x]a[/x] [B]b[/B] [confguix]"},
        {"] [ b][] [[b]a[/b]] [b", "] [ b][] [a] [b"},
        {"[nome comprido demais [i]a[/i]]", "[nome comprido demais a]"}};
    for (const auto &[texto, esperado] : casos)
        EXPECT_EQ(fnRetornarTextoSemRepresentantes(texto), esperado) << texto;
}

// Searching the whole rest at every bracket: minutes at this size, until the run's time limit.
TEST(Marcacao, time_grows_with_the_length_alone) {
    for (const std::string_view parte : {"[", "[g]", "[b]", "[qrcode][/l]"}) {
        std::string texto;
        while (texto.size() < 200'000)
            texto += parte;
        EXPECT_LE(fnRetornarTextoSemRepresentantes(texto).size(), texto.size());
    }
}
