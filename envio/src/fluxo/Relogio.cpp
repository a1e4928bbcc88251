// SPDX-License-Identifier: MIT
#include "fluxo/Relogio.h"

#include "base/Texto.h"

#include <ctime>

namespace zel::envio {

std::string momentoEscrito(Momento momento, std::string_view comoEste) {
    constexpr std::size_t kZona = 6;
    std::string zona = "-03:00";
    if (ehMomento(comoEste)) zona = comoEste.substr(comoEste.size() - kZona);
    const int horas = (zona[1] - '0') * 10 + (zona[2] - '0');
    const std::time_t local =
        static_cast<std::time_t>(momento / 1000) + (zona[0] == '-' ? -horas : horas) * 3600;
    std::tm partes{};
    char texto[20];
    gmtime_r(&local, &partes);
    const std::size_t tamanho = std::strftime(texto, sizeof texto, "%Y-%m-%dT%H:%M:%S", &partes);
    return std::string(texto, tamanho) + zona;
}

} // namespace zel::envio
