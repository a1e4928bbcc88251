// SPDX-License-Identifier: MIT
// Sending to printers: those that work, and those that are missing, refuse, stall or go away.
#include "Saida.h"
#include "Conexao.h"
#include "apoio/PastaTemporaria.h"

#include <arpa/inet.h>
#include <array>
#include <atomic>
#include <csignal>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <pty.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <termios.h>
#include <thread>

using namespace zel::cupom;
using namespace std::chrono_literals;

namespace {

constexpr std::chrono::milliseconds kBastante = 20s, kPouco = 200ms;

// All byte values, so that a line that changes some of them is seen.
std::string bytesDeTeste(std::size_t tamanho) {
    std::string bytes(tamanho, '\0');
    for (std::size_t i = 0; i < tamanho; ++i)
        bytes[i] = static_cast<char>(i * 7 % 256);
    return bytes;
}

// What comes until the other side ends or there are so many bytes.
std::string lerAte(int fd, std::size_t quantos) {
    std::string lido;
    std::array<char, 65536> parte{};
    while (lido.size() < quantos) {
        const ssize_t n = insistir([&] { return ::read(fd, parte.data(), parte.size()); });
        if (n <= 0) break;
        lido.append(parte.data(), static_cast<std::size_t>(n));
    }
    return lido;
}

std::string lerAteOFim(int fd) {
    return lerAte(fd, std::string::npos);
}

Enviado enviarEMedir(const std::string &destino, std::string_view bytes,
                     std::chrono::milliseconds prazo) {
    const auto antes = std::chrono::steady_clock::now();
    const Enviado enviado = enviar(destino, bytes, prazo);
    // Far beyond it only when it hangs.
    EXPECT_LT(std::chrono::steady_clock::now() - antes, prazo + 10s) << destino;
    return enviado;
}

void conferir(const Enviado &enviado, Envio resultado, std::size_t bytes) {
    EXPECT_EQ(static_cast<int>(enviado.resultado), static_cast<int>(resultado));
    EXPECT_EQ(enviado.bytes, bytes);
}

// A port of this machine where a printer may listen; what it receives is kept in small buffers.
class Servidor {
public:
    explicit Servidor(int familia = AF_INET) : socket_(::socket(familia, SOCK_STREAM, 0)) {
        const int pequeno = 4096;
        ::setsockopt(socket_.fd(), SOL_SOCKET, SO_RCVBUF, &pequeno, sizeof pequeno);
        sockaddr_in6 v6{};
        v6.sin6_family = AF_INET6;
        v6.sin6_addr = in6addr_loopback;
        sockaddr_in v4{};
        v4.sin_family = AF_INET;
        v4.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        auto *endereco = familia == AF_INET ? reinterpret_cast<sockaddr *>(&v4)
                                            : reinterpret_cast<sockaddr *>(&v6);
        socklen_t tamanho = familia == AF_INET ? sizeof v4 : sizeof v6;
        if (::bind(socket_.fd(), endereco, tamanho) != 0)
            throw std::runtime_error("no loopback address");
        ::getsockname(socket_.fd(), endereco, &tamanho);
        porta_ = std::to_string(ntohs(familia == AF_INET ? v4.sin_port : v6.sin6_port));
    }
    void ouvir() const { ::listen(socket_.fd(), 1); }
    Descritor aceitar() const { return Descritor(::accept(socket_.fd(), nullptr, nullptr)); }
    const std::string &porta() const { return porta_; }

private:
    Descritor socket_;
    std::string porta_;
};

struct Pty {
    Pty() {
        int mestre = -1, escravo = -1;
        std::array<char, 128> caminho{};
        if (::openpty(&mestre, &escravo, caminho.data(), nullptr, nullptr) != 0)
            throw std::runtime_error("openpty");
        impressora = Descritor(mestre);
        nome = caminho.data();
        aberto = Descritor(escravo);
    }
    Descritor impressora, aberto;
    std::string nome;
};

void interromperEmSilencio(int) {}

} // namespace

TEST(Saida, addresses) {
    const struct {
        std::string_view texto, host, porta;
    } casos[] = {
        {"10.0.0.5", "10.0.0.5", "9100"},
        {"caixa1:9101", "caixa1", "9101"},
        {"[fe80::1%lo]:1", "fe80::1%lo", "1"},
        {"[::1]", "::1", "9100"},
        {"", "", ""},
        {":9100", "", ""},
        {"a:", "", ""},
        {"a:0", "", ""},
        {"a:65536", "", ""},
        {"a:9100x", "", ""},
        {"[::1", "", ""},
        {"[::1]9100", "", ""},
        {"::1", "", ""},
        {"[]:1", "", ""},
    };
    for (const auto &[texto, host, porta] : casos) {
        const auto endereco = lerEndereco(texto);
        ASSERT_EQ(endereco.has_value(), !host.empty()) << texto;
        if (!endereco) continue;
        EXPECT_EQ(endereco->host, host);
        EXPECT_EQ(endereco->porta, porta);
    }
    EXPECT_FALSE(lerEndereco(std::string(256, 'a')));
    for (const char *destino : {"tcp://", "tcp://a:b", "http://10.0.0.5", "lpr://fila"})
        conferir(enviar(destino, "x", kPouco), Envio::kDestinoInvalido, 0);
}

TEST(Saida, network_printer_receives_every_byte) {
    const std::string bytes = bytesDeTeste(300'000);
    for (const auto &[familia, host] :
         {std::pair(AF_INET, "127.0.0.1"), std::pair(AF_INET6, "[::1]"),
          std::pair(AF_INET, "localhost")}) {
        const Servidor servidor(familia);
        servidor.ouvir();
        std::string recebido;
        std::thread impressora([&] {
            const Descritor conexao = servidor.aceitar();
            // Its status, which nobody wants, must not make the end a reset, at which some
            // printers drop what they have not printed yet.
            EXPECT_EQ(::write(conexao.fd(), "\x14\0\0\x0F", 4), 4);
            recebido = lerAte(conexao.fd(), bytes.size());
            char nada = 0;
            EXPECT_EQ(::read(conexao.fd(), &nada, 1), 0) << "ended by a reset";
        });
        const std::string destino = std::string("tcp://") + host + ":" + servidor.porta();
        conferir(enviarEMedir(destino, bytes, kBastante), Envio::kFeito, bytes.size());
        impressora.join();
        EXPECT_TRUE(recebido == bytes) << host;
    }
}

TEST(Saida, network_printer_that_stops_reading_is_given_up) {
    const Servidor servidor;
    servidor.ouvir();
    const std::string bytes = bytesDeTeste(20'000'000);
    const std::string destino = "tcp://127.0.0.1:" + servidor.porta();
    std::atomic<bool> parar = false;
    std::size_t recebidos = 0;
    std::thread impressora([&] {
        const Descritor conexao = servidor.aceitar();
        while (!parar)
            std::this_thread::sleep_for(1ms);
        recebidos = lerAteOFim(conexao.fd()).size();
    });
    const Enviado enviado = enviarEMedir(destino, bytes, kPouco);
    parar = true;
    impressora.join();
    EXPECT_EQ(static_cast<int>(enviado.resultado), static_cast<int>(Envio::kTempoEsgotado));
    EXPECT_GT(enviado.bytes, 0U);
    // It counts what arrived, not what the system took.
    EXPECT_LE(enviado.bytes, recebidos);
    EXPECT_LT(enviado.bytes, 1'000'000U);
}

// A receipt is smaller than what the system takes for the other side.
TEST(Saida, network_printer_that_reads_nothing_has_not_printed_a_receipt) {
    const Servidor servidor;
    servidor.ouvir();
    const std::string destino = "tcp://127.0.0.1:" + servidor.porta();
    const Enviado enviado = enviarEMedir(destino, bytesDeTeste(200'000), kPouco);
    EXPECT_EQ(static_cast<int>(enviado.resultado), static_cast<int>(Envio::kTempoEsgotado));
    EXPECT_LT(enviado.bytes, 200'000U);
}

TEST(Saida, network_printer_that_goes_away_is_reported) {
    const Servidor servidor;
    servidor.ouvir();
    std::thread impressora([&] {
        const Descritor conexao = servidor.aceitar();
        std::array<char, 1000> parte{};
        EXPECT_GT(::read(conexao.fd(), parte.data(), parte.size()), 0);
    });
    const std::string destino = "tcp://127.0.0.1:" + servidor.porta();
    const Enviado enviado = enviarEMedir(destino, bytesDeTeste(20'000'000), kBastante);
    impressora.join();
    EXPECT_EQ(static_cast<int>(enviado.resultado), static_cast<int>(Envio::kInterrompido));
    EXPECT_LT(enviado.bytes, 20'000'000U);
}

TEST(Saida, nobody_listens_or_nobody_is_there) {
    const Servidor surdo;
    conferir(enviarEMedir("tcp://127.0.0.1:" + surdo.porta(), "x", kBastante), Envio::kRecusado, 0);
    // Connections that are not accepted: the queue of one that listens fills up.
    const Servidor cheio;
    cheio.ouvir();
    std::vector<Descritor> fila;
    for (int i = 0; i < 3; ++i)
        fila.push_back(conectar({"127.0.0.1", cheio.porta()}, Prazo(kPouco)).descritor);
    conferir(enviarEMedir("tcp://127.0.0.1:" + cheio.porta(), "x", kPouco), Envio::kTempoEsgotado,
             0);
    const Enviado semNome = enviarEMedir("tcp://nao-existe.invalid", "x", kPouco);
    EXPECT_TRUE(semNome.resultado == Envio::kAusente || semNome.resultado == Envio::kTempoEsgotado);
}

TEST(Saida, devices_that_are_missing_refuse_or_fail) {
    const PastaTemporaria pasta;
    ASSERT_EQ(::mkfifo((pasta / "cano").c_str(), 0600), 0);
    conferir(enviarEMedir("/dev/usb/nao-existe", "x", kPouco), Envio::kAusente, 0);
    conferir(enviarEMedir(pasta / "cano", "x", kPouco), Envio::kAusente, 0); // nobody reads it
    conferir(enviarEMedir("/dev/full", "x", kPouco), Envio::kInterrompido, 0);
    conferir(enviarEMedir("/dev/null", "abc", kPouco), Envio::kFeito, 3);
    for (const char *caminho : {"nao-existe/cupom.bin", ""})
        conferir(enviarEMedir(pasta / caminho, "x", kPouco), Envio::kArquivo, 0);
}

TEST(Saida, pipe_that_is_read_stalls_or_ends) {
    const PastaTemporaria pasta;
    const std::string cano = pasta / "cano", bytes = bytesDeTeste(300'000);
    ASSERT_EQ(::mkfifo(cano.c_str(), 0600), 0);
    // A process whose SIGPIPE kills it, as is usual.
    ASSERT_NE(std::signal(SIGPIPE, SIG_DFL), SIG_ERR);
    Descritor leitor(cano, O_RDONLY | O_NONBLOCK);
    const Enviado parado = enviarEMedir(cano, bytes, kPouco);
    EXPECT_EQ(static_cast<int>(parado.resultado), static_cast<int>(Envio::kTempoEsgotado));
    EXPECT_TRUE(lerAteOFim(leitor.fd()) == bytes.substr(0, parado.bytes));

    // It makes room and goes away.
    leitor.fechar();
    leitor = Descritor(cano, O_RDONLY | O_NONBLOCK);
    std::thread fim([&] {
        std::this_thread::sleep_for(50ms);
        std::array<char, 30'000> lidos{};
        EXPECT_GT(::read(leitor.fd(), lidos.data(), lidos.size()), 0);
        leitor.fechar();
    });
    const Enviado foiEmbora = enviarEMedir(cano, bytes, kBastante);
    fim.join();
    EXPECT_EQ(static_cast<int>(foiEmbora.resultado), static_cast<int>(Envio::kInterrompido));

    // Open in both directions it does not end.
    std::string lido;
    leitor = Descritor(cano, O_RDWR);
    std::thread impressora([&] { lido = lerAte(leitor.fd(), bytes.size()); });
    conferir(enviarEMedir(cano, bytes, kBastante), Envio::kFeito, bytes.size());
    impressora.join();
    EXPECT_TRUE(lido == bytes);
}

// A serial line would turn each "\n" into two bytes and echo the printer's answers back to it.
TEST(Saida, serial_printer_gets_the_bytes_as_they_are) {
    Pty pty;
    termios antes{};
    ASSERT_EQ(::tcgetattr(pty.aberto.fd(), &antes), 0);
    const std::string bytes = bytesDeTeste(100'000);
    std::string recebido;
    std::thread impressora([&] { recebido = lerAte(pty.impressora.fd(), bytes.size()); });
    conferir(enviarEMedir(pty.nome, bytes, kBastante), Envio::kFeito, bytes.size());
    impressora.join();
    EXPECT_TRUE(recebido == bytes);
    termios depois{};
    ASSERT_EQ(::tcgetattr(pty.aberto.fd(), &depois), 0);
    EXPECT_EQ(antes.c_oflag, depois.c_oflag);
    EXPECT_EQ(antes.c_lflag, depois.c_lflag);
}

TEST(Saida, serial_printer_that_stalls_is_given_up) {
    Pty pty;
    const Enviado parado = enviarEMedir(pty.nome, bytesDeTeste(1'000'000), kPouco);
    EXPECT_EQ(static_cast<int>(parado.resultado), static_cast<int>(Envio::kTempoEsgotado));
    EXPECT_GT(parado.bytes, 0U);
    EXPECT_LT(parado.bytes, 1'000'000U);
}

TEST(Saida, file_is_written_whole_and_none_is_made_among_the_devices) {
    const PastaTemporaria pasta;
    pasta.gravar("cupom.bin", "o que havia antes");
    const std::string bytes = bytesDeTeste(1000);
    for (const char *nome : {"cupom.bin", "novo.bin"}) {
        conferir(enviar(pasta / nome, bytes, kPouco), Envio::kFeito, bytes.size());
        EXPECT_TRUE(pasta.ler(nome) == bytes);
    }
}

// Signals that an application uses must not be taken for a failure of the printer.
TEST(Saida, signals_do_not_disturb) {
    Pty pty;
    struct sigaction acao {};
    acao.sa_handler = interromperEmSilencio; // without SA_RESTART
    struct sigaction antes {};
    ASSERT_EQ(::sigaction(SIGUSR1, &acao, &antes), 0);
    std::atomic<bool> fim = false;
    const pthread_t quem = ::pthread_self();
    std::thread sinais([&] {
        while (!fim) {
            ::pthread_kill(quem, SIGUSR1);
            std::this_thread::sleep_for(1ms);
        }
    });
    const Enviado parado = enviarEMedir(pty.nome, bytesDeTeste(1'000'000), kPouco);
    fim = true;
    sinais.join();
    ::sigaction(SIGUSR1, &antes, nullptr);
    EXPECT_EQ(static_cast<int>(parado.resultado), static_cast<int>(Envio::kTempoEsgotado));
}
