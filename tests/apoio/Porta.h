// SPDX-License-Identifier: MIT
// A port of this machine where a printer may listen; what it receives is kept in small buffers.
#pragma once

#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

class Porta {
public:
    explicit Porta(int familia = AF_INET) : fd_(::socket(familia, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        const int pouco = 1;
        ::setsockopt(fd_, SOL_SOCKET, SO_RCVBUF, &pouco, sizeof pouco);
        sockaddr_storage onde{};
        onde.ss_family = static_cast<sa_family_t>(familia);
        auto *endereco = reinterpret_cast<sockaddr *>(&onde);
        auto *v4 = reinterpret_cast<sockaddr_in *>(&onde);
        auto *v6 = reinterpret_cast<sockaddr_in6 *>(&onde);
        if (familia == AF_INET6)
            v6->sin6_addr = in6addr_loopback;
        else
            v4->sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t tamanho = familia == AF_INET6 ? sizeof *v6 : sizeof *v4;
        if (::bind(fd_, endereco, tamanho) != 0 || ::getsockname(fd_, endereco, &tamanho) != 0)
            throw std::runtime_error("no loopback address");
        numero_ = std::to_string(ntohs(v4->sin_port)); // in either family at the same place
    }
    ~Porta() { ::close(fd_); }
    Porta(const Porta &) = delete;
    Porta &operator=(const Porta &) = delete;

    void ouvir() const { ::listen(fd_, 1); }
    // The connection, which the caller closes; -1 when nobody came within a minute.
    int aceitar() const {
        constexpr int kMinuto = 60000;
        pollfd vez{fd_, POLLIN, 0};
        return ::poll(&vez, 1, kMinuto) == 1 ? ::accept(fd_, nullptr, nullptr) : -1;
    }
    const std::string &numero() const { return numero_; }
    std::string destino(const std::string &host = "127.0.0.1") const {
        return "tcp://" + host + ":" + numero_;
    }

private:
    int fd_;
    std::string numero_;
};
