// SPDX-License-Identifier: MIT
// The one place that turns a moment into local time.
#pragma once

#include <ctime>
#include <optional>

namespace zel {

// The moment in the local zone, the one that the application has set by now. None when its year has
// not four digits: a clock that far off has no date that anybody could read. std::bad_alloc when
// there is no memory to read the zone.
std::optional<std::tm> horaLocal(std::time_t momento);

} // namespace zel
