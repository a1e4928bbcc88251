// SPDX-License-Identifier: MIT
// Waits until something is written into one of several directories, or somebody calls.
#pragma once

#include "comum/Descritor.h"
#include "fluxo/Relogio.h"

#include <string>
#include <vector>

namespace zel::envio {

class Vigia {
public:
    // A directory that does not exist, or more than the system watches: waiting then ends by time
    // alone.
    explicit Vigia(const std::vector<std::string> &pastas);

    // Until a file is written or renamed into a directory, `acordar`, or that time has passed.
    void esperar(Milissegundos tempo);
    // From any thread, and from a signal's handler.
    void acordar() const;

private:
    comum::Descritor eventos_, chamada_;
};

} // namespace zel::envio
