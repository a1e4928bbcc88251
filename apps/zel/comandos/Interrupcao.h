// SPDX-License-Identifier: MIT
// Ctrl-C, and the other signals that ask a command to end, while it does what must not stop
// halfway: they are taken note of for as long as the object lives. One that was ignored stays so.
#pragma once

#include <array>
#include <csignal>

namespace zel::aplicativo {

class Interrupcao {
public:
    Interrupcao();
    ~Interrupcao();
    Interrupcao(const Interrupcao &) = delete;
    Interrupcao &operator=(const Interrupcao &) = delete;

    static bool pedida();

private:
    static constexpr std::array<int, 3> kSinais{SIGINT, SIGTERM, SIGHUP};
    std::array<struct sigaction, kSinais.size()> antes_{};
};

} // namespace zel::aplicativo
