// SPDX-License-Identifier: MIT
// Where a key to sign with comes from: out of a PKCS#12 file, or behind a PKCS#11 module.
#pragma once

#include "assinatura/OpenSsl.h"
#include "assinatura/Segredo.h"
#include "base/Recusa.h"
#include "config/Configuracao.h"

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace zel::envio {

struct ChaveAberta {
    std::shared_ptr<void> token; // goes last: the key may live in it
    DonoChave chave;
    DonoX509 x509;
    std::vector<DonoX509> emissores; // that came along; trusted by nobody
};

// Decrypted in a library context of its own, where RC2 is taken too: what the program has loaded
// and allowed in OpenSSL stays as it is.
std::optional<ChaveAberta> abrirPkcs12(std::string_view bytes, const Segredo &senha,
                                       Recusas &recusas);

// A module is loaded once for all who use it at the same time, for it has one state in a process;
// it goes with the last of them. The PIN is not tried when the token has one attempt left.
std::optional<ChaveAberta> abrirToken(const ConfigCertificado &config, const Segredo &pin,
                                      Recusas &recusas);

} // namespace zel::envio
