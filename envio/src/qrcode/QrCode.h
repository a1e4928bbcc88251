// SPDX-License-Identifier: MIT
// The QR code's content and the address for typing in the key: infNFeSupl of a signed document.
// Source: Manual de Especificações Técnicas do DANFE NFC-e e QR Code 5.0 (version 2), Nota Técnica
// 2025.001 (version 3).
#pragma once

#include "assinatura/Certificado.h"
#include "base/Recusa.h"
#include "base/Xml.h"
#include "config/Configuracao.h"

#include <optional>
#include <string>

namespace zel::envio {

struct Suplemento {
    std::string qrCode, urlChave;
};

// `nfe`: NFe 4.00. `digest`: DigestValue of infNFe in Base64, used by the offline kind alone.
// `certificado` signs the offline kind of version 3; null is enough otherwise.
std::optional<Suplemento> suplementoDe(const No &nfe, std::string_view digest,
                                       const Configuracao &config, const Certificado *certificado,
                                       Recusas &recusas);

// Whether a content is the one of its document: key, environment, and of the offline kind day,
// total, digest and consumer; and whether it and urlChave lead to the state's own addresses, or to
// the configured ones. The hash where the configuration has the CSC of this issuer: `ressalva`
// receives why it was not looked at.
bool conferirQrCode(const No &nfe, const Configuracao &config, Recusas &recusas,
                    std::string *ressalva = nullptr);

} // namespace zel::envio
