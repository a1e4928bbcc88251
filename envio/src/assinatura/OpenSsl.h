// SPDX-License-Identifier: MIT
// OpenSSL's objects, owned; and its queue of errors, which belongs to the thread's program, left as
// it was found.
#pragma once

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <memory>
#include <openssl/asn1.h>
#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pkcs12.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>
#include <string>
#include <string_view>
#include <vector>

namespace zel::envio {

template <auto liberar>
struct Liberador {
    template <class T>
    void operator()(T *objeto) const {
        liberar(objeto);
    }
};

using DonoChave = std::unique_ptr<EVP_PKEY, Liberador<EVP_PKEY_free>>;
using DonoX509 = std::unique_ptr<X509, Liberador<X509_free>>;
using DonoBio = std::unique_ptr<BIO, Liberador<BIO_free_all>>;
using DonoPkcs12 = std::unique_ptr<PKCS12, Liberador<PKCS12_free>>;
using DonoResumo = std::unique_ptr<EVP_MD_CTX, Liberador<EVP_MD_CTX_free>>;

// What OpenSSL complains of while this lives is taken back out of the thread's queue.
class FilaDeErros {
public:
    FilaDeErros() { ERR_set_mark(); }
    ~FilaDeErros() { ERR_pop_to_mark(); }
    FilaDeErros(const FilaDeErros &) = delete;
    FilaDeErros &operator=(const FilaDeErros &) = delete;
};

inline std::string base64De(const unsigned char *bytes, std::size_t tamanho) {
    std::string texto(4 * ((tamanho + 2) / 3) + 1, '\0');
    const int n = EVP_EncodeBlock(reinterpret_cast<unsigned char *>(texto.data()), bytes,
                                  static_cast<int>(tamanho));
    texto.resize(static_cast<std::size_t>(n));
    return texto;
}

inline std::string derDe(const X509 *x509) {
    std::string der(static_cast<std::size_t>(std::max(0, i2d_X509(x509, nullptr))), '\0');
    auto *fim = reinterpret_cast<unsigned char *>(der.data());
    if (!der.empty()) i2d_X509(x509, &fim);
    return der;
}

// None when these bytes are not one certificate from the first to the last.
inline DonoX509 x509De(std::string_view der) {
    const auto *fim = reinterpret_cast<const unsigned char *>(der.data());
    const auto *const inicio = fim;
    DonoX509 x509(d2i_X509(nullptr, &fim, static_cast<long>(der.size())));
    if (fim != inicio + der.size()) x509.reset();
    return x509;
}

// Unix seconds.
inline std::int64_t segundosDe(const ASN1_TIME *momento) {
    std::tm partes{};
    return ASN1_TIME_to_tm(momento, &partes) == 1 ? timegm(&partes) : 0;
}

} // namespace zel::envio
