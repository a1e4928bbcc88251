// SPDX-License-Identifier: MIT
// A copy of what a receipt is laid out from, in a directory of its own: what is only looked at
// changes nothing in the till's. The library takes its directory once in a process, so that the
// copy is made before its first call. Goes with the object.
#pragma once

#include "comandos/PastaPassageira.h"

#include <string>

namespace zel::aplicativo {

class CopiaDoCaixa {
public:
    // Of the data directory; from here on the library is about the copy.
    explicit CopiaDoCaixa(const std::string &diretorio);

    // Ending in "/"; empty when it could not be made, and why.
    const std::string &diretorio() const { return diretorio_; }
    const std::string &motivo() const { return motivo_; }

private:
    bool copiar(const std::string &origem);

    PastaPassageira pasta_;
    std::string diretorio_, motivo_;
};

} // namespace zel::aplicativo
