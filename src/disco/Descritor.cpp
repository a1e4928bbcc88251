// SPDX-License-Identifier: MIT
#include "disco/Descritor.h"

#include <fcntl.h>
#include <unistd.h>

namespace zel {

namespace {

constexpr int kPrimeiroLivre = 3; // after standard input, output and error

// Fills the standard numbers that the host left free, so that no file is opened there even for the
// time until it is moved.
void ocuparPadroes() {
    for (int fd = 0; fd < kPrimeiroLivre; ++fd) {
        if (::fcntl(fd, F_GETFD) >= 0) continue;
        const int nulo = insistir([] { return ::open("/dev/null", O_RDONLY | O_CLOEXEC); });
        if (nulo >= kPrimeiroLivre) ::close(nulo);
        if (nulo < 0 || nulo >= kPrimeiroLivre) return;
    }
}

// Without /dev/null, or when another thread closed one of them this instant.
int acimaDosPadroes(int fd) {
    if (fd < 0 || fd >= kPrimeiroLivre) return fd;
    const int acima = ::fcntl(fd, F_DUPFD_CLOEXEC, kPrimeiroLivre);
    const int erro = errno;
    ::close(fd);
    errno = erro;
    return acima;
}

} // namespace

Descritor::Descritor(const char *caminho, int modo, mode_t permissoes) {
    ocuparPadroes();
    fd_ = acimaDosPadroes(insistir([&] { return ::open(caminho, modo | O_CLOEXEC, permissoes); }));
}

Descritor &Descritor::operator=(Descritor &&outro) noexcept {
    if (this != &outro) {
        // A number that was given out again was not open any more.
        if (fd_ == outro.fd_) soltar();
        fechar();
        fd_ = outro.fd_;
        guardado_ = outro.guardado_;
        outro.soltar();
    }
    return *this;
}

bool Descritor::escrever(std::string_view bytes) const {
    while (!bytes.empty()) {
        const ssize_t escritos = insistir([&] { return ::write(fd_, bytes.data(), bytes.size()); });
        if (escritos <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(escritos));
    }
    return true;
}

bool Descritor::escrever(std::string_view bytes, std::size_t lugar) const {
    while (!bytes.empty()) {
        const ssize_t escritos = insistir(
            [&] { return ::pwrite(fd_, bytes.data(), bytes.size(), static_cast<off_t>(lugar)); });
        if (escritos <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(escritos));
        lugar += static_cast<std::size_t>(escritos);
    }
    return true;
}

bool Descritor::fechar() {
    struct stat dados {};
    // A disk that refuses to say which file it is does not make it somebody else's.
    if (guardado_ && (::fstat(fd_, &dados) == 0 ? !ehOGuardado(dados) : errno == EBADF)) soltar();
    const int resultado = fd_ >= 0 ? ::close(fd_) : 0;
    soltar();
    return resultado == 0 || errno == EINTR;
}

} // namespace zel
