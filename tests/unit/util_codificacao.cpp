#include "util/Codificacao.h"
#include "util/Latin1.h"

#include <gtest/gtest.h>

using namespace zel;

TEST(Codificacao, sha1_of_the_published_vectors) {
    const struct {
        std::string texto;
        std::string_view sha1;
    } casos[] = {
        {"", "DA39A3EE5E6B4B0D3255BFEF95601890AFD80709"},
        {"abc", "A9993E364706816ABA3E25717850C26C9CD0D89D"},
        {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
         "84983E441C3BD26EBAAE4AA1F95129E5E54670F1"},
        {std::string(1000000, 'a'), "34AA973CD4C4DAA4F61EEB2BDBAD27316534016F"},
    };
    for (const auto &caso : casos)
        EXPECT_EQ(fnConvertSHA1_HEXA(fnConvertToSHA1(caso.texto)), caso.sha1);
}

TEST(Codificacao, base64_of_the_published_vectors_both_ways) {
    const struct {
        std::string_view bytes;
        std::string_view base64;
    } casos[] = {
        {"", ""},
        {"f", "Zg=="},
        {"fo", "Zm8="},
        {"foo", "Zm9v"},
        {"foob", "Zm9vYg=="},
        {"fooba", "Zm9vYmE="},
        {"foobar", "Zm9vYmFy"},
        {{"\0\xFF\xFE", 3}, "AP/+"},
    };
    for (const auto &caso : casos) {
        EXPECT_EQ(codificarBase64(caso.bytes), caso.base64);
        EXPECT_EQ(fnParseBase64ToUtf8(caso.base64), caso.bytes);
    }
}

// Garbage taken for a document, or a wrapped text refused.
TEST(Codificacao, base64_skips_line_ends_and_refuses_what_is_malformed) {
    for (const std::string_view bom : {" Zm9v\r\nYmFy\n", "Zm9v\tYm Fy"})
        EXPECT_EQ(fnParseBase64ToUtf8(bom), "foobar") << bom;
    for (const std::string_view mau :
         {"Zg", "Zg=", "Z", "Zm9v!", "Zg==Zg==", "====", "Zg=a", "Zm9\xE9"})
        EXPECT_EQ(fnParseBase64ToUtf8(mau), std::nullopt) << mau;
}

// High bytes copied as they are: the hash of every text with an accent would be wrong.
TEST(Codificacao, latin1_becomes_utf8) {
    EXPECT_EQ(fnParseToUtf8("R$ 1 \x80 \xBF \xC0 \xFF"), "R$ 1 \xC2\x80 \xC2\xBF \xC3\x80 \xC3\xBF");
    EXPECT_EQ(fnParseToUtf8("Pão"_l1), "Pão");
}

TEST(Codificacao, hexadecimal_widens_high_bytes_with_their_sign) {
    EXPECT_EQ(fnConverterParaHexa("2014-01-31T23:59:59-03:00"),
              "323031342d30312d33315432333a35393a35392d30333a3030");
    EXPECT_EQ(fnConverterParaHexa("\x0A\x7F\x80\xFF"), "0a7fffffff80ffffffff");
    EXPECT_EQ(fnConverterParaHexa(std::string(120, 'a')).size(), 2U * 99);
}
