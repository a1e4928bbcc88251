// SPDX-License-Identifier: MIT
// A temporary directory as the library's data directory, in a program that links the rooms.
#pragma once

#include "apoio/PastaTemporaria.h"
#include "disco/Diretorio.h"

namespace zel {
void esquecerDiario(); // diario/Gravacao.h, whose names would collide with those of tests
}

// As for a process that starts now.
inline void serDiretorioDeDados(const PastaTemporaria &pasta) {
    ::setenv("ZEL_DIRETORIO", (pasta / "").c_str(), 1);
    zel::esquecerDiretorio();
    zel::esquecerDiario();
}
