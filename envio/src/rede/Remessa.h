// SPDX-License-Identifier: MIT
// Where a message goes and under which names: the state's, unless the configuration says others.
#pragma once

#include "base/Recusa.h"
#include "config/Configuracao.h"
#include "config/Enderecos.h"
#include "rede/Transporte.h"

#include <optional>
#include <string>
#include <string_view>

namespace zel::envio {

// `cUF` two digits, `tpAmb` 1 or 2. None, with the key to set, where no address is known.
std::optional<Remessa> remessaDe(const Configuracao &config, std::string_view cUF, int tpAmb,
                                 Servico servico, std::string mensagem, Recusas &recusas);

} // namespace zel::envio
