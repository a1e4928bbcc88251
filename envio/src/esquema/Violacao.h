// SPDX-License-Identifier: MIT
// What libxml2 says of a violation, in Portuguese: where, what was found, which rule it breaks.
#pragma once

#include "base/Recusa.h"

#include <libxml/xmlerror.h>

namespace zel::envio {

// Whether it is the missing Signature of a message that is to be signed.
bool faltaAssinatura(const xmlError &erro);

// Whether a value breaks a rule about its form; of several about one value the first says it all.
bool ehDoValor(const xmlError &erro);

Recusa violacaoDe(const xmlError &erro);

} // namespace zel::envio
