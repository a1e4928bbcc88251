// SPDX-License-Identifier: MIT
// Two processes over the files of one till, which is a till started twice, a till and a tool that
// configures or prints, or a till that forked: no sale that was answered is lost, no key is in two
// documents, and the one that goes on after the other works with what that one left.
#include "apoio/Ambiente.h"
#include "apoio/Chamadas.h"
#include "apoio/Filho.h"
#include "apoio/Passos.h"
#include "apoio/Trecho.h"
#include "blackbox/Caixa.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <memory>
#include <set>
#include <sys/mman.h>
#include <sys/time.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;

namespace {

int lerInfo(const Funcoes &f) {
    char valor[ZEL_TAMANHO_VALOR];
    return f.rInfoEstendida_ZEL("1", valor);
}
int lerEstado(const Funcoes &f) {
    char valor[ZEL_TAMANHO_VALOR];
    return f.regRetornarValor_ZEL("CONFIGURACAO\\estadoCFe", valor);
}

// Only the process that has the receipt may.
bool mudaOCupom(std::string_view nome) {
    const bool outra = nome.starts_with("aCFConf") || nome == "aCFInicializar_ZEL" ||
                       nome == "aCFValorLeiImposto_ZEL";
    return nome.starts_with("tCFEncerrar") || (nome.starts_with("aCF") && !outra);
}

TEST(DoisProcessos, o_segundo_le_e_configura_mas_nao_muda_o_cupom) {
    Caixa primeiro;
    ASSERT_EQ(avancar(primeiro, 2), 2);
    const Caixa segundo(primeiro);
    EXPECT_EQ(segundo.info("1"), "1");
    fs::current_path(primeiro.diretorio());
    const std::string registros = primeiro.lerArquivo("ArqPersist.bin");
    for (const Chamada &chamada : chamadas()) {
        SCOPED_TRACE(chamada.nome);
        const std::string config = primeiro.lerArquivo("ZEL_Framework.xml");
        const int codigo = chamada.chamar(segundo, chamada.plausiveis());
        EXPECT_TRUE(chamada.responde(codigo)) << codigo;
        EXPECT_EQ(primeiro.lerArquivo("ArqPersist.bin"), registros);
        if (!mudaOCupom(chamada.nome)) continue;
        EXPECT_EQ(codigo, ZEL_ARQUIVO_INDISPONIVEL);
        EXPECT_TRUE(primeiro.lerArquivo("ZEL_Framework.xml") == config);
    }
    fs::current_path("/");
    EXPECT_EQ(segundo->tCFCancelar_ZEL("", "", "", "", ""), ZEL_ARQUIVO_INDISPONIVEL)
        << "of the receipt in progress";
    EXPECT_EQ(segundo->rCFVerificarStatus_ZEL(), 2);
    segundo.config("PROD\\CFOP", "5403");
    ASSERT_EQ(vender(primeiro), ZEL_OK);
    ASSERT_EQ(fechar(primeiro), ZEL_OK);
    const std::string documento = primeiro.lerArquivo("documentosEnvio.xml");
    EXPECT_EQ(elemento(documento, "vNF"), "20.00");
    EXPECT_TRUE(contem(documento, "<CFOP>5403</CFOP>")) << "seen from the next sale";
}

TEST(DoisProcessos, quem_continua_parte_do_que_o_outro_deixou) {
    Caixa primeiro;
    ASSERT_EQ(avancar(primeiro, 2), 2);
    Caixa segundo(primeiro);
    ASSERT_EQ(segundo.info("1"), "1");
    ASSERT_EQ(vender(primeiro), ZEL_OK);
    primeiro.parar();
    ASSERT_EQ(vender(segundo), ZEL_OK);
    EXPECT_EQ(segundo.info("1"), "3");
    primeiro.iniciar();
    EXPECT_EQ(primeiro.info("1"), "3");
    EXPECT_EQ(vender(primeiro), ZEL_ARQUIVO_INDISPONIVEL);
    segundo.parar();
    ASSERT_EQ(vender(primeiro), ZEL_OK);
    EXPECT_EQ(fechar(primeiro), ZEL_OK);
    EXPECT_EQ(elemento(primeiro.lerArquivo("documentosEnvio.xml"), "vNF"), "40.00");
}

// A call that is refused changes nothing, so it keeps nobody out.
TEST(DoisProcessos, uma_recusa_nao_toma_o_cupom) {
    Caixa primeiro;
    EXPECT_EQ(vender(primeiro), ZEL_NENHUM_CUPOM);
    Caixa segundo(primeiro);
    EXPECT_EQ(abrir(segundo), ZEL_OK);
    EXPECT_EQ(abrir(primeiro), ZEL_ARQUIVO_INDISPONIVEL);
}

// Removed with the files of an old test, or by somebody who took it for a leftover.
TEST(DoisProcessos, trava_removida_e_tomada_de_novo) {
    Caixa primeiro;
    ASSERT_EQ(abrir(primeiro), ZEL_OK);
    fs::remove(primeiro.diretorio() + "ZEL_Framework.trava");
    ASSERT_EQ(vender(primeiro), ZEL_OK);
    Caixa segundo(primeiro);
    EXPECT_EQ(vender(segundo), ZEL_ARQUIVO_INDISPONIVEL);
    EXPECT_EQ(primeiro.info("1"), "1");
}

TEST(DoisProcessos, quem_perdeu_a_trava_le_o_que_o_outro_vendeu) {
    for (const bool removida : {false, true}) {
        SCOPED_TRACE(removida);
        Caixa caixa;
        caixa.parar();
        EXPECT_EQ(emFilho([&] {
                      caixa.iniciar();
                      if (avancar(caixa, 2) != 2) return 1;
                      if (removida)
                          fs::remove(caixa.diretorio() + "ZEL_Framework.trava");
                      else
                          closefrom(3);
                      const auto emOutro = [&] { return vender(Caixa(caixa)) == ZEL_OK ? 0 : 1; };
                      if (emFilho(emOutro) != 0) return 2;
                      return caixa.info("1") == "2" ? 0 : 3;
                  }),
                  0);
    }
}

TEST(ProcessoFilho, e_um_segundo_enquanto_o_pai_vive) {
    Caixa caixa;
    ASSERT_EQ(avancar(caixa, 2), 2);
    EXPECT_EQ(emFilho([&] { return vender(caixa) == ZEL_ARQUIVO_INDISPONIVEL ? 0 : 1; }), 0);
    ASSERT_EQ(vender(caixa), ZEL_OK);
    // Its own child outlives this one, which has the receipt when it forks.
    caixa.parar();
    int fim[2];
    ASSERT_EQ(pipe(fim), 0);
    ASSERT_EQ(emFilho([&] {
                  caixa.iniciar();
                  const int vendido = vender(caixa);
                  const pid_t pai = getpid();
                  if (fork() != 0) return vendido == ZEL_OK ? 0 : 1;
                  while (getppid() == pai)
                      usleep(1000);
                  // Where the dead one had threads, an emulator's for instance, its last file is
                  // closed a moment after it.
                  int neto = vender(caixa);
                  for (int i = 0; i < 1000 && neto == ZEL_ARQUIVO_INDISPONIVEL; ++i) {
                      usleep(1000);
                      neto = vender(caixa);
                  }
                  const char resposta = neto == ZEL_OK && caixa.info("1") == "4" ? 's' : 'n';
                  _exit(write(fim[1], &resposta, 1) == 1 ? 0 : 1);
              }),
              0);
    char resposta = 0;
    EXPECT_EQ(read(fim[0], &resposta, 1), 1);
    EXPECT_EQ(resposta, 's') << "a dead process holds nothing";
    close(fim[0]);
    close(fim[1]);
    caixa.iniciar();
    EXPECT_EQ(caixa.info("1"), "4");
}

// Processes that come and go, each with a whole receipt: one key a document.
TEST(DoisProcessos, nenhuma_chave_em_dois_documentos) {
    constexpr int kCupons = 15;
    Caixa caixa;
    caixa.config("CONFIGURACAO\\HistoricoXML", "1");
    caixa.config("CONFIGURACAO\\PathXMLEnvio", caixa.diretorio().c_str());
    const auto emitir = [&](int quantos) {
        while (quantos > 0) {
            const Caixa processo(caixa);
            if (abrir(processo) != ZEL_OK) continue; // the other one has it
            if (vender(processo) != ZEL_OK || fechar(processo) != ZEL_OK) return 1;
            --quantos;
        }
        return 0;
    };
    caixa.parar();
    const pid_t outro = comecarFilho([&] { return emitir(kCupons); });
    EXPECT_EQ(emitir(kCupons), 0);
    EXPECT_EQ(fimDe(outro), 0);
    std::set<std::string> chaves;
    std::size_t copias = 0;
    for (const auto &entrada : fs::directory_iterator(caixa.diretorio())) {
        const std::string nome = entrada.path().filename();
        if (!nome.starts_with("EnvioNFCe")) continue;
        ++copias;
        const std::string documento = caixa.lerArquivo(nome);
        chaves.insert(documento.substr(documento.find("Id=\"NFe") + 7, 44));
    }
    EXPECT_EQ(copias, 2 * kCupons) << "documents of the same second are kept";
    EXPECT_EQ(chaves.size(), 2 * kCupons);
}

// Each changes a value of its own: nobody's change is undone by the other one's. Also where
// somebody keeps removing the lock file, in the midst of changes: then one may be refused.
TEST(DoisProcessos, nenhuma_mudanca_da_configuracao_se_perde) {
    for (const bool removida : {false, true}) {
        SCOPED_TRACE(removida);
        Caixa caixa;
        ASSERT_EQ(caixa->aCFInicializar_ZEL(), ZEL_OK);
        caixa.parar();
        const auto mudar = [&](const char *chave) {
            const Caixa c(caixa);
            int feitas = 0;
            for (int vez = 0; vez < 100; ++vez) {
                const std::string valor(static_cast<std::size_t>(vez % 7 + 1), 'x');
                const bool mudado = c->regAlterarValor_ZEL(chave, valor.c_str()) == ZEL_OK;
                if (!mudado && !removida) return 1;
                if (!mudado) continue;
                ++feitas;
                if (c->aCFInicializar_ZEL() == ZEL_OK && c.config(chave) != valor) return 2;
            }
            return feitas > 0 ? 0 : 3;
        };
        const pid_t um = comecarFilho([&] { return mudar("EMIT\\xNome"); });
        const pid_t outro = comecarFilho([&] { return mudar("IDE\\natOP"); });
        const pid_t removedor = comecarFilho([&] {
            if (!removida) return 0;
            for (;; usleep(50))
                unlink((caixa.diretorio() + "ZEL_Framework.trava").c_str());
        });
        EXPECT_EQ(fimDe(um), 0);
        EXPECT_EQ(fimDe(outro), 0);
        kill(removedor, SIGKILL);
        fimDe(removedor);
    }
}

// A till that hangs holds the others up for three seconds, however often signals wake them.
TEST(DoisProcessos, a_espera_e_de_tres_segundos) {
    using Relogio = std::chrono::steady_clock;
    const struct {
        bool novo; // a process that has done nothing before
        int esperado;
        int (*chamar)(const Funcoes &);
    } casos[] = {
        {false, ZEL_ARQUIVO_INDISPONIVEL, [](const Funcoes &f) { return abrir(f); }},
        {false, ZEL_OK, lerInfo},
        {true, ZEL_ARQUIVO_INDISPONIVEL, [](const Funcoes &f) { return abrir(f); }},
        {true, ZEL_OK, lerInfo},
        {true, ZEL_OK, lerEstado},
        {true, ZEL_OK, [](const Funcoes &f) { return f.aCFConfPisNT_ZEL("07"); }},
    };
    Caixa caixa;
    ASSERT_EQ(avancar(caixa, 2), 2);
    const Caixa outro(caixa);
    ASSERT_EQ(lerInfo(outro), ZEL_OK);
    ASSERT_EQ(vender(caixa), ZEL_OK);
    caixa.config("EMIT\\xNome", "x"); // what the other one reads next is new
    const std::string trava = caixa.diretorio() + "ZEL_Framework.trava";
    const int fd = open(trava.c_str(), O_RDWR | O_CLOEXEC);
    struct flock pedido {};
    pedido.l_type = F_WRLCK;
    pedido.l_len = 1;
    ASSERT_EQ(fcntl(fd, F_OFD_SETLK, &pedido), 0);
    std::vector<pid_t> filhos;
    for (const auto &caso : casos)
        filhos.push_back(comecarFilho([&] {
            const auto novo = caso.novo ? std::make_unique<Caixa>(caixa) : nullptr;
            struct sigaction nada {};
            nada.sa_handler = [](int) {};
            sigaction(SIGALRM, &nada, nullptr);
            const itimerval frequente{{0, 200}, {0, 200}};
            setitimer(ITIMER_REAL, &frequente, nullptr);
            const auto inicio = Relogio::now();
            if (caso.chamar(novo ? *novo : outro) != caso.esperado) return 2;
            const std::chrono::duration<double> espera = Relogio::now() - inicio;
            return espera.count() >= 3 && espera.count() < 5 ? 0 : 3;
        }));
    for (std::size_t i = 0; i < filhos.size(); ++i)
        EXPECT_EQ(fimDe(filhos[i]), 0) << "case " << i;
    close(fd);
}

// A service closes every number when it starts, and opens files of its own under them: these are
// not the library's to write to, to lock or to close, and the receipt goes on.
TEST(DescritoresGuardados, um_programa_que_os_fecha_continua) {
    constexpr std::string_view kDele = "DO PROGRAMA";
    for (const int seus : {0, 20}) {
        SCOPED_TRACE(seus);
        Caixa caixa;
        caixa.parar();
        const int resposta = emFilho([&] {
            caixa.iniciar();
            std::vector<int> abertos;
            const auto tomar = [&] {
                closefrom(3);
                abertos.clear();
                for (int i = 0; i < seus; ++i) {
                    const std::string nome = caixa.diretorio() + "dele" + std::to_string(i);
                    abertos.push_back(open(nome.c_str(), O_RDWR | O_CREAT | O_TRUNC, 0600));
                    if (write(abertos.back(), kDele.data(), kDele.size()) < 0) return;
                }
            };
            const auto intactos = [&] {
                return std::all_of(abertos.begin(), abertos.end(), [&](int fd) {
                    char bytes[64];
                    const ssize_t lidos = pread(fd, bytes, sizeof bytes, 0);
                    return lidos >= 0 &&
                           std::string_view(bytes, static_cast<std::size_t>(lidos)) == kDele;
                });
            };
            const auto fazer = [&](auto passo) { return tomar(), passo(caixa) == ZEL_OK; };
            if (avancar(caixa, 2) != 2) return 1;
            for (int i = 0; i < 3; ++i)
                if (!fazer([](const Caixa &c) { return vender(c); }) || !intactos()) return 2;
            {
                const Caixa segundo(caixa);
                if (vender(segundo) != ZEL_ARQUIVO_INDISPONIVEL) return 3;
            }
            if (!fazer([](const Caixa &c) { return totalizar(c); }) ||
                !fazer([](const Caixa &c) { return pagar(c); }) ||
                !fazer([](const Caixa &c) { return encerrar(c); }) || !intactos())
                return 4;
            caixa.parar();
            return intactos() ? 0 : 5;
        });
        EXPECT_EQ(resposta, 0);
        EXPECT_EQ(elemento(caixa.lerArquivo("documentosEnvio.xml"), "vNF"), "40.00");
    }
}

TEST(DiretorioDeDados, e_escolhido_uma_vez) {
    const Caixa caixa;
    ASSERT_EQ(abrir(caixa), ZEL_OK);
    const Ambiente outro("ZEL_DIRETORIO", "/nao/existe");
    EXPECT_EQ(vender(caixa), ZEL_OK);
    EXPECT_TRUE(contem(caixa.lerArquivo("ArqPersist.bin"), "Produto"));
}

// What a host prints after it closed a standard stream must not land in a file of the library's.
TEST(DescritoresPadrao, nenhum_arquivo_os_usa) {
    for (const int fechado : {0, 1, 2}) {
        SCOPED_TRACE(fechado);
        Caixa caixa;
        caixa.parar();
        const int resposta = emFilho([&] {
            close(fechado);
            std::jthread impressora([&](const std::stop_token &parar) {
                while (!parar.stop_requested())
                    static_cast<void>(write(fechado, "LINHA DE LOG\n", 13) > 0);
            });
            caixa.iniciar();
            for (int cupom = 0; cupom < 3; ++cupom)
                if (avancar(caixa, 5) != 5) return 2;
            return 0;
        });
        EXPECT_EQ(resposta, 0);
        for (const char *nome : {"ZEL_Framework.xml", "ArqPersist.bin", "documentosEnvio.xml"})
            EXPECT_EQ(caixa.lerArquivo(nome).find("LINHA"), std::string::npos) << nome;
    }
}

// Whoever starts a program that runs with its owner's rights chooses the environment, and must not
// choose by it where these rights write, nor whether another process may go on with their receipt.
TEST(DiretorioDeDados, nao_e_do_ambiente_com_direitos_de_outro) {
    constexpr uid_t kDono = 65534, kQuemChama = 65533;
    if (::geteuid() != 0) GTEST_SKIP() << "only root gives files away";
    // Not in the temporary directory, which may ignore the bit.
    const fs::path base = fs::path(ZEL_BIBLIOTECA).parent_path() / "privilegiado";
    for (const bool comDireitos : {false, true}) {
        SCOPED_TRACE(comDireitos);
        fs::remove_all(base);
        const std::string programa = base / "programa", copia = base / "lib/lib.so",
                          alvo = base / "alvo/";
        for (const char *pasta : {"lib", "alvo"}) {
            fs::create_directories(base / pasta);
            fs::permissions(base / pasta, fs::perms::all);
        }
        fs::copy_file(ZEL_BIBLIOTECA, copia);
        fs::copy_file(ZEL_PRIVILEGIADO, programa);
        ASSERT_EQ(::chown(programa.c_str(), kDono, kDono), 0);
        ASSERT_EQ(::chmod(programa.c_str(), comDireitos ? 04755 : 0755), 0);
        const int memoria = ::memfd_create("zel_felbor", 0); // the program inherits it
        const int fim = emFilho([&] {
            setenv("ZEL_DIRETORIO", alvo.c_str(), 1);
            setenv("ZEL_LOG", (alvo + "log").c_str(), 1);
            setenv("ZEL_LOG_DESCRITOR", std::to_string(memoria).c_str(), 1);
            setenv("ZEL_COMPARTILHADO", "1", 1);
            if (::setuid(kQuemChama) == 0)
                ::execl(programa.c_str(), programa.c_str(), copia.c_str(), nullptr);
            return 127;
        });
        const off_t motivo = ::lseek(memoria, 0, SEEK_END);
        ::close(memoria);
        if (fim == 127) GTEST_SKIP() << "another user cannot get here";
        EXPECT_EQ(fim, comDireitos ? 0 : 2); // whether two processes serve one receipt
        EXPECT_EQ(motivo > 0, !comDireitos);
        EXPECT_EQ(fs::exists(base / "lib/ZEL_Framework.xml"), comDireitos);
        EXPECT_EQ(fs::exists(base / "alvo/ZEL_Framework.xml"), !comDireitos);
        EXPECT_EQ(fs::exists(base / "alvo/log"), !comDireitos);
    }
    fs::remove_all(base);
}

} // namespace
