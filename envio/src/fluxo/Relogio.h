// SPDX-License-Identifier: MIT
// What time it is, for those who must be told another one in tests.
#pragma once

#include "fila/Fila.h"

#include <chrono>
#include <string>
#include <string_view>

namespace zel::envio {

using Milissegundos = std::chrono::milliseconds;

class Relogio {
public:
    virtual ~Relogio() = default;
    virtual Momento agora() const {
        return std::chrono::duration_cast<Milissegundos>(
                   std::chrono::system_clock::now().time_since_epoch())
            .count();
    }
};

inline constexpr Momento kSegundo = 1000, kMinuto = 60 * kSegundo, kHora = 60 * kMinuto;
// After too many requests (656) nothing about the same is asked for so long.
inline constexpr Momento kPausaDoExcesso = kHora;

// A moment as documents write it, "AAAA-MM-DDThh:mm:ss-03:00", in the zone ("-03:00") that a text
// of that form ends with; in Brasília's where it ends with none.
std::string momentoEscrito(Momento momento, std::string_view comoEste);

} // namespace zel::envio
