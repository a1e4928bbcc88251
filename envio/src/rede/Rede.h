// SPDX-License-Identifier: MIT
// The network as it is: SOAP over TLS with the client certificate, by libcurl. TLS 1.2 at least,
// the server's certificate and name are always checked, no redirect is followed, nothing is sent a
// second time. A connection stays open for the next request. Through a proxy only where the
// environment names one (https_proxy, no_proxy); TLS goes through it from end to end.
#pragma once

#include "assinatura/Certificado.h"
#include "rede/Confianca.h"
#include "rede/Transporte.h"

#include <memory>

namespace zel::envio {

// One object is used by one thread at a time.
class Rede final : public Transporte {
public:
    // Key, certificate and its issuers stay in memory; a key in a token works as one from a file.
    // Without a certificate every request ends with kCertificado.
    Rede(std::shared_ptr<Confianca> confianca, std::shared_ptr<const Certificado> certificado);
    ~Rede() override;
    Rede(const Rede &) = delete;
    Rede &operator=(const Rede &) = delete;

    // Half of `limite`, or ten seconds, may pass until the connection stands.
    Retorno pedir(const Remessa &remessa, std::chrono::milliseconds limite) override;

private:
    struct Dentro;
    std::unique_ptr<Dentro> dentro_;
};

} // namespace zel::envio
