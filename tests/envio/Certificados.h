// SPDX-License-Identifier: MIT
// Certificates of the tests, made when they are needed: a root, an issuer below it, and holders in
// the form of ICP-Brasil.
#pragma once

#include "apoio/Ambiente.h"
#include "apoio/PastaTemporaria.h"
#include "assinatura/Certificado.h"
#include "assinatura/Ensaio.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <openssl/pem.h>
#include <openssl/provider.h>
#include <stdlib.h>
#include <string>
#include <string_view>
#include <vector>

namespace zel::envio::ensaio {

inline constexpr std::int64_t kAgora = 1790000000; // 2026-09-21
inline constexpr std::int64_t kDia = 86400;
inline constexpr const char *kCnpj = "12345678000195";
inline constexpr const char *kSenha = "açúcar 123";

// Keys take a while to make: each test takes one of these.
inline EVP_PKEY *chave(std::size_t qual) {
    static const std::array<DonoChave, 4> chaves{chaveDeEnsaio(), chaveDeEnsaio(), chaveDeEnsaio(),
                                                 DonoChave(EVP_EC_gen("P-256"))};
    return chaves.at(qual).get();
}
enum { kTitular, kAutoridade, kRaiz, kCurva };

struct Cadeia {
    DonoX509 raiz = emitir({"AC Raiz de Ensaio", "", kAgora - 900 * kDia, kAgora + 900 * kDia,
                            "critical,keyCertSign,cRLSign", true},
                           chave(kRaiz));
    DonoX509 autoridade = emitir({"AC de Ensaio", "", kAgora - 800 * kDia, kAgora + 800 * kDia,
                                  "critical,keyCertSign,cRLSign", true},
                                 chave(kAutoridade), raiz.get(), chave(kRaiz));

    DonoX509 titular(const ModeloCertificado &modelo) const {
        return emitir(modelo, chave(kTitular), autoridade.get(), chave(kAutoridade));
    }
};

inline ModeloCertificado modelo(const char *cnpj = kCnpj) {
    return {.nome = "PÃO & CAFÉ LTDA:" + std::string(cnpj),
            .cnpj = cnpj,
            .desde = kAgora - 30 * kDia,
            .ate = kAgora + 335 * kDia};
}

inline std::string pemDe(const std::vector<X509 *> &certificados) {
    const DonoBio saida(BIO_new(BIO_s_mem()));
    for (X509 *x509 : certificados)
        PEM_write_bio_X509(saida.get(), x509);
    char *bytes = nullptr;
    const long tamanho = BIO_get_mem_data(saida.get(), &bytes);
    return {bytes, static_cast<std::size_t>(tamanho)};
}

enum class Cifra { kNova, kAntiga, kTripla };

// `dono` or `x509` may be null. The old cipher is made in a context of its own, as it is read.
inline std::string pkcs12De(EVP_PKEY *dono, X509 *x509, const char *senha = kSenha,
                            Cifra cifra = Cifra::kNova, int voltasMac = 2048, int voltas = 2048) {
    OSSL_LIB_CTX *contexto = OSSL_LIB_CTX_new();
    OSSL_PROVIDER *padrao = OSSL_PROVIDER_load(contexto, "default");
    OSSL_PROVIDER *antigos = OSSL_PROVIDER_load(contexto, "legacy");
    const int tripla = NID_pbe_WithSHA1And3_Key_TripleDES_CBC;
    const int daChave = cifra == Cifra::kNova ? 0 : tripla;
    const int doCertificado = cifra == Cifra::kAntiga ? NID_pbe_WithSHA1And40BitRC2_CBC : daChave;
    std::string pacote;
    {
        const DonoPkcs12 feito(PKCS12_create_ex(senha, "titular", dono, x509, nullptr, daChave,
                                                doCertificado, voltas, voltasMac, 0, contexto,
                                                nullptr));
        const DonoBio saida(BIO_new(BIO_s_mem()));
        i2d_PKCS12_bio(saida.get(), feito.get());
        char *bytes = nullptr;
        const long tamanho = BIO_get_mem_data(saida.get(), &bytes);
        pacote.assign(bytes, static_cast<std::size_t>(tamanho));
    }
    if (antigos != nullptr) OSSL_PROVIDER_unload(antigos);
    OSSL_PROVIDER_unload(padrao);
    OSSL_LIB_CTX_free(contexto);
    return pacote;
}

// One that signs for kCnpj at kAgora.
inline std::shared_ptr<const Certificado> certificado() {
    Recusas recusas;
    static const std::string pacote = pkcs12De(chave(kTitular), Cadeia().titular(modelo()).get());
    return Certificado::dePkcs12(pacote, kSenha, "", recusas);
}

} // namespace zel::envio::ensaio
