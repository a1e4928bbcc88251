// SPDX-License-Identifier: MIT
// What is asked of the log, and what a line of it looks like. The environment variable ZEL_LOG
// names the file (an absolute path, or "stderr"), ZEL_LOG_NIVEL=chamadas asks for all calls instead
// of the refused ones. Both are read once, by the first call of the process; a process with more
// rights than its user has no log. Writing is disco/ArquivoLog's.
#pragma once

#include "texto/Campo.h"

#include <climits>
#include <cstdint>
#include <string>
#include <string_view>

namespace zel {

enum class NivelLog : std::uint8_t { kDesligado, kRecusas, kChamadas };

struct OpcoesLog {
    NivelLog nivel = NivelLog::kDesligado;
    Campo<PATH_MAX> destino; // empty without a log
    OpcoesLog();
};

// Local time with zone, number of the process, `texto`, line end.
std::string linhaDoLog(std::string_view texto);

} // namespace zel
