// SPDX-License-Identifier: MIT
#include "util/HoraLocal.h"

namespace zel {

std::optional<std::tm> horaLocal(std::time_t momento) {
    constexpr int kAno1000 = 1000 - 1900, kAno9999 = 9999 - 1900;
    // localtime_r alone goes by the zone that it saw first.
    ::tzset();
    std::tm local{};
    if (::localtime_r(&momento, &local) == nullptr) return {};
    if (local.tm_year < kAno1000 || local.tm_year > kAno9999) return {};
    return local;
}

} // namespace zel
