// SPDX-License-Identifier: MIT
#include "negocio/Inicializacao.h"

#include "config/Registro.h"
#include "emcurso/Carga.h"
#include "zel_felbor/codigos.h"

namespace zel {

int fnCFInicializar_ZEL_Felbor(ST_PersitenceXML_ZEL &documento) {
    const int resultado = inicializarConfig();
    // A document in progress is judged by the configuration, so it is looked at after it.
    fnInicializarVariaveis_ZEL(documento);
    return resultado;
}

int fnCFFinalizar_ZEL_Felbor() {
    fnFinalizarVariaveis_ZEL();
    return ZEL_OK;
}

} // namespace zel
