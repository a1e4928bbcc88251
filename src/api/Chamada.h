// SPDX-License-Identifier: MIT
// One call of an exported function, as the log sees it: what it answers and why, in one line.
#pragma once

#include "disco/ArquivoLog.h"

#include <ctime>
#include <string_view>

namespace zel {

class Chamada {
public:
    // From here on reasons are kept, where there is a log.
    explicit Chamada(std::string_view funcao) noexcept;
    ~Chamada();
    Chamada(const Chamada &) = delete;
    Chamada &operator=(const Chamada &) = delete;

    // Writes the line of a refusal, or of any call when all are asked for; gives the code back.
    int responder(int codigo) noexcept;

private:
    NivelLog nivel_;
    std::string_view funcao_;
    std::timespec inicio_{}; // when all calls are asked for
};

// "ZEL_OK"; empty for a number that is no code.
std::string_view nomeDoCodigo(int codigo);

} // namespace zel
