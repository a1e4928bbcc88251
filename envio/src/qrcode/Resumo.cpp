// SPDX-License-Identifier: MIT
#include "qrcode/Resumo.h"

#include "assinatura/OpenSsl.h"

#include <memory>
#include <openssl/evp.h>

namespace zel::envio {

namespace {

constexpr std::size_t kMaiorBase64 = 1U << 16;

std::string emHexadecimal(std::string_view bytes, std::string_view algarismos) {
    std::string texto;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        texto += algarismos[byte >> 4];
        texto += algarismos[byte & 0x0F];
    }
    return texto;
}

// Empty when it is not Base64; line ends and blanks are passed over.
std::string deBase64(std::string_view base64) {
    if (base64.size() > kMaiorBase64) return {};
    std::string bytes(base64.size(), '\0');
    const std::unique_ptr<EVP_ENCODE_CTX, decltype(&EVP_ENCODE_CTX_free)> leitor(
        EVP_ENCODE_CTX_new(), EVP_ENCODE_CTX_free);
    auto *saida = reinterpret_cast<unsigned char *>(bytes.data());
    int lidos = 0, resto = 0;
    EVP_DecodeInit(leitor.get());
    if (EVP_DecodeUpdate(leitor.get(), saida, &lidos,
                         reinterpret_cast<const unsigned char *>(base64.data()),
                         static_cast<int>(base64.size())) < 0 ||
        EVP_DecodeFinal(leitor.get(), saida + lidos, &resto) != 1)
        return {};
    bytes.resize(static_cast<std::size_t>(lidos + resto));
    return bytes;
}

const unsigned char *octetos(std::string_view texto) {
    return reinterpret_cast<const unsigned char *>(texto.data());
}

} // namespace

std::string hexadecimal(std::string_view bytes) {
    return emHexadecimal(bytes, "0123456789abcdef");
}

std::string sha1Hexadecimal(std::string_view texto) {
    char resumo[EVP_MAX_MD_SIZE];
    unsigned tamanho = 0;
    EVP_Digest(texto.data(), texto.size(), reinterpret_cast<unsigned char *>(resumo), &tamanho,
               EVP_sha1(), nullptr);
    return emHexadecimal({resumo, tamanho}, "0123456789ABCDEF");
}

bool assinaturaConfere(std::string_view texto, std::string_view assinatura,
                       std::string_view certificado) {
    const FilaDeErros fila;
    const DonoX509 x509 = x509De(deBase64(certificado));
    const std::string valor = deBase64(assinatura);
    EVP_PKEY *chave = x509 ? X509_get0_pubkey(x509.get()) : nullptr;
    if (chave == nullptr || EVP_PKEY_get_base_id(chave) != EVP_PKEY_RSA || valor.empty())
        return false;
    const DonoResumo contexto(EVP_MD_CTX_new());
    return EVP_DigestVerifyInit(contexto.get(), nullptr, EVP_sha1(), nullptr, chave) == 1 &&
           EVP_DigestVerify(contexto.get(), octetos(valor), valor.size(), octetos(texto),
                            texto.size()) == 1;
}

} // namespace zel::envio
