// SPDX-License-Identifier: MIT
// Sending to printers: those that work, and those that are missing, refuse, stall or go away.
#include "Saida.h"
#include "Conexao.h"
#include "apoio/PastaTemporaria.h"
#include "apoio/Porta.h"

#include <array>
#include <csignal>
#include <gtest/gtest.h>
#include <map>
#include <pty.h>
#include <sys/stat.h>
#include <termios.h>
#include <thread>

using namespace zel::cupom;
using zel::comum::insistir;
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
    EXPECT_EQ(enviado.resultado, resultado);
    EXPECT_EQ(enviado.bytes, bytes);
}

// All of them arrive where `impressora`, a thread's, reads.
template <class Impressora>
void esperarQueChegue(const std::string &destino, const std::string &bytes, Impressora impressora) {
    std::string recebido;
    std::thread outra([&] { recebido = impressora(); });
    conferir(enviarEMedir(destino, bytes, kBastante), Envio::kFeito, bytes.size());
    outra.join();
    EXPECT_TRUE(recebido == bytes) << destino;
}

// A printer stops taking bytes half-way.
void esperarQueDesista(const Enviado &parado, std::size_t bytes) {
    EXPECT_EQ(parado.resultado, Envio::kTempoEsgotado);
    EXPECT_GT(parado.bytes, 0U);
    EXPECT_LT(parado.bytes, bytes);
}

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

TEST(Saida, endereco_tem_host_e_porta) {
    const struct {
        std::string_view texto, host = {}, porta = {};
    } casos[] = {
        {"10.0.0.5", "10.0.0.5", "9100"},
        {"caixa1:9101", "caixa1", "9101"},
        {"[fe80::1%lo]:1", "fe80::1%lo", "1"},
        {"[::1]", "::1", "9100"},
        {""},
        {":9100"},
        {"a:"},
        {"a:0"},
        {"a:65536"},
        {"a:9100x"},
        {"[::1"},
        {"[::1]9100"},
        {"::1"},
        {"[]:1"},
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

TEST(Saida, impressora_da_rede_recebe_cada_byte) {
    const std::string bytes = bytesDeTeste(300'000);
    for (const auto &[familia, host] :
         {std::pair(AF_INET, "127.0.0.1"), {AF_INET6, "[::1]"}, {AF_INET, "localhost"}}) {
        const Porta porta(familia);
        porta.ouvir();
        esperarQueChegue(porta.destino(host), bytes, [&] {
            const Descritor conexao(porta.aceitar());
            // Its status, which nobody wants, must not make the end a reset, at which some
            // printers drop what they have not printed yet.
            EXPECT_EQ(::write(conexao.fd(), "\x14\0\0\x0F", 4), 4);
            std::string recebido = lerAte(conexao.fd(), bytes.size());
            char nada = 0;
            EXPECT_EQ(::read(conexao.fd(), &nada, 1), 0) << "ended by a reset";
            return recebido;
        });
    }
}

// A receipt is smaller than what the system takes for the other side.
TEST(Saida, impressora_da_rede_que_para_de_ler_nao_imprimiu) {
    for (const std::size_t tamanho : {200'000U, 20'000'000U}) {
        const Porta porta;
        porta.ouvir();
        std::size_t recebidos = 0;
        std::jthread impressora([&](const std::stop_token &fim) {
            const Descritor conexao(porta.aceitar());
            while (!fim.stop_requested())
                std::this_thread::sleep_for(1ms);
            recebidos = lerAteOFim(conexao.fd()).size();
        });
        const Enviado enviado = enviarEMedir(porta.destino(), bytesDeTeste(tamanho), kPouco);
        impressora.request_stop();
        impressora.join();
        esperarQueDesista(enviado, std::min<std::size_t>(tamanho, 1'000'000));
        // It counts what arrived, not what the system took.
        EXPECT_LE(enviado.bytes, recebidos);
    }
}

TEST(Saida, impressora_da_rede_que_vai_embora_interrompe) {
    const Porta porta;
    porta.ouvir();
    std::thread impressora([&] {
        const Descritor conexao(porta.aceitar());
        std::array<char, 1000> parte{};
        EXPECT_GT(::read(conexao.fd(), parte.data(), parte.size()), 0);
    });
    const Enviado enviado = enviarEMedir(porta.destino(), bytesDeTeste(20'000'000), kBastante);
    impressora.join();
    EXPECT_EQ(enviado.resultado, Envio::kInterrompido);
    EXPECT_LT(enviado.bytes, 20'000'000U);
}

TEST(Saida, ninguem_ouve_ou_ninguem_esta_la) {
    const Porta surda, cheia;
    conferir(enviarEMedir(surda.destino(), "x", kBastante), Envio::kRecusado, 0);
    // Connections that are not accepted: the queue of one that listens fills up.
    cheia.ouvir();
    std::vector<Descritor> fila;
    for (int i = 0; i < 3; ++i)
        fila.push_back(conectar({"127.0.0.1", cheia.numero()}, Prazo(kPouco)).descritor);
    conferir(enviarEMedir(cheia.destino(), "x", kPouco), Envio::kTempoEsgotado, 0);
    const Enviado semNome = enviarEMedir("tcp://nao-existe.invalid", "x", kPouco);
    EXPECT_TRUE(semNome.resultado == Envio::kAusente || semNome.resultado == Envio::kTempoEsgotado);
}

TEST(Saida, dispositivo_falta_recusa_ou_falha) {
    const PastaTemporaria pasta;
    ASSERT_EQ(::mkfifo((pasta / "cano").c_str(), 0600), 0);
    conferir(enviarEMedir("/dev/usb/nao-existe", "x", kPouco), Envio::kAusente, 0);
    conferir(enviarEMedir(pasta / "cano", "x", kPouco), Envio::kAusente, 0); // nobody reads it
    conferir(enviarEMedir("/dev/full", "x", kPouco), Envio::kInterrompido, 0);
    conferir(enviarEMedir("/dev/null", "abc", kPouco), Envio::kFeito, 3);
    for (const char *caminho : {"nao-existe/cupom.bin", ""})
        conferir(enviarEMedir(pasta / caminho, "x", kPouco), Envio::kArquivo, 0);
}

TEST(Saida, cano_e_lido_para_ou_acaba) {
    const PastaTemporaria pasta;
    const std::string cano = pasta / "cano", bytes = bytesDeTeste(300'000);
    ASSERT_EQ(::mkfifo(cano.c_str(), 0600), 0);
    // A process whose SIGPIPE kills it, as is usual.
    ASSERT_NE(std::signal(SIGPIPE, SIG_DFL), SIG_ERR);
    Descritor leitor(cano, O_RDONLY | O_NONBLOCK);
    const Enviado parado = enviarEMedir(cano, bytes, kPouco);
    EXPECT_EQ(parado.resultado, Envio::kTempoEsgotado);
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
    EXPECT_EQ(enviarEMedir(cano, bytes, kBastante).resultado, Envio::kInterrompido);
    fim.join();

    // Open in both directions it does not end.
    leitor = Descritor(cano, O_RDWR);
    esperarQueChegue(cano, bytes, [&] { return lerAte(leitor.fd(), bytes.size()); });
}

// A serial line would turn each "\n" into two bytes and echo the printer's answers back to it.
TEST(Saida, impressora_serial_recebe_os_bytes_como_sao) {
    Pty pty;
    termios antes{}, depois{};
    ASSERT_EQ(::tcgetattr(pty.aberto.fd(), &antes), 0);
    const std::string bytes = bytesDeTeste(100'000);
    esperarQueChegue(pty.nome, bytes, [&] { return lerAte(pty.impressora.fd(), bytes.size()); });
    ASSERT_EQ(::tcgetattr(pty.aberto.fd(), &depois), 0);
    EXPECT_EQ(antes.c_oflag, depois.c_oflag);
    EXPECT_EQ(antes.c_lflag, depois.c_lflag);
}

// Signals that an application uses must not be taken for a failure of the printer.
TEST(Saida, impressora_serial_parada_se_deixa_com_ou_sem_sinais) {
    Pty pty;
    esperarQueDesista(enviarEMedir(pty.nome, bytesDeTeste(1'000'000), kPouco), 1'000'000);
    Pty outra;
    struct sigaction acao {
    }, antes{};
    acao.sa_handler = interromperEmSilencio; // without SA_RESTART
    ASSERT_EQ(::sigaction(SIGUSR1, &acao, &antes), 0);
    std::jthread sinais([quem = ::pthread_self()](const std::stop_token &fim) {
        while (!fim.stop_requested()) {
            ::pthread_kill(quem, SIGUSR1);
            std::this_thread::sleep_for(1ms);
        }
    });
    const Enviado parado = enviarEMedir(outra.nome, bytesDeTeste(1'000'000), kPouco);
    sinais.request_stop();
    sinais.join();
    ::sigaction(SIGUSR1, &antes, nullptr);
    esperarQueDesista(parado, 1'000'000);
}

namespace {

// A printer that answers questions for its state and keeps the rest of what it gets.
struct ImpressoraQueResponde {
    std::map<std::string, std::string> respostas = {}; // by question
    std::size_t ateQuando = std::string::npos;         // bytes; then its paper is at its end
    std::string recebidos = {};

    void atender(int fd, std::size_t quantos) {
        std::array<char, 4096> parte{};
        while (recebidos.size() < quantos) {
            const ssize_t n = insistir([&] { return ::read(fd, parte.data(), parte.size()); });
            if (n <= 0) break;
            recebidos.append(parte.data(), static_cast<std::size_t>(n));
            for (const auto &[pergunta, resposta] : respostas) {
                if (!recebidos.ends_with(pergunta)) continue;
                recebidos.resize(recebidos.size() - pergunta.size());
                const std::string dita = recebidos.size() < ateQuando ? resposta : "\x72";
                EXPECT_GT(::write(fd, dita.data(), dita.size()), 0);
                break;
            }
        }
    }
};

constexpr auto kPapel = "\x10\x04\x04", kTampa = "\x10\x04\x02", kLinhaDela = "\x10\x04\x01",
               kStarPergunta = "\x1B\x06\x01";

std::string star(char situacao, char papel) {
    return {'\x23', '\x06', situacao, 0, 0, papel, 0, 0, 0};
}

} // namespace

// What it says before the first byte keeps all of them back; after the last one it is only told.
TEST(Saida, impressora_diz_o_seu_estado) {
    const std::map<std::string, std::string> boa{
        {kPapel, "\x12"}, {kTampa, "\x12"}, {kLinhaDela, "\x16"}};
    const auto com = [&](const char *pergunta, const std::string &resposta) {
        auto respostas = boa;
        respostas[pergunta] = resposta;
        return respostas;
    };
    const struct {
        std::size_t familia;
        std::map<std::string, std::string> respostas;
        Estado estado;
    } casos[] = {
        {0, {}, Estado::kNaoDisse},
        {0, boa, Estado::kPronta},
        // A report that nobody asked for, before the answer.
        {0, com(kPapel, std::string("\x14\0\0\x0F\x12", 5)), Estado::kPronta},
        {0, com(kPapel, "\x1E"), Estado::kPronta}, // paper comes to its end
        {0, com(kPapel, "\x72"), Estado::kSemPapel},
        {0, com(kTampa, "\x16"), Estado::kTampaAberta},
        {0, com(kLinhaDela, "\x1A"), Estado::kForaDeLinha},
        {0, com(kLinhaDela, std::string("\0\0", 2)), Estado::kNaoDisse}, // no answer of the family
        {1, {{kStarPergunta, star(0, 0)}}, Estado::kPronta},
        {1, {{kStarPergunta, star(0x28, 0x0C)}}, Estado::kSemPapel},
        {1, {{kStarPergunta, star(0x28, 0)}}, Estado::kTampaAberta},
        {1, {{kStarPergunta, star(0x08, 0)}}, Estado::kForaDeLinha},
    };
    const std::string bytes = bytesDeTeste(3000);
    for (const auto &caso : casos) {
        SCOPED_TRACE(static_cast<int>(&caso - casos));
        const FamiliaDeEstado &familia = kFamiliasDeEstado[caso.familia];
        const bool imprime = caso.estado == Estado::kPronta || caso.estado == Estado::kNaoDisse;
        ImpressoraQueResponde daRede{caso.respostas}, serial{caso.respostas};
        const Porta porta;
        porta.ouvir();
        std::thread rede([&] {
            const Descritor conexao(porta.aceitar());
            daRede.atender(conexao.fd(), std::string::npos);
        });
        Pty pty;
        std::thread linha([&] { serial.atender(pty.impressora.fd(), bytes.size()); });
        for (const std::string &destino : {porta.destino(), pty.nome}) {
            const Enviado enviado = enviar(destino, bytes, kBastante, &familia);
            conferir(enviado, imprime ? Envio::kFeito : Envio::kParado, imprime ? bytes.size() : 0);
            EXPECT_EQ(enviado.estado, caso.estado) << destino;
        }
        rede.join();
        pty.aberto.fechar();
        linha.join();
        // Questions without an answer are received as the rest is.
        EXPECT_TRUE(daRede.recebidos.ends_with(imprime ? bytes : "")) << daRede.recebidos.size();
    }
}

// The paper ends while the receipt is printed: it was sent, and is not called printed.
TEST(Saida, impressora_que_para_depois_o_diz) {
    const Porta porta;
    porta.ouvir();
    const std::string bytes = bytesDeTeste(3000);
    std::thread impressora([&] {
        const Descritor conexao(porta.aceitar());
        ImpressoraQueResponde ela{{{kPapel, "\x12"}, {kTampa, "\x12"}, {kLinhaDela, "\x12"}},
                                  bytes.size()};
        ela.atender(conexao.fd(), std::string::npos);
    });
    const Enviado enviado = enviar(porta.destino(), bytes, kBastante, &kFamiliasDeEstado[0]);
    impressora.join();
    conferir(enviado, Envio::kParado, bytes.size());
    EXPECT_EQ(enviado.estado, Estado::kSemPapel);
}

// Its silence costs a part of the time; a device that answers anything is no printer that answers.
TEST(Saida, estado_que_nao_se_sabe_nao_prende) {
    const auto antes = std::chrono::steady_clock::now();
    for (const char *destino : {"/dev/null", "/dev/full"})
        EXPECT_EQ(enviar(destino, "x", kBastante, &kFamiliasDeEstado[0]).estado, Estado::kNaoDisse);
    EXPECT_LT(std::chrono::steady_clock::now() - antes, 10s);
}
