// SPDX-License-Identifier: MIT
// Where certificate and password are named: the configuration, the environment, systemd.
#pragma once

#include "assinatura/Segredo.h"
#include "base/Recusa.h"
#include "config/Configuracao.h"

#include <optional>
#include <string>

namespace zel::envio {

// Path of the PKCS#12 file: what the configuration says, ZEL_ENVIO_CERTIFICADO (a whole path), or
// the credential `certificado`. None when nothing names one.
std::optional<std::string> arquivoDoCertificado(const ConfigCertificado &config, Recusas &recusas);

// The first line of the configured file, which its owner alone may read, ZEL_ENVIO_SENHA, or the
// credential `senha`; empty when nothing names one.
std::optional<Segredo> senhaDoCertificado(const ConfigCertificado &config, Recusas &recusas);

} // namespace zel::envio
