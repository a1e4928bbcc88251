// SPDX-License-Identifier: MIT
// A directory of its own that goes, with all that is in it, when the object does.
#pragma once

#include <string>

namespace zel::aplicativo {

class PastaPassageira {
public:
    PastaPassageira();
    ~PastaPassageira();
    PastaPassageira(const PastaPassageira &) = delete;
    PastaPassageira &operator=(const PastaPassageira &) = delete;

    // Ending in "/"; empty when it could not be made, and why.
    const std::string &caminho() const { return caminho_; }
    const std::string &motivo() const { return motivo_; }

private:
    std::string caminho_, motivo_;
};

} // namespace zel::aplicativo
