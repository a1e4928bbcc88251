// SPDX-License-Identifier: MIT
// Changes of files through the journal: what it holds when it has to grow, when it is torn or
// damaged, when others write the same files or the journal itself.
#include "ZEL_FelborFramework.h"
#include "apoio/ComDados.h"
#include "apoio/Filho.h"
#include "config/Registro.h"
#include "diario/EstadosDiario.h"
#include "diario/Gravacao.h"

#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

using namespace zel;
namespace fs = std::filesystem;

namespace {

// What happens while the next record is flushed, and when the next file got its name.
std::function<void()> naDescarga, aoNomear;

constexpr const char *kDiario = "ZEL_Framework.diario";

class Gravacao : public ComDados {
protected:
    // With a journal that has nothing yet.
    void SetUp() override {
        ComDados::SetUp();
        fs::remove(pasta / kDiario);
        esquecerDiario();
    }

    // A power cut takes what was not flushed of a file, whose times had got to the disk.
    void rasgar(const char *nome) const {
        const std::string caminho = pasta / nome;
        struct stat antes {};
        ASSERT_EQ(::stat(caminho.c_str(), &antes), 0);
        pasta.gravar(nome, "");
        const timespec tempos[] = {antes.st_atim, antes.st_mtim};
        ASSERT_EQ(::utimensat(AT_FDCWD, caminho.c_str(), tempos, 0), 0);
    }

    static int gravar(std::initializer_list<MudancaArquivo> mudancas) {
        return gravarJuntos({mudancas.begin(), mudancas.size()});
    }
    int mudar(const char *nome, const char *depois) const {
        const std::string antes = pasta.ler(nome);
        return gravar({{.nome = nome, .depois = depois, .antes = antes}});
    }
    // As another process, or this one after a power cut.
    static void recomecar() {
        esquecerDiario();
        ASSERT_EQ(acompanharDiario(), ZEL_OK);
    }
    // Whether what is written at once gets another time than what was looked at before.
    bool relogioFino() const {
        Identidade antes, depois;
        for (int vez = 0; vez < 5; ++vez) {
            pasta.gravar("relogio", "1");
            identificar(pasta / "relogio", Ligacao::kNaoSeguida, antes);
            pasta.gravar("relogio", "2");
            identificar(pasta / "relogio", Ligacao::kNaoSeguida, depois);
            if (antes.mudanca == depois.mudanca) return false;
        }
        return true;
    }
    // Later than what was written so far, by every clock.
    void editar(const char *nome, const char *conteudo) const {
        ::usleep(20'000);
        pasta.gravar(nome, conteudo);
    }
};

} // namespace

// Stands before the C library's.
extern "C" int fdatasync(int fd) {
    if (naDescarga) std::exchange(naDescarga, nullptr)();
    return static_cast<int>(::syscall(SYS_fdatasync, fd));
}

extern "C" int rename(const char *de, const char *para) noexcept {
    const long resultado = ::syscall(SYS_renameat2, AT_FDCWD, de, AT_FDCWD, para, 0);
    if (aoNomear) std::exchange(aoNomear, nullptr)();
    return static_cast<int>(resultado);
}

// The record of a change that is small as long as the journal has the files, but that the journal,
// emptied for it, cannot hold whole: what follows it must still belong to it.
TEST_F(Gravacao, diario_cresce_para_arquivos_inteiros_e_continua) {
    std::string a(std::size_t{3} << 20, 'a'), b(std::size_t{3} << 20, 'b');
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
    EXPECT_TRUE(pasta.ler("a") == a);
    EXPECT_TRUE(pasta.ler("b") == b);
}

// A program that writes as many bytes at once leaves the system's time of the same tick, maybe.
TEST_F(Gravacao, arquivo_marcado_difere_do_que_outro_grava_em_seguida) {
    pasta.gravar("a", "00");
    for (int vez = 0; vez < 100; ++vez) {
        SCOPED_TRACE(vez);
        ASSERT_EQ(mudar("a", vez % 2 == 0 ? "10" : "20"), ZEL_OK);
        const auto marcada = identidadeMarcada("a");
        ASSERT_TRUE(marcada);
        Identidade achada;
        ASSERT_EQ(identificar(pasta / "a", Ligacao::kSeguida, achada), Leitura::kLido);
        EXPECT_EQ(achada, *marcada);
        EXPECT_NE(achada.escrita, achada.mudanca);
        pasta.gravar("a", "99");
        ASSERT_EQ(identificar(pasta / "a", Ligacao::kSeguida, achada), Leitura::kLido);
        EXPECT_NE(achada, *marcada);
    }
}

// An editor saves by a rename while the record is flushed: what was answered is not lost with the
// file that had the name before. It may have been written before it got the name, or not: its times
// differ, as those of a record do, or are one.
TEST_F(Gravacao, arquivo_trocado_durante_a_descarga_recebe_a_mudanca) {
    for (const bool umTempo : {false, true}) {
        SCOPED_TRACE(umTempo);
        pasta.gravar("a", "00");
        recomecar();
        ASSERT_EQ(mudar("a", "10"), ZEL_OK);
        naDescarga = [&] {
            editar("novo", umTempo ? "" : "99");
            ::usleep(20'000);
            fs::rename(pasta / "novo", pasta / "a");
            if (umTempo) pasta.gravar("a", "99");
        };
        ASSERT_EQ(mudar("a", "20"), ZEL_OK);
        EXPECT_FALSE(identidadeMarcada("a"));
        recomecar();
        EXPECT_EQ(pasta.ler("a"), "20");
    }
}

// The same in a call that changes the configuration twice: memory holds what the file holds.
TEST_F(Gravacao, segunda_mudanca_da_chamada_le_a_primeira) {
    ASSERT_EQ(inicializarConfig(), ZEL_OK);
    const auto alterar = [](Chave chave, const char *valor) {
        const Alteracao alteracao{chave, valor};
        return alterarConfig({&alteracao, 1});
    };
    ASSERT_EQ(alterar(R"(IDE\nNF)"_chave, "222"), ZEL_OK);
    const std::string antes = pasta.ler("ZEL_Framework.xml");
    naDescarga = [&] {
        pasta.gravar("novo", antes);
        fs::rename(pasta / "novo", pasta / "ZEL_Framework.xml");
    };
    ASSERT_EQ(alterar(R"(IDE\nNF)"_chave, "333"), ZEL_OK);
    ASSERT_EQ(alterar(R"(IDE\cUF)"_chave, "35"), ZEL_OK);
    EXPECT_EQ(valorConfig(R"(IDE\nNF)"_chave), "333");
    EXPECT_NE(pasta.ler("ZEL_Framework.xml").find("<nNF>333<"), std::string::npos);
}

// Of the record that takes the place of its predecessor's end only the first block got to the disk:
// what somebody did in between stays.
TEST_F(Gravacao, registro_rasgado_guarda_o_fim_do_anterior) {
    pasta.gravar("a", "00");
    ASSERT_EQ(gravar({{.nome = "a", .depois = "10"}, {.nome = "doc", .depois = "<NFe/>"}}), ZEL_OK);
    editar("a", "99");
    fs::remove(pasta / "doc");
    const std::string antes = pasta.ler(kDiario);
    const std::string grande(3 * kBloco, 'b');
    ASSERT_EQ(gravar({{.nome = "b", .depois = grande}}), ZEL_OK);
    std::string diario = pasta.ler(kDiario);
    diario.replace(2 * kBloco, diario.size(), antes, 2 * kBloco, antes.size());
    fs::remove(pasta / "b");
    pasta.gravar(kDiario, diario);
    recomecar();
    EXPECT_EQ(pasta.ler("a"), "99");
    EXPECT_FALSE(fs::exists(pasta / "doc"));
    EXPECT_FALSE(fs::exists(pasta / "b"));
}

// The process died with its record on the disk and its file not made. Who makes it notes that.
TEST_F(Gravacao, o_que_se_acertou_e_depois_se_levou_nao_volta) {
    ASSERT_EQ(gravar({{.nome = "doc", .depois = "<NFe/>"}}), ZEL_OK);
    std::string diario = pasta.ler(kDiario);
    diario.replace(kBloco, kBloco, kBloco, '\0');
    pasta.gravar(kDiario, diario);
    fs::remove(pasta / "doc");
    recomecar();
    EXPECT_EQ(pasta.ler("doc"), "<NFe/>");
    ::usleep(20'000);
    fs::remove(pasta / "doc");
    EXPECT_EQ(emFilho([] { return gravar({{.nome = "b", .depois = "b"}}); }), ZEL_OK);
    ASSERT_EQ(acompanharDiario(), ZEL_OK);
    EXPECT_FALSE(fs::exists(pasta / "doc"));
}

// The sender waits for a document, and takes it before this process looks at it.
TEST_F(Gravacao, o_que_se_leva_ao_ganhar_o_nome_nao_volta) {
    aoNomear = [&] { fs::remove(pasta / "doc"); };
    ASSERT_EQ(gravar({{.nome = "doc", .depois = "<NFe/>"}}), ZEL_OK);
    ASSERT_EQ(acompanharDiario(), ZEL_OK);
    EXPECT_FALSE(fs::exists(pasta / "doc"));
}

// The sender takes a document; the next change of names gives the directory a later time.
TEST_F(Gravacao, o_que_se_levou_antes_de_outra_mudanca_de_nomes_nao_volta) {
    ASSERT_EQ(gravar({{.nome = "doc", .depois = "<NFe/>"}}), ZEL_OK);
    fs::remove(pasta / "doc");
    ASSERT_EQ(gravar({{.nome = "b", .depois = "b"}}), ZEL_OK);
    recomecar();
    EXPECT_FALSE(fs::exists(pasta / "doc"));
    ASSERT_EQ(gravar({{.nome = "doc", .depois = "<outra/>"}}), ZEL_OK);
    recomecar();
    EXPECT_EQ(pasta.ler("doc"), "<outra/>");
}

// Another process found a record damaged, and began the journal anew: this one's end is none.
TEST_F(Gravacao, recomecado_por_outro_que_nao_viu_o_mesmo_fim) {
    for (const std::size_t danificado : {std::size_t{0}, kBloco}) {
        SCOPED_TRACE(danificado);
        pasta.gravar("a", "00");
        recomecar();
        ASSERT_EQ(mudar("a", "10"), ZEL_OK);
        ASSERT_EQ(mudar("a", "20"), ZEL_OK);
        std::string diario = pasta.ler(kDiario);
        diario[danificado + kSetor] ^= 1;
        pasta.gravar(kDiario, diario);
        EXPECT_EQ(emFilho([] {
                      return acompanharDiario() == ZEL_OK ? gravar({{.nome = "b", .depois = "b"}})
                                                          : 0;
                  }),
                  ZEL_OK);
        ASSERT_EQ(acompanharDiario(), ZEL_OK);
        ASSERT_EQ(mudar("a", "30"), ZEL_OK);
        esquecerDiario();
        rasgar("a");
        ASSERT_EQ(acompanharDiario(), ZEL_OK);
        EXPECT_EQ(pasta.ler("a"), "30");
        fs::remove(pasta / kDiario);
    }
}

TEST_F(Gravacao, diario_levado_e_refeito_na_abertura_seguinte) {
    ASSERT_EQ(gravar({{.nome = "a", .depois = "1"}}), ZEL_OK);
    fs::rename(pasta / kDiario, pasta / "levado");
    aliviarDiario();
    ASSERT_EQ(gravar({{.nome = "a", .depois = "2"}}), ZEL_OK);
    EXPECT_TRUE(fs::exists(pasta / kDiario));
}

// Nothing lies between the call and the edit, which takes another inode or the same one. Where a
// file's time moves on in steps an edit in its place has to leave bytes that it never had.
TEST_F(Gravacao, o_que_se_faz_logo_depois_fica) {
    const bool fino = relogioFino();
    for (const bool troca : {true, false}) {
        SCOPED_TRACE(troca);
        pasta.gravar("a", "00");
        recomecar();
        for (int vez = 0; vez < 50; ++vez) {
            ASSERT_EQ(mudar("a", vez % 2 == 0 ? "10" : "20"), ZEL_OK);
            const std::string edicao(2, fino ? '9' : static_cast<char>('A' + vez));
            pasta.gravar(troca ? "novo" : "a", edicao);
            if (troca) fs::rename(pasta / "novo", pasta / "a");
            recomecar();
            ASSERT_EQ(pasta.ler("a"), edicao);
            ASSERT_EQ(gravar({{.nome = "doc", .depois = "<NFe/>"}}), ZEL_OK);
            fs::remove(pasta / "doc");
            if (fino) recomecar();
            ASSERT_FALSE(fs::exists(pasta / "doc"));
        }
    }
}

// Of another directory on the same disk, with its inode; and copied over this one's file.
TEST_F(Gravacao, diario_de_outro_caixa_e_guardado_e_nao_usado) {
    for (const bool copiado : {false, true}) {
        SCOPED_TRACE(copiado);
        const PastaTemporaria outra;
        serDiretorioDeDados(outra);
        ASSERT_EQ(gravar({{.nome = "a", .depois = "dele"}}), ZEL_OK);
        const std::string dele = outra.ler(kDiario);
        serDiretorioDeDados(pasta);
        ASSERT_EQ(gravar({{.nome = "a", .depois = "daqui"}}), ZEL_OK);
        esquecerDiario();
        if (copiado)
            pasta.gravar(kDiario, dele);
        else
            fs::rename(outra / kDiario, pasta / kDiario);
        ASSERT_EQ(acompanharDiario(), ZEL_OK);
        EXPECT_EQ(pasta.ler("a"), "daqui");
        ASSERT_EQ(gravar({{.nome = "b", .depois = "1"}}), ZEL_OK);
        const std::string guardado = pasta.ler("ZEL_Framework.diario.danificado");
        EXPECT_FALSE(guardado.empty());
        EXPECT_TRUE(dele.starts_with(guardado));
    }
}

// The disk lost the last records of a journal, not the files that followed them.
TEST_F(Gravacao, fim_de_zeros_nao_leva_o_que_os_arquivos_tem) {
    for (std::size_t registros = 1; registros <= 3; ++registros) {
        SCOPED_TRACE(registros);
        fs::remove(pasta / kDiario);
        recomecar();
        pasta.gravar("a", "00");
        ASSERT_EQ(mudar("a", "10"), ZEL_OK);
        ASSERT_EQ(gravar({{.nome = "b", .depois = "1"}}), ZEL_OK);
        ASSERT_EQ(mudar("a", "20"), ZEL_OK);
        const MudancaArquivo fim{
            .nome = "b", .depois = "2", .fim = MudancaArquivo::Fim{1, 1, [] { return "12"; }}};
        ASSERT_EQ(gravar({fim}), ZEL_OK);
        std::string diario = pasta.ler(kDiario);
        const std::size_t lugar = registros * kBloco;
        pasta.gravar(kDiario,
                     diario.replace(lugar, diario.size() - lugar, diario.size() - lugar, '\0'));
        // Once more, after a power cut that took what emptying it wrote over the first record.
        for (const bool outraVez : {false, true}) {
            SCOPED_TRACE(outraVez);
            const std::string vazio = pasta.ler(kDiario);
            if (outraVez)
                pasta.gravar(kDiario, diario.replace(lugar, kBloco, vazio, lugar, kBloco));
            recomecar();
            EXPECT_EQ(pasta.ler("a"), "20");
            EXPECT_EQ(pasta.ler("b"), "12");
        }
    }
}

// A file of "ab" of which a record makes "aB" in its place, and when it had followed (0: unknown);
// then what is found.
TEST(EstadosDiario, de_quem_e_o_que_se_acha) {
    constexpr std::int64_t kSegundo = 1'000'000'000, kMarca = 101 * kSegundo + 7,
                           kPasso = 101 * kSegundo + 1, kSeguido = kMarca + kSegundo,
                           kDepois = kSeguido + 1, kAntes = 50 * kSegundo;
    const struct {
        const char *descricao;
        std::int64_t seguido;
        Identidade achada;
        const char *conteudo;
        bool deOutro;
        bool terminado = false;
    } casos[] = {
        {"torn as left", kSeguido, {1, 0, kPasso, kMarca}, "xx", false},
        {"another mode", kSeguido, {1, 0, kDepois, kMarca}, "xx", false},
        {"whole seconds", kSeguido, {1, 0, kPasso, 98 * kSegundo}, "xx", false},
        {"before its time", kSeguido, {1, 0, kPasso, kPasso}, "ab", false},
        {"short", kSeguido, {1, 0, kPasso, kPasso}, "a", false},
        {"zeros", kSeguido, {1, 0, kPasso, kPasso}, "\0B", false},
        {"byte of nobody", kSeguido, {1, 0, kPasso, kPasso}, "a?", true},
        {"another inode", kSeguido, {2, 0, kPasso, kPasso}, "ab", true},
        {"other bytes", kSeguido, {1, 0, kPasso, kPasso}, "xb", true},
        {"longer", kSeguido, {1, 0, kPasso, kPasso}, "aBc", true},
        {"older", kSeguido, {2, 0, kMarca - kSegundo, kMarca - kSegundo}, "xx", false},
        {"of before", kSeguido, {2, 0, kPasso, kAntes}, "xx", false},
        {"edit in the whole second", kSeguido, {1, 0, 101 * kSegundo, 101 * kSegundo}, "a?", true},
        {"backup of before in the call", kSeguido, {1, 0, kPasso + 1, kAntes}, "xx", true},
        {"backup of before", kSeguido, {1, 0, kDepois, kAntes}, "ab", true},
        {"later", kSeguido, {1, 0, kDepois, kDepois}, "ab", true},
        {"of a lost record", 0, {1, 0, kPasso, kMarca + 1}, "ab", true},
        {"not followed", 0, {2, 0, kDepois, kDepois}, "xx", false},
        {"renamed in the call", 0, {2, 0, kPasso, kMarca + 1}, "xx", false, true},
        {"a minute later", 0, {1, 0, 200 * kSegundo, 200 * kSegundo}, "ab", true},
    };
    for (const auto &caso : casos) {
        SCOPED_TRACE(caso.descricao);
        Diario::Conteudo conteudo;
        RegistroDiario registro;
        registro.momento = kMarca;
        registro.mudancas = {
            {.nome = "a", .lugar = kAntes, .antes = kPasso, .bytes = "ab", .noLugar = true},
            {.nome = "a",
             .forma = FormaMudanca::kTrecho,
             .lugar = 1,
             .antes = 1,
             .bytes = "B",
             .noLugar = true}};
        conteudo.registros.push_back(registro);
        conteudo.seguido = caso.seguido;
        conteudo.terminado = caso.terminado;
        const EstadosDiario estados(conteudo);
        EXPECT_EQ(estados.arquivos().at("a").ehDeOutro(caso.achada, caso.conteudo), caso.deOutro);
    }
}

// The clock was an hour ahead and was put right: what comes back from before that is later than the
// record, and nobody else's all the same.
TEST(EstadosDiario, arquivo_de_antes_do_relogio_atrasado_nao_e_de_outro) {
    Diario::Conteudo conteudo;
    RegistroDiario registro;
    registro.momento = 1001;
    registro.mudancas = {{.nome = "a", .lugar = 1100, .antes = 1100, .bytes = "10"}};
    conteudo.registros.push_back(registro);
    conteudo.seguido = 1001;
    const EstadosDiario estados(conteudo);
    const EstadoDiario &a = estados.arquivos().at("a");
    EXPECT_FALSE(a.ehDeOutro({1, 0, 1100, 1100}, ""));
    EXPECT_TRUE(a.ehDeOutro({1, 0, 1200, 1200}, ""));
}
