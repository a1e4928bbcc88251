// SPDX-License-Identifier: MIT
// A fence around the targets: whatever path an input makes up, no file outside the data directory
// is opened, and so none replaced, or removed. The linker sends the library's file calls here.
#include "Alvo.h"

#include <cerrno>
#include <cstdarg>
#include <fcntl.h>

extern "C" int __real_open(const char *caminho, int modo, ...);
extern "C" int __real_unlink(const char *caminho);

namespace {

// A relative path is meant within the working directory, which is the data directory.
bool fora(std::string_view caminho) {
    const char *diretorio = std::getenv("ZEL_DIRETORIO");
    if (diretorio != nullptr && caminho.find("..") == caminho.npos &&
        (!caminho.starts_with('/') || caminho.starts_with(diretorio)))
        return false;
    errno = EACCES;
    return true;
}

} // namespace

extern "C" int __wrap_open(const char *caminho, int modo, ...) {
    std::va_list resto;
    va_start(resto, modo);
    const mode_t permissoes = (modo & O_CREAT) != 0 ? va_arg(resto, mode_t) : 0;
    va_end(resto);
    return fora(caminho) ? -1 : __real_open(caminho, modo, permissoes);
}

extern "C" int __wrap_unlink(const char *caminho) {
    return fora(caminho) ? -1 : __real_unlink(caminho);
}
