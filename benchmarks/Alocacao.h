// SPDX-License-Identifier: MIT
// Counts what goes through operator new in this process, the loaded library's share included (the
// program exports its own). What C code below allocates is not seen here.
#pragma once

#include <cstdint>

struct Alocado {
    std::int64_t pedido = 0; // bytes asked for so far
    std::int64_t vivo = 0;   // bytes in use, as the allocator rounds them
    std::int64_t pico = 0;   // most bytes in use since reiniciarPico
};

Alocado alocado();

// From here on the peak is that of what follows.
void reiniciarPico();
