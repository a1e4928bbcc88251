// Where the library keeps its files: beside the shared object itself, or in the directory that the
// environment variable ZEL_DIRETORIO names. Decided here and nowhere else.
#pragma once

#include <string>
#include <string_view>

namespace zel {

// The data directory, ending in "/", with `nome` behind it. ZEL_DIRETORIO counts when it is an
// absolute path; a relative one would follow the application's working directory about.
std::string fnConfigurarPath(std::string_view nome);

} // namespace zel
