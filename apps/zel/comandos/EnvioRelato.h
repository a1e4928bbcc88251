// SPDX-License-Identifier: MIT
// What libzel-envio says of the queue in JSON, for people.
#pragma once

#include "comandos/Envio.h"

namespace zel::aplicativo {

// Fills the rest of an answer from its `json`.
void relatarEstado(RespostaDaFila &resposta);
void relatarProcura(RespostaDaFila &resposta);
void relatarServico(RespostaDaFila &resposta);

} // namespace zel::aplicativo
