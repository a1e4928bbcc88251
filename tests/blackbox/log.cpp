// SPDX-License-Identifier: MIT
// The log as a file among others: what it never shows, how long it gets, who else writes to it, and
// that no call fails for it.
#include "blackbox/Log.h"
#include "apoio/Ambiente.h"
#include "apoio/Chamadas.h"
#include "apoio/Filho.h"
#include "apoio/Passos.h"
#include "apoio/Trecho.h"
#include "blackbox/Caixa.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <iterator>
#include <regex>

namespace fs = std::filesystem;

namespace {

constexpr std::uintmax_t kMaximo = 10'000'000;

// A refusal that shows its argument.
int recusarChave(const Caixa &c, const char *chave) {
    return c->regAlterarValor_ZEL(chave, "1");
}

void encher(const std::string &caminho, std::uintmax_t tamanho) {
    std::ofstream(caminho) << std::string(tamanho - 1, 'x') << '\n';
}

// What a call must not bring into the log, and what is there instead.
struct Segredo {
    std::string_view oculto, visivel;
    int estado; // in which the till refuses
    Pedido pedido;
};

Pedido abrirCom(const char *nome, const char *logradouro, const char *numero, const char *bairro,
                const char *uf) {
    return Pedido("aCFAbrir_ZEL", "12345678909", nome, logradouro, numero, bairro, "2611606",
                  "Recife", uf, "50030230");
}

const Segredo kSegredos[] = {
    {"12345678909", "\"123***\"", 0, Pedido("regAlterarValor_ZEL", "123.456.789-09", "1")},
    {"456.789", "\"123***\"", 0, Pedido("regAlterarValor_ZEL", "123.456.789-09", "1")},
    {"11222333000181", "\"112***\"", 0, Pedido("regAlterarValor_ZEL", "11222333000181", "1")},
    {"1234567890", "CPF: \"123***\"", 2,
     Pedido("aCFIdentificarConsumidor_ZEL", "1234567890", "Maria")},
    {"\"Z\"", "xNome (nome): \"Z***\"", 2,
     Pedido("aCFIdentificarConsumidor_ZEL", "12345678909", "Z")},
    {"Rua das Flores", "bairro: vazio", 0, abrirCom("Zulmira", "Rua das Flores", "10", "", "PE")},
    {"Apartamento", "numero: \"A***\"", 0,
     abrirCom("Zulmira", "Rua das Flores",
              "Apartamento de numero muito comprido, que nao cabe nos sessenta caracteres",
              "Centro", "PE")},
    {"Zulmira", "uf: \"Z***\"", 0, abrirCom("PE", "Rua A", "10", "Centro", "Zulmira Souza")},
    {"segredo-do-csc", "TokenSefaz: o valor", 0,
     Pedido("regAlterarValor_ZEL", "CONFIGURACAO\\TokenSefaz", "segredo-do-csc</x>")},
    {"chave-do-arquivo", "/nao/existe", 0,
     Pedido("eDescriptografarArquivo_ZEL", "/nao/existe", "/x", "chave-do-arquivo")},
};

TEST(Log, nao_mostra_pessoas_nem_segredos) {
    for (const Segredo &segredo : kSegredos) {
        SCOPED_TRACE(segredo.visivel);
        const Log log("chamadas");
        const Caixa caixa;
        ASSERT_EQ(avancar(caixa, segredo.estado), segredo.estado);
        fazer(caixa, segredo.pedido);
        const std::string texto = lerTudo(log.caminho()).value_or("");
        EXPECT_FALSE(contem(texto, segredo.oculto));
        EXPECT_TRUE(contem(texto, segredo.visivel));
    }
}

struct Dado {
    std::string dado, visto;
};

const Dado kDados[] = {
    {"a\n2026-01-01 00:00:00 -0300 [1] tCFEncerrar_ZEL: 1 ZEL_OK", "\"a\\n2026-01-01 "},
    {"a\r\tb\x1B[2J", "\"a\\r\\tb\\x1B[2J\""},
    {"\x85 C1, \x7F", "\"\\x85 C1, \\x7F\""},
    {"P\xE3o \xE0 Fran\347a", "\"Pão à França\""},
    {"{dado}{falha}%s%n", "\"{dado}{falha}%s%n\""},
    {std::string(41, 'x'), "\"" + std::string(40, 'x') + "…\""},
    {std::string(100'000, 'x'), "\"" + std::string(40, 'x') + "…\""},
};

TEST(Log, uma_recusa_e_uma_linha_seja_qual_for_o_dado) {
    for (const Dado &linha : kDados) {
        const Log log;
        const Caixa caixa;
        EXPECT_EQ(recusarChave(caixa, linha.dado.c_str()), ZEL_RECUSADO);
        const auto linhas = log.linhas();
        ASSERT_EQ(linhas.size(), 1U);
        EXPECT_TRUE(contem(linhas[0], linha.visto));
        EXPECT_LT(linhas[0].size(), 600U);
        EXPECT_TRUE(std::regex_search(
            linhas[0], std::regex("^[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9:]{8} [-+][0-9]{4} \\[[0-9]+\\] "
                                  "regAlterarValor_ZEL: -1 ZEL_RECUSADO: ")))
            << linhas[0];
    }
}

// Bytes of a path that are no UTF-8 must not make the log something that no editor opens.
TEST(Log, caminho_em_utf8_e_em_latin1) {
    const Log log;
    const Caixa caixa;
    for (const char *caminho : {"/n\xC3\xA3o", "/n\xE3o", "/n\xC3", "/\xC2\x85\n"})
        EXPECT_EQ(caixa->eCriptografarArquivo_ZEL(caminho, "/x", ""), ZEL_ARQUIVO_INDISPONIVEL);
    const auto linhas = log.linhas();
    ASSERT_EQ(linhas.size(), 4U);
    const char *const vistos[] = {" /não: ", " /não: ", " /nÃ: ", " /Â\\x85\\n: "};
    for (std::size_t i = 0; i < linhas.size(); ++i)
        EXPECT_TRUE(contem(linhas[i], vistos[i]));
}

TEST(Log, so_do_dono_e_na_hora_da_aplicacao) {
    const Ambiente zona("TZ", "UTC+3:30");
    const Log log;
    const Caixa caixa;
    EXPECT_EQ(recusarChave(caixa, "x"), ZEL_RECUSADO);
    struct stat dados {};
    ASSERT_EQ(stat(log.caminho().c_str(), &dados), 0);
    EXPECT_EQ(dados.st_mode & 07777, 0600U);
    EXPECT_TRUE(contem(log.linhas().at(0), " -0330 ["));
}

TEST(Log, todas_as_chamadas_com_a_sua_duracao) {
    const Log log("chamadas");
    const Caixa caixa;
    EXPECT_EQ(abrir(caixa), ZEL_OK);
    EXPECT_EQ(caixa->rCFVerificarStatus_ZEL(), 1);
    EXPECT_EQ(recusarChave(caixa, "x"), ZEL_RECUSADO);
    const char *const esperadas[] = {"aCFAbrir_ZEL: 1 ZEL_OK, [0-9]+\\.[0-9]{3} ms$",
                                     "rCFVerificarStatus_ZEL: estado 1, [0-9]+\\.[0-9]{3} ms$",
                                     "regAlterarValor_ZEL: -1 ZEL_RECUSADO, [0-9.]+ ms: chave: "};
    const auto linhas = log.linhas();
    ASSERT_EQ(linhas.size(), std::size(esperadas));
    for (std::size_t i = 0; i < linhas.size(); ++i)
        EXPECT_TRUE(std::regex_search(linhas[i], std::regex(esperadas[i]))) << linhas[i];
}

// Off, relative, of an unknown level: no file appears, and the codes stay.
TEST(Log, desligado_nao_deixa_arquivo) {
    for (const char *destino :
         {static_cast<const char *>(nullptr), "", "caixa.log", "./caixa.log"}) {
        const Log log;
        log.apontar(destino, "chamadas");
        const Caixa caixa;
        EXPECT_EQ(recusarChave(caixa, "x"), ZEL_RECUSADO);
        EXPECT_FALSE(fs::exists("caixa.log"));
        EXPECT_FALSE(caixa.existe("caixa.log"));
    }
}

// A log that cannot be written refuses nothing and makes nobody wait.
TEST(Log, nunca_faz_uma_chamada_falhar) {
    const Log log;
    const std::string base = fs::path(log.caminho()).parent_path().string();
    fs::create_directory(base + "/pasta");
    ASSERT_EQ(mkfifo((base + "/fila").c_str(), 0600), 0);
    fs::create_symlink("/etc/hostname", base + "/ligacao");
    for (const char *nome : {"/pasta", "/fila", "/ligacao", "/nao/existe", "/fila/x"}) {
        SCOPED_TRACE(nome);
        log.apontar((base + nome).c_str(), "chamadas");
        const Caixa caixa;
        EXPECT_EQ(recusarChave(caixa, "x"), ZEL_RECUSADO);
        EXPECT_EQ(abrir(caixa), ZEL_OK);
    }
    log.apontar("/dev/full", nullptr);
    const Caixa caixa;
    EXPECT_EQ(recusarChave(caixa, "x"), ZEL_RECUSADO);
}

TEST(Log, passa_para_o_anterior_em_dez_megabytes) {
    const Log log;
    const Caixa caixa;
    encher(log.caminho(), kMaximo - 50); // the next line does not fit
    std::ofstream(log.caminho() + ".1") << "mais antigo\n";
    EXPECT_EQ(recusarChave(caixa, "primeira"), ZEL_RECUSADO);
    EXPECT_EQ(recusarChave(caixa, "segunda"), ZEL_RECUSADO);
    const auto linhas = log.linhas();
    ASSERT_EQ(linhas.size(), 2U);
    EXPECT_TRUE(contem(linhas[0], "primeira"));
    EXPECT_EQ(fs::file_size(log.caminho() + ".1"), kMaximo - 50);
    EXPECT_EQ(std::distance(fs::directory_iterator(fs::path(log.caminho()).parent_path()),
                            fs::directory_iterator()),
              2);
}

// What stands in the way of the rename must not make the log grow for ever.
TEST(Log, que_nao_pode_ser_renomeado_recomeca) {
    const Log log;
    const Caixa caixa;
    encher(log.caminho(), kMaximo);
    fs::create_directories(log.caminho() + ".1/ocupado");
    EXPECT_EQ(recusarChave(caixa, "nova"), ZEL_RECUSADO);
    ASSERT_EQ(log.linhas().size(), 1U);
    EXPECT_TRUE(contem(log.linhas()[0], "\"nova\""));
}

// While one process is at the rename the others neither wait for it, nor rename, nor lose a line.
TEST(Log, que_outro_processo_esta_renomeando) {
    const Log log;
    const Caixa caixa;
    encher(log.caminho(), kMaximo);
    const int outro = open(log.caminho().c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(flock(outro, LOCK_EX), 0);
    EXPECT_EQ(recusarChave(caixa, "durante"), ZEL_RECUSADO);
    EXPECT_FALSE(fs::exists(log.caminho() + ".1"));
    ASSERT_EQ(log.linhas().size(), 2U);
    EXPECT_TRUE(contem(log.linhas()[1], "\"durante\""));
    fs::resize_file(log.caminho(), kMaximo + 1'000'000); // it never ends: no further
    EXPECT_EQ(recusarChave(caixa, "demais"), ZEL_RECUSADO);
    EXPECT_EQ(fs::file_size(log.caminho()), kMaximo + 1'000'000);
    close(outro);
    EXPECT_EQ(recusarChave(caixa, "depois"), ZEL_RECUSADO);
    EXPECT_EQ(log.linhas().size(), 1U);
}

// Lines of processes that write, and rotate, at once: none is lost, none is torn, and no full file
// makes way for a nearly empty one.
TEST(Log, de_varios_processos_ao_mesmo_tempo) {
    constexpr int kProcessos = 4, kLinhas = 400;
    const Log log;
    const Caixa caixa;
    encher(log.caminho(), kMaximo - 100'000); // rotated about midway
    std::vector<pid_t> filhos;
    for (int p = 0; p < kProcessos; ++p)
        filhos.push_back(comecarFilho([&] {
            for (int i = 0; i < kLinhas; ++i)
                recusarChave(caixa, ("p" + std::to_string(p) + "_" + std::to_string(i)).c_str());
            return 0;
        }));
    for (const pid_t filho : filhos)
        EXPECT_EQ(fimDe(filho), 0);
    auto linhas = Log::linhasDe(log.caminho() + ".1");
    ASSERT_FALSE(linhas.empty()) << "not rotated";
    EXPECT_EQ(linhas.front().size(), kMaximo - 100'000 - 1);
    linhas.erase(linhas.begin());
    const auto novas = log.linhas();
    EXPECT_FALSE(novas.empty());
    linhas.insert(linhas.end(), novas.begin(), novas.end());
    EXPECT_EQ(linhas.size(), std::size_t{kProcessos} * kLinhas);
    for (const std::string &linha : linhas)
        EXPECT_TRUE(linha.starts_with("20") && linha.ends_with("docs/configuracao.md)")) << linha;
}

// The till's own error stream, and one whose reader has gone: no signal ends the process.
TEST(Log, no_stderr) {
    int canos[2];
    ASSERT_EQ(pipe2(canos, O_CLOEXEC), 0);
    const Log log;
    log.apontar("stderr", nullptr);
    const pid_t filho = comecarFilho([&] {
        dup2(canos[1], STDERR_FILENO);
        close(canos[1]);
        const Caixa caixa;
        recusarChave(caixa, "visivel");
        close(canos[0]);
        // The test's own end of the pipe closes after its first read.
        for (int i = 0; i < 200; ++i) {
            recusarChave(caixa, "depois");
            usleep(1000);
        }
        return 0;
    });
    close(canos[1]);
    std::string texto(300, '\0');
    const ssize_t lidos = read(canos[0], texto.data(), texto.size());
    close(canos[0]);
    EXPECT_EQ(fimDe(filho), 0) << "ended by a signal";
    texto.resize(lidos > 0 ? static_cast<std::size_t>(lidos) : 0);
    EXPECT_TRUE(contem(texto, "\"visivel\""));
}

} // namespace
