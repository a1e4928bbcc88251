// SPDX-License-Identifier: MIT
// The return codes of the library with their meaning and remedy, from the table that the manual
// shares. The rows stand in TabelaCodigos.h, which is generated.
#pragma once

#include <string_view>

namespace zel::aplicativo {

struct LinhaCodigo {
    int codigo;
    std::string_view nome;
    std::string_view significado;
    std::string_view remedio;
};

// Null when the library has no such code.
const LinhaCodigo *procurarCodigo(int codigo);

} // namespace zel::aplicativo
