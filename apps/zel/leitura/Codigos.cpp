// SPDX-License-Identifier: MIT
#include "leitura/Codigos.h"

#include "leitura/TabelaCodigos.h"

namespace zel::aplicativo {

const LinhaCodigo *procurarCodigo(int codigo) {
    for (const LinhaCodigo &linha : kCodigos)
        if (linha.codigo == codigo) return &linha;
    return nullptr;
}

} // namespace zel::aplicativo
