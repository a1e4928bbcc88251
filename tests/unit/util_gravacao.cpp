// SPDX-License-Identifier: MIT
// Changes of files through the journal: what it holds when it has to grow, and how a file is told
// from what somebody else wrote at once.
#include "ZEL_FelborFramework.h"
#include "apoio/DiretorioDeDados.h"
#include "util/Gravacao.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace zel;

namespace {

class Gravacao : public testing::Test {
protected:
    Gravacao() {
        serDiretorioDeDados(pasta_);
        esquecerDiario();
    }
    ~Gravacao() override {
        esquecerDiario();
        ::unsetenv("ZEL_DIRETORIO");
    }

    // A power cut takes what was not flushed of a file, whose times had got to the disk.
    void rasgar(const char *nome) const {
        const std::string caminho = pasta_ / nome;
        struct stat antes {};
        ASSERT_EQ(::stat(caminho.c_str(), &antes), 0);
        pasta_.gravar(nome, "");
        const timespec tempos[] = {antes.st_atim, antes.st_mtim};
        ASSERT_EQ(::utimensat(AT_FDCWD, caminho.c_str(), tempos, 0), 0);
    }

    PastaTemporaria pasta_;
};

} // namespace

// The record of a change that is small as long as the journal has the files, but that the journal,
// emptied for it, cannot hold whole: what follows it must still belong to it.
TEST_F(Gravacao, diario_cresce_para_arquivos_inteiros_e_continua) {
    std::string a(std::size_t{3} << 20, 'a'), b(std::size_t{3} << 20, 'b');
    const auto gravar = [](std::initializer_list<MudancaArquivo> mudancas) {
        return gravarJuntos({mudancas.begin(), mudancas.size()});
    };
    ASSERT_EQ(gravar({{.nome = "a", .depois = a}}), ZEL_OK);
    ASSERT_EQ(gravar({{.nome = "b", .depois = b}}), ZEL_OK);
    for (const char novo : {'1', '2'}) {
        std::string a2 = a, b2 = b;
        a2.back() = b2.back() = novo;
        ASSERT_EQ(gravar({{.nome = "a", .depois = a2, .antes = a},
                          {.nome = "b", .depois = b2, .antes = b}}),
                  ZEL_OK);
        a = a2;
        b = b2;
    }
    esquecerDiario();
    rasgar("a");
    rasgar("b");
    ASSERT_EQ(acompanharDiario(), ZEL_OK);
    EXPECT_TRUE(pasta_.ler("a") == a);
    EXPECT_TRUE(pasta_.ler("b") == b);
}

// A program that writes as many bytes at once leaves the system's time of the same tick, maybe.
TEST_F(Gravacao, arquivo_marcado_difere_do_que_outro_grava_em_seguida) {
    pasta_.gravar("a", "00");
    for (int vez = 0; vez < 100; ++vez) {
        SCOPED_TRACE(vez);
        const std::string antes = pasta_.ler("a");
        const MudancaArquivo mudanca{
            .nome = "a", .depois = vez % 2 == 0 ? "10" : "20", .antes = antes, .marcada = true};
        ASSERT_EQ(gravarJuntos({&mudanca, 1}), ZEL_OK);
        const auto marcada = identidadeMarcada("a");
        ASSERT_TRUE(marcada);
        Identidade achada;
        ASSERT_EQ(identificar(pasta_ / "a", Ligacao::kSeguida, achada), Leitura::kLido);
        EXPECT_EQ(achada, *marcada);
        EXPECT_NE(achada.escrita, achada.mudanca);
        pasta_.gravar("a", "99");
        ASSERT_EQ(identificar(pasta_ / "a", Ligacao::kSeguida, achada), Leitura::kLido);
        EXPECT_NE(achada, *marcada);
    }
}
