// SPDX-License-Identifier: MIT
// One value of the configuration against the rule of its key: length, type, check digits. What
// depends on other keys (the state, the environment) is ConferenciaEmitente's.
#pragma once

#include "conferencia/Achado.h"
#include "leitura/Chaves.h"

#include <string>
#include <string_view>

namespace zel::aplicativo {

// A value as it may be shown: secrets and persons' data hidden, long ones cut, in quotes.
std::string mostrar(const LinhaChave &chave, std::string_view valor);

// Looks at one value; `linha` is where it stands in the file. At most one finding.
void conferirValor(const LinhaChave &chave, std::string_view valor, std::size_t linha,
                   Relatorio &relatorio);

// Whether it would find nothing: what depends on the value can rely on it.
bool valorServe(const LinhaChave &chave, std::string_view valor);

} // namespace zel::aplicativo
