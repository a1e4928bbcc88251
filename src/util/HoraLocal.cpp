#include "util/HoraLocal.h"

namespace zel {

std::tm horaLocal(std::time_t momento) {
    // localtime_r alone goes by the zone that it saw first.
    ::tzset();
    std::tm local{};
    ::localtime_r(&momento, &local);
    return local;
}

} // namespace zel
