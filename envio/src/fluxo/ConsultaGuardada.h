// SPDX-License-Identifier: MIT
// Consultations that the authority has no service for, by number or by date: answered from what was
// kept, and said so.
#pragma once

#include "config/Configuracao.h"
#include "fila/Fila.h"

namespace zel::envio {

// Writes the return of a consultation without a key: SitCodigo 100, or 217 when nothing was found,
// and a Documento each. At most 1000 numbers, or 31 days. False when it could not be written.
bool responderDoGuardado(const Configuracao &config, Fila &fila, const Ficha &ficha);

} // namespace zel::envio
