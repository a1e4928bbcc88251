// SPDX-License-Identifier: MIT
// A data directory of a target's own, which is the working directory too and gone at the end.
// Cerca.cpp keeps the library inside it.
#pragma once

#include "Alvo.h"
#include "apoio/DiretorioDeDados.h"

class PastaDoAlvo : public PastaTemporaria {
public:
    PastaDoAlvo() {
        ::serDiretorioDeDados(*this);
        std::filesystem::current_path(*this / "");
    }
    void esvaziar() const {
        for (const auto &entrada : std::filesystem::directory_iterator(*this / ""))
            std::filesystem::remove_all(entrada);
    }
};
