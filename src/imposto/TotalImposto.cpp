// SPDX-License-Identifier: MIT
#include "imposto/TotalImposto.h"

#include "recusa/Recusa.h"
#include "texto/Texto.h"
#include "zel_felbor/codigos.h"

#include <string>

namespace zel {

TotalImposto G_szTotalImposto;

int fnCFValorLeiImposto_ZEL_Felbor(TotalImposto &total, std::string_view texto) {
    const std::string aparado = trim(texto);
    if (aparado.empty()) return recusar(Motivo::kArgumentoVazio, {.campo = "valor", .dado = texto});
    total = aparado;
    return ZEL_OK;
}

} // namespace zel
