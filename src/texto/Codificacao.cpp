// SPDX-License-Identifier: MIT
#include "texto/Codificacao.h"

#include <array>
#include <cstdint>
#include <nettle/base64.h>
#include <nettle/sha1.h>

namespace zel {

namespace {

constexpr std::string_view kMinusculas = "0123456789abcdef";
constexpr std::string_view kMaiusculas = "0123456789ABCDEF";
constexpr std::size_t kMaximoHexa = 99; // bytes

void acrescentarHexa(std::string &texto, unsigned char byte, std::string_view algarismos) {
    texto.push_back(algarismos[byte >> 4]);
    texto.push_back(algarismos[byte & 0x0F]);
}

const std::uint8_t *bytesDe(std::string_view texto) {
    return reinterpret_cast<const std::uint8_t *>(texto.data());
}

} // namespace

std::string fnParseToUtf8(std::string_view texto) {
    std::string utf8;
    utf8.reserve(texto.size());
    for (const char c : texto) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            utf8.push_back(c);
            continue;
        }
        utf8.push_back(static_cast<char>(0xC0 | (byte >> 6)));
        utf8.push_back(static_cast<char>(0x80 | (byte & 0x3F)));
    }
    return utf8;
}

std::string fnConverterParaHexa(std::string_view texto) {
    std::string hexa;
    for (const char c : texto.substr(0, kMaximoHexa)) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x80) hexa.append("ffffff");
        acrescentarHexa(hexa, byte, kMinusculas);
    }
    return hexa;
}

std::string fnConvertToSHA1(std::string_view texto) {
    static_assert(kTamanhoSha1 == SHA1_DIGEST_SIZE);
    std::array<std::uint8_t, kTamanhoSha1> resumo;
    sha1_ctx contexto;
    sha1_init(&contexto);
    sha1_update(&contexto, texto.size(), bytesDe(texto));
    sha1_digest(&contexto, resumo.size(), resumo.data());
    return {resumo.begin(), resumo.end()};
}

std::string fnConvertSHA1_HEXA(std::string_view sha1) {
    std::string hexa;
    hexa.reserve(2 * sha1.size());
    for (const char c : sha1)
        acrescentarHexa(hexa, static_cast<unsigned char>(c), kMaiusculas);
    return hexa;
}

std::optional<std::string> fnParseBase64ToUtf8(std::string_view base64) {
    std::string bytes(BASE64_DECODE_LENGTH(base64.size()), '\0');
    std::size_t tamanho = bytes.size();
    base64_decode_ctx contexto;
    base64_decode_init(&contexto);
    auto *destino = reinterpret_cast<std::uint8_t *>(bytes.data());
    if (base64_decode_update(&contexto, &tamanho, destino, base64.size(), base64.data()) != 1 ||
        base64_decode_final(&contexto) != 1)
        return std::nullopt;
    bytes.resize(tamanho);
    return bytes;
}

} // namespace zel
