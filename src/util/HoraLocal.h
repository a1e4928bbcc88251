// The one place that turns a moment into local time.
#pragma once

#include <ctime>

namespace zel {

// The moment in the local zone, the one that the application has set by now.
std::tm horaLocal(std::time_t momento);

} // namespace zel
