// SPDX-License-Identifier: MIT
// The data directory as a place: which files stand there, who may read and write them, what a dead
// process left, and the receipt in progress. Changes nothing, not even times.
#pragma once

#include "conferencia/Achado.h"
#include "conferencia/ArquivoConfig.h"

#include <string>

namespace zel::aplicativo {

// Everything about a data directory; its path ends in "/".
void conferirDiretorio(const std::string &diretorio, Relatorio &relatorio);

// Directories that the configuration names: they exist and can be written.
void conferirDiretoriosDeCopia(const ArquivoConfig &config, Relatorio &relatorio);

} // namespace zel::aplicativo
