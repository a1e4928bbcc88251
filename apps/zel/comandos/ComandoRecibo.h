// SPDX-License-Identifier: MIT
// What zel ver and zel imprimir have in common: the receipt that the arguments ask for.
#pragma once

#include "comandos/BibliotecaRecibo.h"
#include "comandos/Comando.h"

#include <optional>

namespace zel::aplicativo {

// The receipt, with its notice said on the error output. None, and said, when there is none or the
// arguments do not fit together; `saida` is then the exit code. `previa`: one without the
// authority's answer will do.
std::optional<Recibo> reciboPedido(const Comando &comando, const Argumentos &argumentos,
                                   bool previa, int &saida);

} // namespace zel::aplicativo
