// SPDX-License-Identifier: MIT
// Until when an authority takes what waits, as most states have it or the configuration says: what
// is said of a document that is late. Nothing is held back for it: the authority decides, and some
// allow more.
#pragma once

#include "config/Configuracao.h"
#include "fila/Fila.h"

#include <optional>
#include <string>

namespace zel::envio {

// Of a document on its way; none where there is no limit, or it is not known from when on it runs.
std::optional<Momento> prazoDe(Fila &fila, const Ficha &ficha, const ConfigFila &config);
// The same for people, "prazo: 2026-11-25T22:04:16-03:00", or that it is over and what that means;
// empty where there is none.
std::string prazoDito(Fila &fila, const Ficha &ficha, const ConfigFila &config, Momento agora);

} // namespace zel::envio
