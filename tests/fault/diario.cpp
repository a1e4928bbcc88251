// SPDX-License-Identifier: MIT
// The journal itself: torn at any byte, with a bit flipped, of another directory or of an older
// time, one that cannot be made; and what somebody wrote between two processes, which it must not
// undo. Files that are older than the journal lost what was not flushed.
#include "apoio/PastaTemporaria.h"
#include "apoio/Trecho.h"
#include "fault/Ensaio.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <random>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace fs = std::filesystem;
using namespace std::chrono_literals;

namespace {

constexpr const char *kDiario = "ZEL_Framework.diario", *kConfig = "ZEL_Framework.xml",
                     *kRegistros = "ArqPersist.bin", *kEnvio = "documentosEnvio.xml";
constexpr std::size_t kBloco = 4096; // of the journal
constexpr std::size_t kPrimeiraVenda = 5, kUltimoPagamento = 19, kEncerrar = 21;

int alterarVersao(const Funcoes &f, const char *valor = "2.0") {
    return f.regAlterarValor_ZEL("IDE\\verProc", valor);
}

// Somewhere from that byte on, the same one in every run.
void trocarUmBit(std::string &bytes, std::size_t desde, unsigned semente) {
    std::mt19937 sorte(semente);
    char &byte = bytes[desde + sorte() % (bytes.size() - desde)];
    byte = static_cast<char>(byte ^ (1 << sorte() % 8));
}

class DoDiario : public testing::Test {
protected:
    DoDiario() : ensaio_(roteiros().front()) {}

    // What a new process finds.
    template <class Conferir>
    void religar(Conferir conferir) const {
        emProcessoNovo(ensaio_.diretorio(),
                       [&](const Funcoes &f) { conferir(f, retratar(f, ensaio_.diretorio())); });
    }
    void conferirRetrato(std::size_t passo) const {
        religar([&](const Funcoes &, const Retrato &achado) {
            recusarSe("found", diferenca(achado, ensaio_.retrato(passo)));
        });
    }
    void conferirAntesOuDepois(std::size_t passo) const {
        religar([&](const Funcoes &, const Retrato &achado) {
            EXPECT_TRUE(achado == ensaio_.retrato(passo) || achado == ensaio_.retrato(passo + 1))
                << diferenca(achado, ensaio_.retrato(passo));
        });
    }

    // The files of before the step, and the journal of after it.
    disco::Fotografia semDescarga(std::size_t passo) const {
        disco::Fotografia foto = ensaio_.foto(passo);
        foto[kDiario] = ensaio_.foto(passo + 1).at(kDiario);
        return foto;
    }

    // The files as written later than the records of earlier calls, which a damaged journal may
    // lack.
    void revelarDeAgora(const disco::Fotografia &foto) const {
        disco::revelar(ensaio_.diretorio(), {});
        for (const auto &[nome, bytes] : foto)
            escrever(nome.c_str(), bytes);
        disco::reconhecerDiario(ensaio_.diretorio(), foto);
    }

    // Somebody writes a file, now.
    void escrever(const char *nome, const std::string &bytes) const {
        std::ofstream(ensaio_.diretorio() + nome, std::ios::binary) << bytes;
    }

    Ensaio ensaio_;
};

// Every operation of a receipt: nothing but the journal got to the disk.
TEST_F(DoDiario, basta_para_refazer_cada_passo) {
    for (std::size_t passo = 0; passo < ensaio_.passos(); ++passo) {
        SCOPED_TRACE(ensaio_.nome(passo));
        // The last receipt text and the return are not in it.
        if (std::string_view(ensaio_.nome(passo)) == "imprimir") continue;
        disco::revelar(ensaio_.diretorio(), semDescarga(passo));
        ensaio_.conferirSucessor(passo, true);
    }
}

TEST_F(DoDiario, rasgado_em_cada_byte_vale_ate_ali) {
    for (const std::size_t passo : {kPrimeiraVenda, kEncerrar}) {
        const std::string inteiro = semDescarga(passo).at(kDiario);
        for (std::size_t n = 0; n <= inteiro.size(); ++n) {
            if (!tudo() && n % 211 != 0 && n != inteiro.size()) continue;
            // The zeros after a record are there anyway.
            if (n > 0 && n < inteiro.size() && inteiro[n - 1] == '\0' && inteiro[n] == '\0')
                continue;
            SCOPED_TRACE("cut at " + std::to_string(n));
            disco::Fotografia foto = semDescarga(passo);
            foto[kDiario] = inteiro.substr(0, n);
            revelarDeAgora(foto);
            conferirAntesOuDepois(passo);
        }
    }
}

TEST_F(DoDiario, um_bit_trocado_recusa_o_registro) {
    for (unsigned semente = 1; semente <= (tudo() ? 2000U : 60U); ++semente) {
        SCOPED_TRACE(semente);
        disco::Fotografia foto = semDescarga(kUltimoPagamento);
        trocarUmBit(foto[kDiario], 0, semente);
        revelarDeAgora(foto);
        conferirAntesOuDepois(kUltimoPagamento);
    }
}

// What was damaged is not gone on with: the records after it must not follow new ones, nor may
// these hide that there had been some.
TEST_F(DoDiario, danificado_recomeca_sem_perder_o_que_os_arquivos_tem) {
    for (unsigned semente = 1; semente <= (tudo() ? 400U : 40U); ++semente) {
        SCOPED_TRACE(semente);
        disco::Fotografia foto = ensaio_.foto(kUltimoPagamento);
        trocarUmBit(foto[kDiario], kBloco, semente);
        revelarDeAgora(foto);
        religar([&](const Funcoes &f, const Retrato &) {
            EXPECT_GT(ensaio_.fazer(kUltimoPagamento, f), 0);
        });
        conferirRetrato(kUltimoPagamento + 1);
    }
}

// Another process that empties the journal is killed at any write of that; the till goes on.
TEST_F(DoDiario, esvaziado_por_outro_que_morre) {
    const auto caixa = [&](int n) {
        const Processo till(ensaio_.diretorio());
        const int fim = disco::emOutroProcesso([&] {
            std::optional<Processo> outro(std::in_place, ensaio_.diretorio());
            for (const char *valor : {"2.0", "1.0"})
                if (alterarVersao(outro->funcoes(), valor) != ZEL_OK) return 1;
            const disco::Vigia vigia(
                {.ato = disco::Plano::Ato::kMorrer, .em = n, .soMudancas = true});
            outro.reset(); // unloads the library
            return 0;
        });
        if (fim != 0 && fim != disco::kMorto) return 1;
        for (std::size_t passo = kUltimoPagamento; passo <= kEncerrar; ++passo)
            if (ensaio_.fazer(passo, till.funcoes()) <= 0) return 1;
        return fim == disco::kMorto ? 2 : 0;
    };
    int mortes = 0;
    for (int n = 1, fim = 2; fim == 2; ++n) {
        SCOPED_TRACE(n);
        ensaio_.preparar(kUltimoPagamento);
        fim = disco::emOutroProcesso([&] { return caixa(n); });
        EXPECT_NE(fim, 1);
        mortes += fim == 2;
        religar([&](const Funcoes &, const Retrato &achado) {
            disco::Fotografia arquivos = achado.arquivos;
            for (const char *nome : {kRegistros, kEnvio})
                EXPECT_EQ(arquivos[nome], ensaio_.retrato(kEncerrar + 1).arquivos.at(nome));
            EXPECT_EQ(achado.memoria, ensaio_.retrato(kEncerrar + 1).memoria);
        });
    }
    EXPECT_GT(mortes, 2);
}

// Another mode is not another file.
TEST_F(DoDiario, permissoes_mudadas_nao_guardam_um_arquivo_rasgado) {
    ensaio_.preparar(kPrimeiraVenda);
    disco::Fotografia foto = ensaio_.foto(kPrimeiraVenda);
    {
        const Processo processo(ensaio_.diretorio());
        const disco::Vigia vigia;
        ASSERT_GT(ensaio_.fazer(kPrimeiraVenda, processo.funcoes()), 0);
        foto[kDiario] = disco::fotografar(ensaio_.diretorio())[kDiario];
        for (const disco::Evento &evento : vigia.eventos())
            disco::ver(evento);
    }
    disco::revelar(ensaio_.diretorio(), foto, disco::Idade::kVista);
    fs::permissions(ensaio_.diretorio() + kConfig, fs::perms::owner_all);
    ensaio_.conferirSucessor(kPrimeiraVenda, true);
}

// A journal that was restored from a backup, or came with the files of another till.
TEST_F(DoDiario, antigo_ou_alheio_nao_muda_os_arquivos) {
    const Ensaio outro(roteiros()[1]);
    for (const std::string &diario :
         {ensaio_.foto(kPrimeiraVenda).at(kDiario), outro.foto(5).at(kDiario),
          std::string(4096, 'x'), std::string()}) {
        disco::Fotografia foto = ensaio_.foto(kUltimoPagamento);
        foto[kDiario] = diario;
        revelarDeAgora(foto);
        religar([&](const Funcoes &f, const Retrato &achado) {
            recusarSe("found", diferenca(achado, ensaio_.retrato(kUltimoPagamento)));
            for (std::size_t passo = kUltimoPagamento; passo <= kEncerrar; ++passo)
                EXPECT_GT(ensaio_.fazer(passo, f), 0) << ensaio_.nome(passo);
            // Room that is sure.
            EXPECT_GE(fs::file_size(ensaio_.diretorio() + kDiario), std::uintmax_t{4} << 20);
        });
    }
}

// A technician sets the state back, corrects a value, puts a backup in place, takes a file away;
// the sending component takes the document.
TEST_F(DoDiario, o_que_alguem_mudou_depois_fica) {
    const std::string config = ensaio_.retrato(kEncerrar + 1).arquivos.at(kConfig);
    const struct {
        const char *descricao;
        const char *arquivo;
        std::string bytes; // empty: taken away
    } casos[] = {
        {"state set back", kConfig, trocar(config, "<estadoCFe>5", "<estadoCFe>0")},
        {"another length", kConfig, trocar(config, "<xNome>RAZAO SOCIAL", "<xNome>Loja")},
        {"backup of before", kConfig, ensaio_.foto(kPrimeiraVenda).at(kConfig)},
        {"receipt emptied", kRegistros, "01|\r\n"},
        {"receipt taken away", kRegistros, ""},
        {"document taken by the sender", kEnvio, ""},
        {"another document", kEnvio, "<x></x>"},
    };
    for (const auto &caso : casos) {
        SCOPED_TRACE(caso.descricao);
        disco::revelar(ensaio_.diretorio(), ensaio_.foto(kEncerrar + 1));
        std::this_thread::sleep_for(20ms); // two ticks of the file system's clock
        if (caso.bytes.empty())
            fs::remove(ensaio_.diretorio() + caso.arquivo);
        else
            escrever(caso.arquivo, caso.bytes);
        religar([&](const Funcoes &f, const Retrato &) {
            disco::Fotografia arquivos = disco::fotografar(ensaio_.diretorio());
            EXPECT_EQ(arquivos[caso.arquivo], caso.bytes);
            EXPECT_EQ(alterarVersao(f), ZEL_OK);
            arquivos = disco::fotografar(ensaio_.diretorio());
            if (caso.arquivo != std::string_view(kConfig)) {
                EXPECT_EQ(arquivos[caso.arquivo], caso.bytes);
            }
        });
    }
}

// One that cannot be read hides nothing, and lets nothing change.
TEST_F(DoDiario, ilegivel_deixa_ler_os_arquivos) {
    disco::revelar(ensaio_.diretorio(), ensaio_.foto(kUltimoPagamento));
    fs::remove(ensaio_.diretorio() + kDiario);
    fs::create_directory(ensaio_.diretorio() + kDiario);
    religar([&](const Funcoes &f, const Retrato &achado) {
        EXPECT_EQ(achado.memoria, ensaio_.retrato(kUltimoPagamento).memoria);
        EXPECT_EQ(ensaio_.fazer(kUltimoPagamento, f), ZEL_ARQUIVO_INDISPONIVEL);
    });
    fs::remove(ensaio_.diretorio() + kDiario);
    conferirRetrato(kUltimoPagamento);
}

// The first call was root's, in the directory of the till's user.
TEST_F(DoDiario, e_de_quem_tem_o_diretorio) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root gives files away";
    constexpr uid_t kUsuario = 65534;
    disco::revelar(ensaio_.diretorio(), {});
    ASSERT_EQ(::chown(ensaio_.diretorio().c_str(), kUsuario, kUsuario), 0);
    religar([](const Funcoes &f, const Retrato &) { EXPECT_EQ(alterarVersao(f), ZEL_OK); });
    struct stat dados {};
    ASSERT_EQ(::stat((ensaio_.diretorio() + kDiario).c_str(), &dados), 0);
    EXPECT_EQ(dados.st_uid, kUsuario);
}

// The disk is full, or refuses, when the journal is to be made: the first call of a till.
TEST(DiarioNovo, que_nao_pode_ser_feito_recusa_a_chamada) {
    const PastaTemporaria pasta;
    const std::string diretorio = pasta / "";
    int recusas = 0;
    for (const int erro : {ENOSPC, EIO}) {
        for (int n = 1;; ++n) {
            SCOPED_TRACE(n);
            const int resposta = disco::emOutroProcesso([&] {
                disco::revelar(diretorio, {});
                const Processo processo(diretorio, true);
                const auto alterar = [&] { return alterarVersao(processo.funcoes()); };
                int codigo = 0;
                bool disparou = false;
                {
                    const disco::Vigia vigia(
                        {.ato = disco::Plano::Ato::kErro, .em = n, .erro = erro});
                    codigo = alterar();
                    disparou = vigia.disparou();
                }
                if (!disparou) return 2;
                if (codigo != ZEL_OK && alterar() != ZEL_OK) return 1;
                const std::string config = disco::fotografar(diretorio)[kConfig];
                return vezesEm(config, "<verProc>2.0<") == 1 ? 0 : 1;
            });
            if (resposta == 2) break;
            ++recusas;
            EXPECT_EQ(resposta, 0);
        }
    }
    EXPECT_GT(recusas, 20);
    disco::revelar(diretorio, {});
    fs::create_directory(diretorio + kDiario);
    const int resposta = disco::emOutroProcesso([&] {
        const Processo processo(diretorio, true);
        return alterarVersao(processo.funcoes()) == ZEL_ARQUIVO_INDISPONIVEL ? 0 : 1;
    });
    EXPECT_EQ(resposta, 0);
}

} // namespace
