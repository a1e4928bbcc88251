// SPDX-License-Identifier: MIT
// While this lives a write to a connection that broke is an error in this thread and no signal,
// which would end a program that does not expect it.
#pragma once

#include <ctime>
#include <signal.h>

namespace zel::envio {

class SemSigpipe {
public:
    SemSigpipe() {
        sigset_t pendentes;
        sigemptyset(&este_);
        sigaddset(&este_, SIGPIPE);
        sigpending(&pendentes);
        havia_ = sigismember(&pendentes, SIGPIPE) == 1;
        pthread_sigmask(SIG_BLOCK, &este_, &antes_);
    }
    ~SemSigpipe() {
        const timespec ja{};
        if (!havia_) sigtimedwait(&este_, nullptr, &ja);
        pthread_sigmask(SIG_SETMASK, &antes_, nullptr);
    }
    SemSigpipe(const SemSigpipe &) = delete;
    SemSigpipe &operator=(const SemSigpipe &) = delete;

private:
    sigset_t este_{}, antes_{};
    bool havia_ = false;
};

} // namespace zel::envio
