// SPDX-License-Identifier: MIT
// Initialisation and finalisation of the library.
#pragma once

namespace zel {

// Templates, defaults, configuration file. ZEL_OK; ZEL_ARQUIVO_INDISPONIVEL the file can be neither
// read nor written.
int fnCFInicializar_ZEL_Felbor();

// Frees the templates. Always 1.
int fnCFFinalizar_ZEL_Felbor();

} // namespace zel
