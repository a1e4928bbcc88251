// SPDX-License-Identifier: MIT
// Waiting for descriptors up to a moment that is fixed beforehand.
#pragma once

#include <algorithm>
#include <chrono>
#include <poll.h>

namespace zel::cupom {

class Prazo {
public:
    explicit Prazo(std::chrono::milliseconds quanto) : fim_(Relogio::now() + quanto) {}

    // Time that is left; never negative.
    std::chrono::milliseconds resta() const {
        const auto resto = std::chrono::ceil<std::chrono::milliseconds>(fim_ - Relogio::now());
        return std::max(resto, std::chrono::milliseconds(0));
    }
    bool acabou() const { return resta().count() == 0; }

    // So much of it, or all that is left when that is less.
    Prazo parte(std::chrono::milliseconds quanto) const { return Prazo(std::min(quanto, resta())); }

private:
    using Relogio = std::chrono::steady_clock;
    Relogio::time_point fim_;
};

// Which of the events happened; POLLERR, POLLHUP and POLLNVAL always count. 0 when time was over.
short esperar(int fd, short eventos, const Prazo &prazo);

// A pause where there is nothing to wait for; false when time was over.
bool pausar(const Prazo &prazo);

} // namespace zel::cupom
