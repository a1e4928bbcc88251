// SPDX-License-Identifier: MIT
// Local date-times and the offset that documents and events carry. The offset can only lie west of
// UTC: documents write it with a leading "-" whatever it is.
#pragma once

#include "texto/HoraLocal.h"

#include <ctime>
#include <string>

namespace zel {

// "2026-11-24T22:05:18", local.
std::string dataHora(const std::tm &local);

// "-03:00": the configured hours of the server's time zone when TIMEZONESERVIDOR\Utilizar is 1
// (below zero counts as zero), otherwise the system's whole hours west of UTC, daylight saving
// taken into account, "-00:00" east of UTC.
std::string fusoHorario(const std::tm &local);

} // namespace zel
