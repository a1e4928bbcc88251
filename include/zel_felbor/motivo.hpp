// SPDX-License-Identifier: MIT
// Why the library refused: an anonymous file in memory, to which it writes what it refused last. On
// other systems than Linux refusals come without a reason.
#pragma once

#include "zel_felbor/tabelas.hpp"

#ifdef __linux__
#include <cstdlib>
#include <sys/mman.h>
#include <unistd.h>
#endif

#include <string>

namespace zel_felbor::detalhe {

inline int motivos = -1; // its descriptor

inline void ouvirMotivos() {
#ifdef __linux__
    if (motivos < 0) motivos = ::memfd_create(descritor, MFD_CLOEXEC);
    ::setenv("ZEL_LOG_DESCRITOR", std::to_string(motivos).c_str(), 1);
#endif
}

// The reason that the call just made was refused for; empty when the descriptor is no longer that
// file, or holds what another process wrote.
inline std::string motivoDe([[maybe_unused]] const std::string &funcao,
                            [[maybe_unused]] int codigo) {
#ifdef __linux__
    const std::string nome = "/proc/self/fd/" + std::to_string(motivos);
    const std::string esperado = std::string("/memfd:") + descritor + " (deleted)";
    std::string texto(4096, '\0');
    ssize_t lidos = ::readlink(nome.c_str(), texto.data(), texto.size());
    if (lidos < 0 || texto.substr(0, static_cast<std::size_t>(lidos)) != esperado) return "";
    lidos = ::pread(motivos, texto.data(), texto.size(), 0);
    texto.resize(lidos < 0 ? 0 : static_cast<std::size_t>(lidos));
    texto.resize(texto.find('\n') == texto.npos ? texto.size() : texto.find('\n'));
    const std::string inicio =
        "[" + std::to_string(::getpid()) + "] " + funcao + ": " + std::to_string(codigo) + " ";
    if (texto.compare(0, inicio.size(), inicio) != 0) return "";
    const std::size_t lugar = texto.find(": ", inicio.size());
    return lugar == texto.npos ? "" : texto.substr(lugar + 2);
#else
    return "";
#endif
}

} // namespace zel_felbor::detalhe
