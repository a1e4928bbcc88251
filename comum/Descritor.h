// SPDX-License-Identifier: MIT
// An open file: closed when it goes out of scope, never under one of the numbers of standard input,
// output and error. A host that closed those would otherwise print into the library's files, or on
// its printer. A descriptor that is kept between calls knows which file it is: a host that closes
// whatever is open, as a service does that starts, may have a file of its own under the number
// afterwards.
#pragma once

#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

namespace zel::comum {

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
    explicit Descritor(int fd) : fd_(fd) {} // takes over a number that is open
    // open(2) with O_CLOEXEC. A number of 0, 1 or 2 that is free is filled with /dev/null first,
    // and stays so: to free it again could close what another thread has put there meanwhile.
    Descritor(const char *caminho, int modo, mode_t permissoes = 0666);
    Descritor(const std::string &caminho, int modo) : Descritor(caminho.c_str(), modo) {}
    ~Descritor() { fechar(); }
    Descritor(Descritor &&outro) noexcept : fd_(outro.fd_), guardado_(outro.guardado_) {
        outro.soltar();
    }
    Descritor &operator=(Descritor &&outro) noexcept;

    bool aberto() const { return fd_ >= 0; }
    int fd() const { return fd_; }

    // What fstat(2) says; none, with errno.
    std::optional<struct stat> situacao() const;

    // Notes which file it is, as fstat(2) said right after it was opened.
    void guardar(const struct stat &dados) { guardado_ = {dados.st_dev, dados.st_ino}; }
    // Whether what fstat(2) says now is of the file that was noted.
    bool ehOGuardado(const struct stat &dados) const {
        return guardado_ && guardado_->dispositivo == dados.st_dev && guardado_->no == dados.st_ino;
    }

    // Forgets the number without closing it, once it is known to be somebody else's file.
    void soltar() {
        fd_ = -1;
        guardado_.reset();
    }

    // Fills `bytes` from `lugar` on, bytes from the start. How many there were, or -1 with errno.
    ssize_t ler(std::span<char> bytes, std::size_t lugar) const;
    // Reads a regular file from where it stands to its end; `esperados` is the size that fstat(2)
    // gives. False, with errno, also for one of more than `maior` bytes (EFBIG).
    bool lerTudo(std::string &conteudo, std::size_t esperados, std::size_t maior) const;

    // Writes all of it after what was written last, or at `lugar`, bytes from the start.
    bool escrever(std::string_view bytes) const;
    bool escrever(std::string_view bytes, std::size_t lugar) const;

    // fsync(2), or fdatasync(2) for the bytes of a file that keeps its size.
    bool descarregar() const;
    bool descarregarBytes() const;

    // A failed close may have lost bytes (network file systems); the descriptor is gone either way.
    // A number that is no more the file that was noted is its new owner's to close.
    bool fechar();

private:
    struct Guardado {
        dev_t dispositivo;
        ino_t no;
    };

    int fd_ = -1;
    std::optional<Guardado> guardado_;
};

} // namespace zel::comum
