// SPDX-License-Identifier: MIT
// A document sent while a cashier waits: through the queue like every other, by this process or by
// the service, whoever comes first; and what the cashier is told when the time is up.
#pragma once

#include "fluxo/Fluxo.h"

#include <string>

namespace zel::envio {

enum class Espera {
    kFeito, // authorized; of a request: cancelled, inutilized, answered
    // By the translation or the authority, which may have it cancelled already, or another has the
    // place of what its till took back: `ficha.motivo`.
    kRecusado,
    kSemResposta, // it may be there: the queue asks on; its number must not be used again
    kNaoEnviado,  // certainly not there and, an NFC-e issued online, taken back: the number is free
    kFila,        // the queue cannot be used
};

struct Transmitido {
    Espera espera = Espera::kFila;
    Ficha ficha{};
    std::string mensagem{}, elemento{}; // as they stand in the queue
};

// Ends within `prazo` and what the disk takes. Offline documents and requests that are not answered
// by then stay in the queue. What was taken back before goes its way again. Without any `prazo` an
// NFC-e is signed, and goes out later.
Transmitido transmitir(const Meios &meios, const Achado &achado, Milissegundos prazo,
                       Recusas &recusas);

} // namespace zel::envio
