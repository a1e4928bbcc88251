// SPDX-License-Identifier: MIT
#include "config/Arredondamento.h"

#include "config/Registro.h"
#include "texto/Numero.h"

namespace zel {

double fnArredondarTruncar(double valor) {
    const bool truncar = igualSemCaixa(valorConfig(R"(CONFIGURACAO\ArredondarTruncar)"_chave), "T");
    return arredondarOuTruncar(valor, truncar);
}

} // namespace zel
