// SPDX-License-Identifier: MIT
#include "Saida.h"

#include "Conexao.h"
#include "comum/Arquivo.h"

#include <csignal>
#include <linux/sockios.h>
#include <optional>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <termios.h>
#include <utility>

namespace zel::cupom {

namespace {

// Keeps SIGPIPE from the process while this thread writes into something that nobody reads any
// more. A signal that was pending before stays pending.
class SemSigpipe {
public:
    SemSigpipe() {
        ::sigemptyset(&sigpipe_);
        ::sigaddset(&sigpipe_, SIGPIPE);
        sigset_t pendentes;
        ::sigpending(&pendentes);
        jaPendente_ = ::sigismember(&pendentes, SIGPIPE) == 1;
        ::pthread_sigmask(SIG_BLOCK, &sigpipe_, &antes_);
    }
    ~SemSigpipe() {
        const int erro = errno;
        const timespec nada{0, 0};
        if (!jaPendente_)
            comum::insistir([&] { return ::sigtimedwait(&sigpipe_, nullptr, &nada); });
        ::pthread_sigmask(SIG_SETMASK, &antes_, nullptr);
        errno = erro;
    }
    SemSigpipe(const SemSigpipe &) = delete;
    SemSigpipe &operator=(const SemSigpipe &) = delete;

private:
    sigset_t sigpipe_{}, antes_{};
    bool jaPendente_ = false;
};

// A serial line takes the bytes as they are, and echoes none of the printer's answers, as long as
// this lives; its speed and handshake are the system's settings.
class LinhaSerial {
public:
    explicit LinhaSerial(int fd) : fd_(fd), aberta_(::tcgetattr(fd, &antes_) == 0) {
        if (!aberta_) return;
        termios cru = antes_;
        cru.c_oflag &= ~static_cast<tcflag_t>(OPOST);
        cru.c_lflag &= ~static_cast<tcflag_t>(ECHO | ICANON | ISIG);
        ::tcsetattr(fd_, TCSANOW, &cru);
    }
    ~LinhaSerial() {
        if (aberta_) ::tcsetattr(fd_, TCSANOW, &antes_);
    }
    LinhaSerial(const LinhaSerial &) = delete;
    LinhaSerial &operator=(const LinhaSerial &) = delete;

    bool aberta() const { return aberta_; }
    // Closing would wait for a printer that does not take what the system holds.
    void abandonar() const { ::tcflush(fd_, TCOFLUSH); }

private:
    int fd_;
    termios antes_{};
    bool aberta_;
};

// Bytes that the system still holds for the other side; 0 where it does not report them.
std::size_t porSair(int fd, unsigned long pergunta) {
    int bytes = 0;
    return ::ioctl(fd, pergunta, &bytes) == 0 && bytes > 0 ? static_cast<std::size_t>(bytes) : 0;
}

bool falhou(short eventos) {
    return (eventos & (POLLERR | POLLHUP | POLLNVAL)) != 0;
}

// What a printer answers is of no use here; unread, it would make the closing a reset, which may
// take the last bytes with it.
void descartarRespostas(int fd) {
    char respostas[512];
    while (comum::insistir([&] { return ::recv(fd, respostas, sizeof respostas, MSG_DONTWAIT); }) >
           0)
        continue;
}

// Writes as the device takes it.
Envio escrever(int fd, std::string_view bytes, const Prazo &prazo, std::size_t &escritos) {
    while (escritos < bytes.size()) {
        if (prazo.acabou()) return Envio::kTempoEsgotado;
        const std::string_view resto = bytes.substr(escritos);
        const ssize_t n = comum::insistir([&] { return ::write(fd, resto.data(), resto.size()); });
        if (n > 0) {
            escritos += static_cast<std::size_t>(n);
            continue;
        }
        if (n < 0 && errno != EAGAIN) return Envio::kInterrompido;
        // Where there is room, the next attempt reports what failed.
        const short eventos = esperar(fd, POLLOUT, prazo);
        if (falhou(eventos) && (eventos & POLLOUT) == 0) return Envio::kInterrompido;
    }
    return Envio::kFeito;
}

// Waits until the other side has what the system holds, so that "done" says so and closing loses
// nothing.
Envio esvaziar(int fd, unsigned long pergunta, const Prazo &prazo) {
    while (porSair(fd, pergunta) > 0) {
        if (falhou(esperar(fd, 0, Prazo(std::chrono::milliseconds(0)))))
            return Envio::kInterrompido;
        if (!pausar(prazo)) return Envio::kTempoEsgotado;
    }
    return Envio::kFeito;
}

// The state before and after the bytes, which `mandar` sends.
template <class Mandar>
Enviado comEstado(int fd, const FamiliaDeEstado *familia, const Prazo &prazo, Mandar mandar) {
    const auto impede = [](Estado e) { return e != Estado::kNaoDisse && e != Estado::kPronta; };
    const auto perguntar = [&] {
        return familia != nullptr ? perguntarEstado(fd, *familia, prazo) : Estado::kNaoDisse;
    };
    const Estado antes = perguntar();
    if (impede(antes)) return {Envio::kParado, 0, antes};
    Enviado enviado = mandar();
    enviado.estado = antes;
    if (enviado.resultado != Envio::kFeito || antes == Estado::kNaoDisse) return enviado;
    if (const Estado depois = perguntar(); depois != Estado::kNaoDisse) enviado.estado = depois;
    if (impede(enviado.estado)) enviado.resultado = Envio::kParado;
    return enviado;
}

Enviado enviarPorTcp(std::string_view destino, std::string_view bytes, const Prazo &prazo,
                     const FamiliaDeEstado *familia) {
    const std::optional<EnderecoTcp> endereco = lerEndereco(destino);
    if (!endereco) return {Envio::kDestinoInvalido};
    const Conexao conexao = conectar(*endereco, prazo);
    if (conexao.resultado != Envio::kFeito) return {conexao.resultado};
    const int fd = conexao.descritor.fd();
    const Enviado enviado = comEstado(fd, familia, prazo, [&] {
        Enviado mandado;
        mandado.resultado = escrever(fd, bytes, prazo, mandado.bytes);
        if (mandado.resultado == Envio::kFeito) mandado.resultado = esvaziar(fd, SIOCOUTQ, prazo);
        mandado.bytes -= std::min(mandado.bytes, porSair(fd, SIOCOUTQ));
        return mandado;
    });
    descartarRespostas(fd);
    return enviado;
}

Envio esvaziarDispositivo(int fd, bool serial, const Prazo &prazo) {
    if (serial) return esvaziar(fd, TIOCOUTQ, prazo);
    // A USB printer is ready for more when it has taken the last bytes; closed before, it may lose
    // them.
    const short eventos = esperar(fd, POLLOUT, prazo);
    return eventos == 0      ? Envio::kTempoEsgotado
           : falhou(eventos) ? Envio::kInterrompido
                             : Envio::kFeito;
}

// For reading too, where its answers are wanted and it may be read.
Descritor abrirDispositivo(const std::string &caminho, bool leitura) {
    constexpr int kModo = O_NONBLOCK | O_NOCTTY;
    Descritor dispositivo;
    if (leitura) dispositivo = Descritor(caminho, O_RDWR | kModo);
    return dispositivo.aberto() ? std::move(dispositivo) : Descritor(caminho, O_WRONLY | kModo);
}

Enviado enviarAoDispositivo(const std::string &caminho, std::string_view bytes, bool fila,
                            const Prazo &prazo, const FamiliaDeEstado *familia) {
    const Descritor dispositivo = abrirDispositivo(caminho, familia != nullptr && !fila);
    if (!dispositivo.aberto()) {
        const bool ausente = errno == ENXIO || errno == ENODEV || errno == ENOENT;
        return {ausente ? Envio::kAusente : Envio::kRecusado};
    }
    const int fd = dispositivo.fd();
    const LinhaSerial linha(fd);
    const auto mandar = [&] {
        Enviado enviado;
        enviado.resultado = escrever(fd, bytes, prazo, enviado.bytes);
        if (enviado.resultado == Envio::kFeito && !fila)
            enviado.resultado = esvaziarDispositivo(fd, linha.aberta(), prazo);
        if (linha.aberta() && enviado.resultado != Envio::kFeito) {
            enviado.bytes -= std::min(enviado.bytes, porSair(fd, TIOCOUTQ));
            linha.abandonar();
        }
        return enviado;
    };
    return comEstado(fd, fila ? nullptr : familia, prazo, mandar);
}

// Where a file in the place of a printer that is switched off would only hide that it is.
bool entreDispositivos(std::string_view caminho) {
    return caminho.starts_with("/dev/") && !caminho.starts_with("/dev/shm/");
}

Enviado enviarAoCaminho(const std::string &caminho, std::string_view bytes, const Prazo &prazo,
                        const FamiliaDeEstado *familia) {
    struct stat dados {};
    const bool existe = ::stat(caminho.c_str(), &dados) == 0;
    if (existe && (S_ISCHR(dados.st_mode) || S_ISFIFO(dados.st_mode)))
        return enviarAoDispositivo(caminho, bytes, S_ISFIFO(dados.st_mode), prazo, familia);
    if (!existe && entreDispositivos(caminho)) return {Envio::kAusente};
    if (!comum::substituirArquivo(caminho, bytes)) return {Envio::kArquivo};
    return {Envio::kFeito, bytes.size()};
}

} // namespace

Enviado enviar(const std::string &destino, std::string_view bytes, std::chrono::milliseconds prazo,
               const FamiliaDeEstado *familia) {
    const SemSigpipe semSigpipe;
    const Prazo ate(prazo);
    constexpr std::string_view tcp = "tcp://";
    if (destino.starts_with(tcp))
        return enviarPorTcp(std::string_view(destino).substr(tcp.size()), bytes, ate, familia);
    if (destino.find("://") != destino.npos) return {Envio::kDestinoInvalido};
    return enviarAoCaminho(destino, bytes, ate, familia);
}

} // namespace zel::cupom
