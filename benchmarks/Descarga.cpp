// SPDX-License-Identifier: MIT
#include "Descarga.h"

#include <atomic>
#include <ctime>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

std::atomic<std::int64_t> feitas{0};
std::atomic<long> atrasoNs{0};

int descarregar(long chamada, int fd) {
    ++feitas;
    if (const long atraso = atrasoNs; atraso > 0) {
        const timespec espera{atraso / 1'000'000'000, atraso % 1'000'000'000};
        ::nanosleep(&espera, nullptr);
    }
    return static_cast<int>(::syscall(chamada, fd));
}

} // namespace

extern "C" {
int fsync(int fd) {
    return descarregar(SYS_fsync, fd);
}
int fdatasync(int fd) {
    return descarregar(SYS_fdatasync, fd);
}
}

std::int64_t descargas() {
    return feitas;
}

DiscoLento::DiscoLento(std::chrono::microseconds atraso) {
    atrasoNs = std::chrono::nanoseconds(atraso).count();
}

DiscoLento::~DiscoLento() {
    atrasoNs = 0;
}
