// SPDX-License-Identifier: MIT
// The receipt in progress as zel estado and zel vender say it.
#pragma once

#include "comandos/ComandoComum.h"
#include "leitura/Cupom.h"

#include <optional>
#include <string>
#include <vector>

namespace zel::aplicativo {

// What ArqPersist.bin of the data directory holds; none, and why, when it cannot be read.
std::optional<Cupom> cupomNoDisco(const std::string &diretorio, std::string &erro);

// How many items, the total, what was paid and what is still due.
std::vector<Linha> resumoDoCupom(const Cupom &cupom);

// The same after its consumer, each item and each payment.
std::vector<Linha> linhasDoCupom(const Cupom &cupom);

} // namespace zel::aplicativo
