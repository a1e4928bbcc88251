// SPDX-License-Identifier: MIT
// Who is told what happens: to log it, and to count it.
#pragma once

#include "fila/Fila.h"

#include <string>
#include <string_view>

namespace zel::envio {

// Called from any worker, which waits for it. No secret is said; a person's number may stand in
// what a refusal quotes, and whoever writes it down masks it.
class Ouvinte {
public:
    virtual ~Ouvinte() = default;
    // A document has gone from the state of `antes` to another: it is on the disk.
    virtual void mudou(const Ficha & /*antes*/, Estado /*para*/) {}
    // A service was asked: cStat 0 when no answer came that could be read.
    virtual void respondeu(const ServicoVisto & /*visto*/) {}
    // Nothing is signed or sent any more.
    virtual void parou(std::string_view /*motivo*/) {}
    // Anything else: of files of a till, of memory.
    virtual void disse(std::string_view /*linha*/) {}
};

} // namespace zel::envio
