// SPDX-License-Identifier: MIT
#include "imposto/TotalImposto.h"

#include "ZEL_FelborFramework.h"
#include "util/Recusa.h"
#include "util/Texto.h"

#include <string>

namespace zel {

Campo<19> G_szTotalImposto;

int fnCFValorLeiImposto_ZEL_Felbor(std::string_view texto) {
    const std::string aparado = trim(texto);
    if (aparado.empty()) return recusar(Motivo::kArgumentoVazio, {.campo = "valor", .dado = texto});
    G_szTotalImposto = aparado;
    return ZEL_OK;
}

} // namespace zel
