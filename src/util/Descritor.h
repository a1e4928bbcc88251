// SPDX-License-Identifier: MIT
// An open file: closed when it goes out of scope, never under one of the numbers of standard input,
// output and error. A host that closed those would otherwise print into the library's files.
#pragma once

#include <cerrno>
#include <cstddef>
#include <string_view>
#include <sys/types.h>

namespace zel {

// Repeats a call that a signal interrupted.
template <class Chamada>
auto insistir(Chamada chamada) {
    decltype(chamada()) resultado;
    do {
        resultado = chamada();
    } while (resultado < 0 && errno == EINTR);
    return resultado;
}

class Descritor {
public:
    Descritor() = default;
    // open(2) with O_CLOEXEC. A number of 0, 1 or 2 that is free is filled with /dev/null first,
    // and stays so: to free it again could close what another thread has put there meanwhile.
    Descritor(const char *caminho, int modo, mode_t permissoes = 0);
    ~Descritor() { fechar(); }
    Descritor(Descritor &&outro) noexcept : fd_(outro.fd_) { outro.fd_ = -1; }
    Descritor &operator=(Descritor &&outro) noexcept;
    Descritor(const Descritor &) = delete;
    Descritor &operator=(const Descritor &) = delete;

    bool aberto() const { return fd_ >= 0; }
    int fd() const { return fd_; }

    // Forgets the number without closing it, once it is known to be somebody else's file.
    void soltar() { fd_ = -1; }

    // Writes all of it after what was written last, or at `lugar`, bytes from the start.
    bool escrever(std::string_view bytes) const;
    bool escrever(std::string_view bytes, std::size_t lugar) const;

    // A failed close may have lost bytes (network file systems); the descriptor is gone either way.
    bool fechar();

private:
    int fd_ = -1;
};

} // namespace zel
