// SPDX-License-Identifier: MIT
// The service's figures in the text format that monitoring systems read. No names of persons, tills
// or documents.
#pragma once

#include "Quadro.h"
#include "Relato.h"

#include <string>

namespace zel::envio {

inline constexpr const char *kTipoDasMetricas = "text/plain; version=0.0.4; charset=utf-8";

std::string metricasDe(const Quadro &quadro, const Contadores &contadores);

} // namespace zel::envio
