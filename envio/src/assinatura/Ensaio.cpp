// SPDX-License-Identifier: MIT
#include "assinatura/Ensaio.h"

#include <openssl/rand.h>
#include <openssl/rsa.h>

namespace zel::envio {

namespace {

constexpr std::int64_t kDia = 86400;

bool acrescentar(X509 *x509, int nid, const std::string &valor) {
    using Dono = std::unique_ptr<X509_EXTENSION, Liberador<X509_EXTENSION_free>>;
    const Dono extensao(X509V3_EXT_conf_nid(nullptr, nullptr, nid, valor.c_str()));
    return extensao && X509_add_ext(x509, extensao.get(), -1) == 1;
}

// As DOC-ICP-04 has it: an OCTET STRING of 14 digits.
bool acrescentarCnpj(X509 *x509, const std::string &cnpj) {
    GENERAL_NAMES *nomes = GENERAL_NAMES_new();
    GENERAL_NAME *nome = GENERAL_NAME_new();
    ASN1_OCTET_STRING *digitos = ASN1_OCTET_STRING_new();
    ASN1_TYPE *valor = ASN1_TYPE_new();
    ASN1_STRING_set(digitos, cnpj.data(), static_cast<int>(cnpj.size()));
    ASN1_TYPE_set(valor, V_ASN1_OCTET_STRING, digitos);
    GENERAL_NAME_set0_othername(nome, OBJ_txt2obj("2.16.76.1.3.3", 1), valor);
    sk_GENERAL_NAME_push(nomes, nome);
    const int feito = X509_add1_ext_i2d(x509, NID_subject_alt_name, nomes, 0, X509V3_ADD_DEFAULT);
    GENERAL_NAMES_free(nomes);
    return feito == 1;
}

bool numerar(X509 *x509) {
    unsigned char bytes[8];
    if (RAND_bytes(bytes, sizeof bytes) != 1) return false;
    std::uint64_t numero = 0;
    for (const unsigned char byte : bytes)
        numero = numero << 8 | byte;
    return ASN1_INTEGER_set_uint64(X509_get_serialNumber(x509), numero >> 1 | 1) == 1;
}

} // namespace

DonoChave chaveDeEnsaio() {
    return DonoChave(EVP_RSA_gen(2048));
}

DonoX509 emitir(const ModeloCertificado &modelo, EVP_PKEY *chave, X509 *emissor,
                EVP_PKEY *chaveEmissor) {
    const FilaDeErros fila;
    DonoX509 x509(X509_new());
    X509_NAME *titular = X509_get_subject_name(x509.get());
    const auto nomear = [titular](const char *campo, const std::string &texto) {
        return X509_NAME_add_entry_by_txt(titular, campo, MBSTRING_UTF8,
                                          reinterpret_cast<const unsigned char *>(texto.c_str()),
                                          -1, -1, 0) == 1;
    };
    const bool feito =
        X509_set_version(x509.get(), X509_VERSION_3) == 1 && numerar(x509.get()) &&
        ASN1_TIME_set(X509_getm_notBefore(x509.get()), modelo.desde) != nullptr &&
        ASN1_TIME_set(X509_getm_notAfter(x509.get()), modelo.ate) != nullptr && nomear("C", "BR") &&
        nomear("CN", modelo.nome) &&
        X509_set_issuer_name(x509.get(),
                             emissor == nullptr ? titular : X509_get_subject_name(emissor)) == 1 &&
        X509_set_pubkey(x509.get(), chave) == 1 &&
        acrescentar(x509.get(), NID_basic_constraints,
                    modelo.autoridade ? "critical,CA:TRUE" : "CA:FALSE") &&
        (modelo.usos.empty() || acrescentar(x509.get(), NID_key_usage, modelo.usos)) &&
        (modelo.cnpj.empty() || acrescentarCnpj(x509.get(), modelo.cnpj)) &&
        X509_sign(x509.get(), emissor == nullptr ? chave : chaveEmissor, EVP_sha256()) > 0;
    if (!feito) x509.reset();
    return x509;
}

std::string pkcs12DeEnsaio(const std::string &nome, const std::string &cnpj,
                           const std::string &senha, std::int64_t agora) {
    const FilaDeErros fila;
    const DonoChave chave = chaveDeEnsaio();
    const DonoX509 x509 =
        emitir({.nome = nome, .cnpj = cnpj, .desde = agora - kDia, .ate = agora + 365 * kDia},
               chave.get());
    if (!chave || !x509) return {};
    const DonoPkcs12 pacote(PKCS12_create(senha.c_str(), nome.c_str(), chave.get(), x509.get(),
                                          nullptr, 0, 0, 0, 0, 0));
    const DonoBio saida(BIO_new(BIO_s_mem()));
    if (!pacote || i2d_PKCS12_bio(saida.get(), pacote.get()) != 1) return {};
    char *bytes = nullptr;
    const long tamanho = BIO_get_mem_data(saida.get(), &bytes);
    return {bytes, static_cast<std::size_t>(tamanho)};
}

} // namespace zel::envio
