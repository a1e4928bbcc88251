// SPDX-License-Identifier: MIT
// Initialisation and finalisation of the library.
#pragma once

#include "emcurso/Persistencia.h"

namespace zel {

// Templates, defaults, configuration file, the document in progress. ZEL_OK;
// ZEL_ARQUIVO_INDISPONIVEL the file can be neither read nor written.
int fnCFInicializar_ZEL_Felbor(ST_PersitenceXML_ZEL &documento);

// Frees the templates. Always 1. Prescribed; no exported function reaches it.
int fnCFFinalizar_ZEL_Felbor();

} // namespace zel
