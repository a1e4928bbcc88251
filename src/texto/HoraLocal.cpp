// SPDX-License-Identifier: MIT
#include "texto/HoraLocal.h"

#include "texto/Numero.h"

#include <cerrno>
#include <new>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace zel {

namespace {

bool incerta = false; // the C library had no memory to read the zone

// What it could not read it takes for read, and goes by UTC, as long as TZ stays as it is: for an
// instant TZ is another one.
void esquecerZona() {
    static char outra[] = "TZ=UTC0";
    for (char **variavel = ::environ; variavel != nullptr && *variavel != nullptr; ++variavel) {
        if (!std::string_view(*variavel).starts_with("TZ=")) continue;
        char *esta = std::exchange(*variavel, outra);
        ::tzset();
        *variavel = esta;
        return;
    }
}

void lerZona() {
    if (incerta) esquecerZona();
    errno = 0;
    // localtime_r alone goes by the zone that it saw first.
    ::tzset();
    incerta = errno == ENOMEM;
    if (incerta) throw std::bad_alloc();
}

} // namespace

std::optional<std::tm> horaLocal(std::time_t momento) {
    constexpr int kAno1000 = 1000 - 1900, kAno9999 = 9999 - 1900;
    lerZona();
    std::tm local{};
    if (::localtime_r(&momento, &local) == nullptr) return {};
    if (local.tm_year < kAno1000 || local.tm_year > kAno9999) return {};
    return local;
}

std::string dataHora(const std::tm &local) {
    return formatarInteiro(local.tm_year + 1900, 4) + '-' + formatarInteiro(local.tm_mon + 1, 2) +
           '-' + formatarInteiro(local.tm_mday, 2) + 'T' + formatarInteiro(local.tm_hour, 2) + ':' +
           formatarInteiro(local.tm_min, 2) + ':' + formatarInteiro(local.tm_sec, 2);
}

} // namespace zel
