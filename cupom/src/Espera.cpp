// SPDX-License-Identifier: MIT
#include "Espera.h"

#include <cerrno>
#include <thread>

namespace zel::cupom {

short esperar(int fd, short eventos, const Prazo &prazo) {
    pollfd espera{fd, eventos, 0};
    while (::poll(&espera, 1, static_cast<int>(prazo.resta().count())) < 0)
        if (errno != EINTR) return POLLERR;
    return espera.revents;
}

bool pausar(const Prazo &prazo) {
    constexpr std::chrono::milliseconds kPausa(5);
    if (prazo.acabou()) return false;
    std::this_thread::sleep_for(kPausa);
    return true;
}

} // namespace zel::cupom
