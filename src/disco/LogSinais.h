// SPDX-License-Identifier: MIT
// Holds back the signals with which the system ends a process that writes where nobody reads, or
// more than its limit allows: the till must not end for its log.
#pragma once

#include <csignal>
#include <ctime>

namespace zel {

class SemSinais {
public:
    SemSinais() {
        ::sigemptyset(&sinais_);
        ::sigaddset(&sinais_, SIGPIPE);
        ::sigaddset(&sinais_, SIGXFSZ);
        ::sigpending(&antes_);
        ::pthread_sigmask(SIG_BLOCK, &sinais_, &mascara_);
    }
    ~SemSinais() {
        const timespec ja{};
        sigset_t agora;
        for (const int sinal : {SIGPIPE, SIGXFSZ}) {
            // One that was waiting before is not ours.
            if (::sigismember(&antes_, sinal) == 1) continue;
            sigset_t este;
            ::sigemptyset(&este);
            ::sigaddset(&este, sinal);
            if (::sigpending(&agora) == 0 && ::sigismember(&agora, sinal) == 1)
                ::sigtimedwait(&este, nullptr, &ja);
        }
        ::pthread_sigmask(SIG_SETMASK, &mascara_, nullptr);
    }
    SemSinais(const SemSinais &) = delete;
    SemSinais &operator=(const SemSinais &) = delete;

private:
    sigset_t sinais_{}, antes_{}, mascara_{};
};

} // namespace zel
