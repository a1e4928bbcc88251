// SPDX-License-Identifier: MIT
// The key that signs and its certificate: from a PKCS#12 file (A1) or in a token behind a PKCS#11
// module (A3). Checked before use; the password leaves no trace in texts and is wiped from memory.
#pragma once

#include "base/Recusa.h"
#include "config/Configuracao.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

typedef struct evp_pkey_st EVP_PKEY;
typedef struct x509_st X509;

namespace zel::envio {

class Certificado {
public:
    // From what is configured; where it says nothing, ZEL_ENVIO_CERTIFICADO and ZEL_ENVIO_SENHA, or
    // the credentials that systemd hands over (CREDENTIALS_DIRECTORY: certificado, senha). The
    // variables are not looked at in a program that runs with another's rights.
    static std::shared_ptr<const Certificado> abrir(const ConfigCertificado &config,
                                                    Recusas &recusas);
    // A PKCS#12 file's bytes; old ones that need RC2 or 3DES are read too. `senha` is copied into
    // memory that is wiped; its owner wipes his own. `cadeia`: the issuers' PEM, or empty.
    static std::shared_ptr<const Certificado> dePkcs12(std::string_view bytes,
                                                       std::string_view senha,
                                                       std::string_view cadeia, Recusas &recusas);
    ~Certificado();
    Certificado(const Certificado &) = delete;
    Certificado &operator=(const Certificado &) = delete;

    EVP_PKEY *chave() const;
    X509 *x509() const;
    // Those that lead from it towards a root, without the root, as far as the PKCS#12 file or the
    // configured chain has them: what goes along in a TLS handshake.
    std::vector<X509 *> emissores() const;
    std::string emBase64() const;  // its DER, as a signature has it (X509Certificate)
    std::string nome() const;      // common name
    std::string cnpj() const;      // 14 digits, otherName 2.16.76.1.3.3; empty when it has none
    std::string validoAte() const; // "AAAA-MM-DD"
    int dias(
        std::int64_t agora) const; // whole days left at that time (Unix seconds); negative: expired

    // Whether it may sign for this issuer (14 digits) now: validity, purpose (digital signature or
    // non- repudiation), chain where it is given, the first 8 digits of the CNPJ.
    bool conferir(std::string_view cnpjEmitente, std::int64_t agora, Recusas &recusas) const;
    // The same for whoever it may sign: all but the holder.
    bool serve(std::int64_t agora, Recusas &recusas) const;

    // RSA-SHA1 over the text, in Base64 (as the offline QR code of version 3 has it).
    std::optional<std::string> assinarTexto(std::string_view texto, Recusas &recusas) const;

private:
    struct Dentro;
    explicit Certificado(std::unique_ptr<Dentro> dentro);
    std::unique_ptr<Dentro> dentro_;
};

// 14 digits of a certificate, otherName 2.16.76.1.3.3 (DOC-ICP-04); empty when it has none.
std::string cnpjDe(const X509 *x509);
// The same of one in PEM, as verificarAssinatura hands it back.
std::string cnpjDePem(std::string_view pem);

// Whether one in PEM may have signed what was issued at that time (Unix seconds): not expired by
// then (it may be younger: an offline document is signed later), for signatures, and led to a root
// by the configured issuers, where there are some. `campo` is where it stands.
bool conferirSignatario(std::string_view pem, const ConfigCertificado &config, std::int64_t emitido,
                        std::string_view campo, Recusas &recusas);

} // namespace zel::envio
