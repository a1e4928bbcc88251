// SPDX-License-Identifier: MIT
// The descriptor by which a host learns the reason of a refusal: what arrives there, and the files
// of the host that must stay as they are whatever number it names.
#include "apoio/Trecho.h"
#include "blackbox/Caixa.h"
#include "blackbox/Log.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

std::string conteudo(int fd) {
    std::string texto(8192, '\0');
    const ssize_t lidos = pread(fd, texto.data(), texto.size(), 0);
    texto.resize(lidos > 0 ? static_cast<std::size_t>(lidos) : 0);
    return texto;
}

// An open file; the variable names it for the libraries that are loaded while it lives.
struct Destino {
    explicit Destino(int aberto)
        : fd(aberto), numero("ZEL_LOG_DESCRITOR", std::to_string(fd).c_str()) {}
    ~Destino() { close(fd); }
    int fd;
    Ambiente numero;
};

int emMemoria(const char *nome = "zel_felbor") {
    return memfd_create(nome, MFD_CLOEXEC);
}

std::string linha(const std::string &texto) {
    return "[" + std::to_string(getpid()) +
           "] regAlterarValor_ZEL: -1 ZEL_RECUSADO: chave: não há chave "
           "de configuração \"" +
           texto + "\"";
}

TEST(LogNoDescritor, tem_o_motivo_da_ultima_recusa_e_o_log_tambem) {
    const Log log;
    for (const bool comLog : {true, false}) {
        SCOPED_TRACE(comLog);
        log.apontar(comLog ? log.caminho().c_str() : nullptr, nullptr);
        const Destino destino(emMemoria());
        const Caixa caixa;
        EXPECT_EQ(caixa->regAlterarValor_ZEL("primeira-e-mais-comprida", "1"), ZEL_RECUSADO);
        EXPECT_TRUE(conteudo(destino.fd).starts_with(linha("primeira-e-mais-comprida")));
        EXPECT_EQ(caixa->regAlterarValor_ZEL("nova", "1"), ZEL_RECUSADO);
        const std::string visto = conteudo(destino.fd);
        EXPECT_TRUE(visto.starts_with(linha("nova"))) << visto;
        EXPECT_EQ(visto.find('\n'), visto.size() - 1) << "more than one line: " << visto;
        EXPECT_EQ(caixa->rCFVerificarStatus_ZEL(), 0);
        EXPECT_EQ(conteudo(destino.fd), visto) << "an answer that is no refusal changed it";
    }
    EXPECT_EQ(log.linhas().size(), 2U) << "the user's own log";
}

// Files of the host: under a number that never was the library's, and under one that it had.
TEST(LogNoDescritor, nao_escreve_em_arquivo_do_hospedeiro) {
    const PastaTemporaria pasta;
    const std::string deles = pasta / "deles";
    const auto abrirDeles = [&] {
        std::ofstream(deles) << "dados";
        return open(deles.c_str(), O_RDWR | O_CLOEXEC);
    };
    for (const int fd : {abrirDeles(), emMemoria("outro"), emMemoria("zel_felbor2")}) {
        ASSERT_EQ(write(fd, "dados", 5), 5);
        const Destino destino(fd);
        const Caixa caixa;
        EXPECT_EQ(caixa->regAlterarValor_ZEL("x", "1"), ZEL_RECUSADO);
        EXPECT_EQ(conteudo(fd), "dados");
    }
    const Destino destino(emMemoria());
    const Caixa caixa;
    EXPECT_EQ(caixa->regAlterarValor_ZEL("x", "1"), ZEL_RECUSADO);
    EXPECT_NE(conteudo(destino.fd), "");
    close(destino.fd);
    EXPECT_EQ(caixa->regAlterarValor_ZEL("x", "1"), ZEL_RECUSADO);
    for (const int fd : {abrirDeles(), emMemoria()}) {
        ASSERT_EQ(dup2(fd, destino.fd), destino.fd);
        EXPECT_EQ(caixa->regAlterarValor_ZEL("x", "1"), ZEL_RECUSADO);
        EXPECT_EQ(conteudo(fd).find("regAlterarValor_ZEL"), std::string::npos);
        close(fd);
    }
}

// What is no number of a file in memory turns nothing on; a full pipe would make a call wait.
TEST(LogNoDescritor, que_nao_serve_nao_liga_nada) {
    int canos[2];
    ASSERT_EQ(pipe2(canos, O_CLOEXEC), 0);
    ASSERT_EQ(fcntl(canos[1], F_SETFL, O_NONBLOCK), 0);
    while (write(canos[1], "cheio", 5) > 0) {
    }
    ASSERT_EQ(fcntl(canos[1], F_SETFL, 0), 0);
    const std::string numero = std::to_string(canos[1]);
    for (const char *dado :
         {numero.c_str(), "", "-1", "3x", " 3", "99999999999999999999", "1000000"}) {
        SCOPED_TRACE(dado);
        const Ambiente variavel("ZEL_LOG_DESCRITOR", dado);
        const Caixa caixa;
        EXPECT_EQ(caixa->regAlterarValor_ZEL("x", "1"), ZEL_RECUSADO);
    }
    close(canos[0]);
    close(canos[1]);
}

// A process whose files may not grow gets no reason, and no signal that ends it.
TEST(LogNoDescritor, sem_lugar_nao_acaba_com_o_processo) {
    const Destino destino(emMemoria());
    const Caixa caixa;
    EXPECT_EQ(caixa->regAlterarValor_ZEL("x", "1"), ZEL_RECUSADO);
    rlimit antes{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &antes), 0);
    const rlimit nada{0, antes.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &nada), 0);
    EXPECT_EQ(caixa->regAlterarValor_ZEL("outra", "1"), ZEL_RECUSADO);
    setrlimit(RLIMIT_FSIZE, &antes);
    EXPECT_EQ(conteudo(destino.fd), "") << "the reason of an older call";
}

} // namespace
