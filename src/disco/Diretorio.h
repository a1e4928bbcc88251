// SPDX-License-Identifier: MIT
// Where the library keeps its files: beside the shared object itself, or in the directory that the
// environment variable ZEL_DIRETORIO names. Decided here and nowhere else, as is how a list of
// directories to write copies to is read.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zel {

// The data directory, ending in "/", followed by `nome`. ZEL_DIRETORIO is read once per process, by
// the first call, and counts when it is an absolute path (a relative one would follow the
// application's working directory about) and the process has no more rights than its user.
std::string fnConfigurarPath(std::string_view nome);

// Its path without links and dots; as it is where the system cannot say.
std::string diretorioSemLigacoes();

// Chooses the data directory anew at the next call, as a new process would.
void esquecerDiretorio();

// The directories of a list "dirA/|dirB/": at most three, each cut to 300 characters and used as
// given, so that it ends with its own "/". Empty places are skipped.
std::vector<std::string_view> separarDiretorios(std::string_view lista);

} // namespace zel
