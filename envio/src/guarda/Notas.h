// SPDX-License-Identifier: MIT
// The accountant's list of a month: a line for each number of each series.
#pragma once

#include "fila/Fila.h"
#include "guarda/Guarda.h"

#include <string>
#include <string_view>

namespace zel::envio {

// notas.csv, UTF-8 with a mark. `mes`: "AAAA-MM".
std::string listarNotas(Fila &fila, const Guarda &guarda, std::string_view mes);

} // namespace zel::envio
