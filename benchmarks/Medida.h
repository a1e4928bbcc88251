// SPDX-License-Identifier: MIT
// What one call costs: time that passes, processor time of the thread, bytes that it asks the
// system to write, flushes. Taken around the call alone, so that whatever puts the till's state
// back stays outside.
#pragma once

#include <cstdint>

struct Medida {
    double parede = 0;        // seconds
    double processador = 0;   // seconds, in the program and in the system
    std::int64_t escrito = 0; // bytes handed to write calls; 0 where the system does not count them
    std::int64_t descargas = 0;
};

// What the clocks and counters say now.
class Cronometro {
public:
    Cronometro();

    // What passed since the construction, less what measuring itself costs.
    Medida ler() const;

private:
    std::int64_t escrito_;
    std::int64_t descargas_;
    std::int64_t processador_;
    std::int64_t parede_;
};

template <class Chamada>
Medida medir(Chamada chamada) {
    const Cronometro cronometro;
    chamada();
    return cronometro.ler();
}
