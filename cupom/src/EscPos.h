// SPDX-License-Identifier: MIT
// A receipt as the bytes that a printer prints. The printer breaks and aligns the lines by itself;
// the profile says by which commands.
#pragma once

#include "Logotipo.h"
#include "Modelo.h"
#include "Perfil.h"

#include <optional>
#include <string>

namespace zel::cupom {

struct Impressao {
    const Perfil &perfil;
    int colunas = 0; // of the receipt: printed in the largest font of which a line holds as many
    const ImagemCinza *logotipo = nullptr; // no wider than the printer's line; dots, 0 for black
    bool abrirGaveta = false;              // where the model can
};

// None when the receipt needs more paper than kMaiorAltura.
std::optional<std::string> gerarEscPos(const Cupom &cupom, const Impressao &impressao);

} // namespace zel::cupom
