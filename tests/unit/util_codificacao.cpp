#include "util/Codificacao.h"

#include <gtest/gtest.h>

using namespace zel;

TEST(Codificacao, sha1_of_the_published_vectors) {
    const auto sha1 = [](std::string_view texto) {
        return fnConvertSHA1_HEXA(fnConvertToSHA1(texto));
    };
    EXPECT_EQ(sha1(""), "DA39A3EE5E6B4B0D3255BFEF95601890AFD80709");
    EXPECT_EQ(sha1("abc"), "A9993E364706816ABA3E25717850C26C9CD0D89D");
    EXPECT_EQ(sha1(std::string(1000000, 'a')), "34AA973CD4C4DAA4F61EEB2BDBAD27316534016F");
}

TEST(Codificacao, base64_of_the_published_vectors_both_ways) {
    const std::pair<std::string_view, std::string_view> casos[] = {
        {"", ""},        {"f", "Zg=="},          {"fo", "Zm8="},
        {"foo", "Zm9v"}, {"foobar", "Zm9vYmFy"}, {{"\0\xFF\xFE", 3}, "AP/+"}};
    for (const auto &[bytes, base64] : casos) {
        EXPECT_EQ(codificarBase64(bytes), base64);
        EXPECT_EQ(fnParseBase64ToUtf8(base64), bytes);
    }
}

// Garbage taken for a document, or a wrapped text refused.
TEST(Codificacao, base64_skips_line_ends_and_refuses_what_is_malformed) {
    EXPECT_EQ(fnParseBase64ToUtf8(" Zm9v\r\nYm Fy\n"), "foobar");
    for (const std::string_view mau : {"Zg", "Zg=", "Z", "Zm9v!", "Zg==Zg==", "====", "Zm9\xE9"})
        EXPECT_EQ(fnParseBase64ToUtf8(mau), std::nullopt) << mau;
}

// High bytes copied as they are: the hash of every text with an accent would be wrong.
TEST(Codificacao, latin1_becomes_utf8) {
    EXPECT_EQ(fnParseToUtf8("P\xE3o \x80 \xBF \xC0 \xFF"),
              "Pão \xC2\x80 \xC2\xBF \xC3\x80 \xC3\xBF");
}

TEST(Codificacao, hexadecimal_widens_high_bytes_with_their_sign) {
    EXPECT_EQ(fnConverterParaHexa("-03:00\x0A\x7F\x80\xFF"), "2d30333a30300a7fffffff80ffffffff");
    EXPECT_EQ(fnConverterParaHexa(std::string(120, 'a')).size(), 2U * 99);
}
