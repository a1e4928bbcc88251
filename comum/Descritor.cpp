// SPDX-License-Identifier: MIT
#include "comum/Descritor.h"

namespace zel::comum {

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

std::optional<struct stat> Descritor::situacao() const {
    struct stat dados {};
    if (::fstat(fd_, &dados) != 0) return {};
    return dados;
}

ssize_t Descritor::ler(std::span<char> bytes, std::size_t lugar) const {
    std::size_t lidos = 0;
    while (lidos < bytes.size()) {
        const ssize_t parte = insistir([&] {
            return ::pread(fd_, bytes.data() + lidos, bytes.size() - lidos,
                           static_cast<off_t>(lugar + lidos));
        });
        if (parte < 0) return -1;
        if (parte == 0) break;
        lidos += static_cast<std::size_t>(parte);
    }
    return static_cast<ssize_t>(lidos);
}

bool Descritor::lerTudo(std::string &conteudo, std::size_t esperados, std::size_t maior) const {
    std::size_t lidos = 0;
    ssize_t parte = 1;
    // One byte more than the file holds, so that the end is met in the same read.
    if (esperados <= maior) conteudo.resize(esperados + 1);
    while (esperados <= maior && lidos <= maior && parte != 0) {
        parte =
            insistir([&] { return ::read(fd_, conteudo.data() + lidos, conteudo.size() - lidos); });
        if (parte < 0) return false;
        lidos += static_cast<std::size_t>(parte);
        if (lidos == esperados) parte = 0;
        if (lidos == conteudo.size()) conteudo.resize(conteudo.size() * 2);
    }
    conteudo.resize(lidos);
    if (esperados > maior || lidos > maior) errno = EFBIG;
    return esperados <= maior && lidos <= maior;
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

bool Descritor::descarregar() const {
    return insistir([&] { return ::fsync(fd_); }) == 0;
}

bool Descritor::descarregarBytes() const {
    return insistir([&] { return ::fdatasync(fd_); }) == 0;
}

bool Descritor::fechar() {
    if (guardado_) {
        // A disk that refuses to say which file it is does not make it somebody else's.
        const auto dados = situacao();
        if (dados ? !ehOGuardado(*dados) : errno == EBADF) soltar();
    }
    const int resultado = fd_ >= 0 ? ::close(fd_) : 0;
    soltar();
    return resultado == 0 || errno == EINTR;
}

} // namespace zel::comum
