// SPDX-License-Identifier: MIT
// The flushes of the running program: counted, and slowed down to those of a worse disk. The
// program that links this defines the C library's fsync and fdatasync, so that the copies of the
// library that it loads call these (link with ENABLE_EXPORTS).
#pragma once

#include <chrono>
#include <cstdint>

// Since the program began.
std::int64_t descargas();

// While it lives, every flush takes so much longer, asleep as it would be waiting for a disk.
class DiscoLento {
public:
    explicit DiscoLento(std::chrono::microseconds atraso);
    ~DiscoLento();
    DiscoLento(const DiscoLento &) = delete;
    DiscoLento &operator=(const DiscoLento &) = delete;
};
