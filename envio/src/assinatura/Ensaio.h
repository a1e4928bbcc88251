// SPDX-License-Identifier: MIT
// Certificates for trying, made on the spot: the signature of such a one holds, and no authority
// takes it. In the form of ICP-Brasil's e-CNPJ, with the otherName of the company.
#pragma once

#include "assinatura/OpenSsl.h"

#include <cstdint>
#include <string>

namespace zel::envio {

struct ModeloCertificado {
    std::string nome;        // common name, UTF-8
    std::string cnpj;        // 14 digits; empty: without the otherName
    std::int64_t desde, ate; // Unix seconds
    std::string usos = "critical,digitalSignature,nonRepudiation,keyEncipherment"; // empty: all
    bool autoridade = false;                                                       // issues others
};

// RSA of 2048 bits.
DonoChave chaveDeEnsaio();

// Signed by `emissor` with its key; by itself where there is none. Null when OpenSSL fails.
DonoX509 emitir(const ModeloCertificado &modelo, EVP_PKEY *chave, X509 *emissor = nullptr,
                EVP_PKEY *chaveEmissor = nullptr);

// The bytes of a PKCS#12 file, self-signed, valid from a day before `agora` for a year. Empty when
// OpenSSL fails.
std::string pkcs12DeEnsaio(const std::string &nome, const std::string &cnpj,
                           const std::string &senha, std::int64_t agora);

} // namespace zel::envio
