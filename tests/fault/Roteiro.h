// SPDX-License-Identifier: MIT
// The life of a till in steps: every operation that changes a file, each at a place where it
// succeeds. A roteiro is played from its beginning; each step is answered with a positive code.
#pragma once

#include "apoio/Funcoes.h"

#include <functional>
#include <string>
#include <vector>

// Answers what the library did. `diretorio` is the till's and ends in "/".
using Acao = std::function<int(const Funcoes &funcoes, const std::string &diretorio)>;

struct Passo {
    const char *nome;
    Acao fazer;
    // A step that is allowed to happen in parts: each file is that of before, of after, or the one
    // that `meio` leaves.
    bool porPartes = false;
    Acao meio = nullptr;
    // A repetition takes another numeric code, so that no two files have the same.
    bool outroCodigo = false;
};

struct Roteiro {
    const char *nome;
    std::vector<Passo> passos;
};

const std::vector<Roteiro> &roteiros();
