// SPDX-License-Identifier: MIT
// The one place that turns a moment into local time.
#pragma once

#include <ctime>
#include <optional>
#include <string>

namespace zel {

// The moment in the local zone, the one that the application has set by now. None when its year has
// not four digits: no reader of documents takes the date of a clock that far off. std::bad_alloc
// when there is no memory to read the zone.
std::optional<std::tm> horaLocal(std::time_t momento);

// "2026-11-24T22:05:18", as documents and events write a local date-time.
std::string dataHora(const std::tm &local);

} // namespace zel
