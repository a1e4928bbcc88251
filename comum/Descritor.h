// SPDX-License-Identifier: MIT
// File descriptors that close themselves.
#pragma once

#include <cerrno>
#include <fcntl.h>
#include <string>
#include <unistd.h>
#include <utility>

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
    explicit Descritor(int fd = -1) : fd_(fd) {}
    Descritor(const std::string &caminho, int modo)
        : fd_(insistir([&] { return ::open(caminho.c_str(), modo | O_CLOEXEC, 0666); })) {}
    ~Descritor() { fechar(); }
    Descritor(Descritor &&outro) noexcept : fd_(std::exchange(outro.fd_, -1)) {}
    Descritor &operator=(Descritor &&outro) noexcept {
        std::swap(fd_, outro.fd_);
        return *this;
    }

    int fd() const { return fd_; }
    bool aberto() const { return fd_ >= 0; }
    bool fechar() {
        const int resultado = fd_ >= 0 ? ::close(fd_) : 0;
        fd_ = -1;
        return resultado == 0;
    }

private:
    int fd_;
};

} // namespace zel::comum
