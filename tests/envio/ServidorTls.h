// SPDX-License-Identifier: MIT
// A server of the tests on 127.0.0.1: TLS that asks for a client certificate, and then whatever a
// line or an authority can do to a request.
#pragma once

#include "Certificados.h"

#include "rede/SemSigpipe.h"

#include <arpa/inet.h>
#include <atomic>
#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <mutex>
#include <netinet/in.h>
#include <openssl/ssl.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace zel::envio::ensaio {

inline constexpr std::size_t kNunca = static_cast<std::size_t>(-1);

struct Papel {
    std::string resposta{};            // head and body, as they go out
    std::size_t cortarPedido = kNunca; // read so much of a request, then break
    std::size_t cortarResposta = kNunca;
    bool quebrar = false;         // end with a reset, else in good order
    int gotas = 0;                // milliseconds between two bytes of the answer
    int dormir = 0;               // milliseconds before it
    int recusar = 0;              // X509_V_ERR_... of the client's certificate
    int maior = TLS1_3_VERSION;   // of TLS
    const char *semTls = nullptr; // in the place of a handshake; "": nothing, but the line stays
    bool fechar = false;          // at once
    int respostas = 100;          // of a connection; the request after the last is not answered
};

using DonoTls = std::unique_ptr<SSL_CTX, Liberador<SSL_CTX_free>>;

class ServidorTls {
public:
    explicit ServidorTls(Papel papel, const char *nome = "localhost") : papel_(std::move(papel)) {
        const std::int64_t agora = std::time(nullptr);
        raiz_ = emitir({"Raiz", "", agora - kDia, agora + kDia, "critical,keyCertSign", true},
                       chave(kRaiz));
        meu_ = emitir({nome, "", agora - kDia, agora + kDia}, chave(kAutoridade), raiz_.get(),
                      chave(kRaiz));
        tls_.reset(SSL_CTX_new(TLS_server_method()));
        SSL_CTX_set_max_proto_version(tls_.get(), papel_.maior);
        SSL_CTX_set_security_level(tls_.get(), papel_.maior < TLS1_2_VERSION ? 0 : 1);
        SSL_CTX_use_certificate(tls_.get(), meu_.get());
        SSL_CTX_use_PrivateKey(tls_.get(), chave(kAutoridade));
        SSL_CTX_set_verify(tls_.get(), SSL_VERIFY_PEER | SSL_VERIFY_FAIL_IF_NO_PEER_CERT, nullptr);
        SSL_CTX_set_cert_verify_callback(tls_.get(), julgar, this);
        SSL_CTX_set_session_id_context(tls_.get(), reinterpret_cast<const unsigned char *>("z"), 1);
        escuta_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in lugar{};
        lugar.sin_family = AF_INET;
        lugar.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t tamanho = sizeof lugar;
        EXPECT_EQ(::bind(escuta_, reinterpret_cast<sockaddr *>(&lugar), tamanho), 0);
        ::getsockname(escuta_, reinterpret_cast<sockaddr *>(&lugar), &tamanho);
        ::listen(escuta_, 8);
        porta_ = ntohs(lugar.sin_port);
        fio_ = std::thread([this] { servir(); });
    }
    ~ServidorTls() {
        acabou_ = true;
        ::shutdown(escuta_, SHUT_RDWR);
        const int aberta = aberta_;
        if (aberta >= 0) ::shutdown(aberta, SHUT_RDWR);
        fio_.join();
        ::close(escuta_);
    }
    ServidorTls(const ServidorTls &) = delete;
    ServidorTls &operator=(const ServidorTls &) = delete;

    std::string endereco() const { return "https://localhost:" + std::to_string(porta_) + "/ws"; }
    std::string pem() const { return pemDe({raiz_.get()}); }
    int conexoes() const { return conexoes_; }
    // Waits until so many of them are closed.
    void esperarFechar(int quantas) const {
        for (int i = 0; i < 5000 && fechadas_ < quantas; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    int daCadeia() const { return daCadeia_; } // certificates that the client showed
    // What was read of all requests.
    std::string lido() const {
        const std::lock_guard tranca(mutex_);
        return lido_;
    }

private:
    static int julgar(X509_STORE_CTX *busca, void *este) {
        const int recusar = static_cast<ServidorTls *>(este)->papel_.recusar;
        static_cast<ServidorTls *>(este)->daCadeia_ =
            sk_X509_num(X509_STORE_CTX_get0_untrusted(busca));
        X509_STORE_CTX_set_error(busca, recusar);
        return recusar == X509_V_OK ? 1 : 0;
    }

    void servir() {
        const SemSigpipe calado;
        for (int fd = -1; !acabou_ && (fd = ::accept(escuta_, nullptr, nullptr)) >= 0;) {
            ++conexoes_;
            aberta_ = fd;
            const timeval espera{3, 0};
            ::setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &espera, sizeof espera);
            ::setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &espera, sizeof espera);
            atender(fd);
            aberta_ = -1;
            ::close(fd);
            ++fechadas_;
        }
    }

    void atender(int fd) {
        if (papel_.fechar) return;
        if (papel_.semTls != nullptr) {
            ::send(fd, papel_.semTls, std::char_traits<char>::length(papel_.semTls), MSG_NOSIGNAL);
            return escoar(fd);
        }
        const std::unique_ptr<SSL, Liberador<SSL_free>> ssl(SSL_new(tls_.get()));
        SSL_set_fd(ssl.get(), fd);
        if (SSL_accept(ssl.get()) != 1) {
            ::shutdown(fd, SHUT_WR); // the alert has to get there
            return escoar(fd);
        }
        for (int i = 0; ler(ssl.get()) && i < papel_.respostas; ++i)
            if (!responder(ssl.get())) break;
        const linger ja{1, 0};
        if (papel_.quebrar) ::setsockopt(fd, SOL_SOCKET, SO_LINGER, &ja, sizeof ja);
    }

    static void escoar(int fd) {
        char bytes[512];
        while (::recv(fd, bytes, sizeof bytes, 0) > 0) {
        }
    }

    // One request, to its end; false when it broke or was cut.
    bool ler(SSL *ssl) {
        std::string pedido;
        for (char bytes[4096];;) {
            if (pedido.size() >= papel_.cortarPedido) return false;
            const std::size_t quero = std::min(sizeof bytes, papel_.cortarPedido - pedido.size());
            const int n = SSL_read(ssl, bytes, static_cast<int>(quero));
            if (n <= 0) return false;
            pedido.append(bytes, static_cast<std::size_t>(n));
            const std::lock_guard tranca(mutex_);
            lido_.append(bytes, static_cast<std::size_t>(n));
            const std::size_t fim = pedido.find("\r\n\r\n"), marca = pedido.find("Length: ");
            if (fim != pedido.npos && marca != pedido.npos &&
                pedido.size() >= fim + 4 + std::stoul(pedido.substr(marca + 8)))
                return true;
        }
    }

    bool responder(SSL *ssl) const {
        std::this_thread::sleep_for(std::chrono::milliseconds(papel_.dormir));
        const std::string ida = papel_.resposta.substr(0, papel_.cortarResposta);
        const std::size_t passo = papel_.gotas > 0 ? 1 : 16384;
        for (std::size_t i = 0; i < ida.size() && !acabou_; i += passo) {
            if (papel_.gotas > 0)
                std::this_thread::sleep_for(std::chrono::milliseconds(papel_.gotas));
            const std::size_t n = std::min(passo, ida.size() - i);
            if (SSL_write(ssl, ida.data() + i, static_cast<int>(n)) <= 0) return false;
        }
        return papel_.cortarResposta == kNunca;
    }

    Papel papel_;
    DonoX509 raiz_, meu_;
    DonoTls tls_;
    int escuta_ = -1, porta_ = 0;
    std::atomic<int> aberta_ = -1, conexoes_ = 0, fechadas_ = 0, daCadeia_ = 0;
    std::atomic<bool> acabou_ = false;
    mutable std::mutex mutex_;
    std::string lido_;
    std::thread fio_;
};

} // namespace zel::envio::ensaio
