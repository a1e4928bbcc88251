// SPDX-License-Identifier: MIT
// Files that were cut short, hit by a bad sector, edited by hand or mistaken for others: no crash
// and no hang, what was whole is kept, and a damaged original is kept beside before it is replaced.
#include "apoio/Passos.h"
#include "apoio/Trecho.h"
#include "fault/Ensaio.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <random>

namespace {

constexpr const char *kRegistros = "ArqPersist.bin", *kConfig = "ZEL_Framework.xml";

struct Dano {
    std::string descricao;
    std::string bytes;
};

std::vector<Dano> prefixos(const std::string &texto) {
    std::vector<Dano> danos;
    // In a selection: some, and of the records those that end with one.
    const bool registros = texto.starts_with("01|");
    for (std::size_t n = 0; n < texto.size(); ++n)
        if (tudo() || n % 97 == 0 || (registros && texto[n - 1] == '\n'))
            danos.push_back({"prefix of " + std::to_string(n), texto.substr(0, n)});
    return danos;
}

// One to eight bytes hit, the same ones in every run.
std::vector<Dano> batidas(const std::string &texto) {
    std::vector<Dano> danos;
    for (unsigned semente = 1; semente <= (tudo() ? 1000U : 100U); ++semente) {
        std::mt19937 sorte(semente);
        std::string bytes = texto;
        for (auto vezes = sorte() % 8 + 1; vezes > 0; --vezes)
            bytes[sorte() % bytes.size()] = static_cast<char>(sorte());
        danos.push_back({"seed " + std::to_string(semente), std::move(bytes)});
    }
    return danos;
}

std::vector<Dano> alheios(const disco::Fotografia &arquivos) {
    std::string todos;
    for (int i = 0; i < 256 * 64; ++i)
        todos.push_back(static_cast<char>(i));
    return {{"nothing", ""},
            {"zeros", std::string(100000, '\0')},
            {"line ends", std::string(100000, '\n')},
            {"one long line", std::string(1000000, 'x')},
            {"every byte", todos},
            {"the other file", arquivos.at(kConfig) + arquivos.at(kRegistros)},
            {"twice itself", arquivos.at(kRegistros) + arquivos.at(kRegistros)},
            {"records out of order", "06|\r\n05|000|<pag></pag>\r\n02|1|<prod></prod>\r\n01|\r\n"},
            {"an item without end", "01|\r\n02|1|<prod><cProd>\r\n"},
            {"another root", "<html><FRAMEWORKZEL></html></FRAMEWORKZEL>"},
            {"a page", "<!DOCTYPE html><html><body>404</body></html>"}};
}

// The complete lines of the text.
std::string_view inteiro(std::string_view texto) {
    return texto.substr(0, texto.rfind('\n') + 1);
}

bool ehSubsequencia(std::string_view menor, std::string_view maior) {
    std::size_t i = 0;
    for (std::size_t j = 0; j < maior.size() && i < menor.size(); ++j)
        if (menor[i] == maior[j]) ++i;
    return i == menor.size();
}

bool temLinhasDe(std::string_view linhas, std::string_view texto) {
    for (std::size_t fim; (fim = linhas.find('\n')) != linhas.npos; linhas.remove_prefix(fim + 1))
        if (texto.find(linhas.substr(0, fim + 1)) == texto.npos) return false;
    return true;
}

// Whatever was in progress, the next receipt is a right one.
void venderOutro(const Funcoes &f, const std::string &diretorio) {
    f.regAlterarValor_ZEL("CONFIGURACAO\\estadoCFe", "0");
    EXPECT_EQ(avancar(f, 5), 5);
    EXPECT_TRUE(contem(disco::fotografar(diretorio)["documentosEnvio.xml"], "<vNF>10.00</vNF>"));
}

// Items whose lines stand whole in front of the first byte that differs.
int itensIntocados(const std::string &original, const std::string &danificado) {
    const auto [x, y] =
        std::mismatch(original.begin(), original.end(), danificado.begin(), danificado.end());
    const std::string_view antes = inteiro({original.begin(), x});
    return vezesEm(antes, "\n02|");
}

class Danos : public testing::Test {
public:
    // A receipt of three items, in state 2.
    Danos() : ensaio_(roteiros().front()), arquivos_(ensaio_.retrato(8).arquivos) {
        // Where there is a journal it puts right what was damaged.
        arquivos_.erase("ZEL_Framework.diario");
    }

    // Each damage in a process of its own: `conferir` finds the damaged file in place.
    template <class Conferir>
    void experimentar(const char *arquivo, const std::vector<Dano> &danos,
                      Conferir conferir) const {
        for (const Dano &dano : danos) {
            SCOPED_TRACE(dano.descricao);
            disco::Fotografia foto = arquivos_;
            foto[arquivo] = dano.bytes;
            disco::revelar(ensaio_.diretorio(), foto);
            emProcessoNovo(ensaio_.diretorio(), [&](const Funcoes &f) { conferir(f, dano); });
        }
        std::cout << "[ falhas ] arquivos danificados " << danos.size() << '\n';
    }

    void experimentarTodos(const char *arquivo,
                           void (Danos::*conferir)(const Funcoes &, const Dano &) const) const {
        const std::string bytes = arquivos_.at(arquivo);
        for (const auto &danos : {prefixos(bytes), batidas(bytes), alheios(arquivos_)})
            experimentar(arquivo, danos,
                         [&](const Funcoes &f, const Dano &dano) { (this->*conferir)(f, dano); });
    }

    // The next sale keeps every complete line, or the file as it was found.
    void conferirRegistros(const Funcoes &f, const Dano &dano) const {
        char info[ZEL_TAMANHO_INFO];
        f.rInfoEstendida_ZEL("1", info);
        EXPECT_GE(std::atoi(info), itensIntocados(arquivos_.at(kRegistros), dano.bytes));
        if (vender(f) == ZEL_OK) {
            disco::Fotografia depois = disco::fotografar(ensaio_.diretorio());
            EXPECT_TRUE(depois[std::string(kRegistros) + ".danificado"] == dano.bytes ||
                        temLinhasDe(inteiro(dano.bytes), depois[kRegistros]))
                << "something whole is lost";
        }
        venderOutro(f, ensaio_.diretorio());
    }

    // Starting keeps what the file says, or the file as it was found.
    void conferirConfig(const Funcoes &f, const Dano &dano) const {
        vender(f);
        EXPECT_EQ(f.aCFInicializar_ZEL(), ZEL_OK);
        disco::Fotografia depois = disco::fotografar(ensaio_.diretorio());
        const auto copia = depois.find(std::string(kConfig) + ".danificado");
        if (copia != depois.end()) {
            EXPECT_EQ(copia->second, dano.bytes);
            venderOutro(f, ensaio_.diretorio());
        } else {
            EXPECT_TRUE(ehSubsequencia(inteiro(dano.bytes), depois[kConfig])) << "overwritten";
            abrir(f);
            vender(f);
        }
    }

    Ensaio ensaio_;
    disco::Fotografia arquivos_;
};

TEST_F(Danos, nos_registros) {
    experimentarTodos(kRegistros, &Danos::conferirRegistros);
}

TEST_F(Danos, na_configuracao) {
    experimentarTodos(kConfig, &Danos::conferirConfig);
}

// What waits to take a file's place is read by the next process, too.
TEST_F(Danos, no_que_espera) {
    const std::string registros = ensaio_.retrato(17).arquivos.at(kRegistros); // totalized
    const auto conferir = [&](const Funcoes &f, const Dano &) {
        char info[ZEL_TAMANHO_INFO];
        f.rInfoEstendida_ZEL("1", info);
        EXPECT_STREQ(info, "3") << "the receipt in place is the one that belongs to the state";
        EXPECT_EQ(vender(f), ZEL_OK);
    };
    experimentar("ArqPersist.tmp", prefixos(registros), conferir);
    experimentar("ArqPersist.tmp", alheios(arquivos_), conferir);
}

// The token signs the QR code: whoever reads it can issue in the taxpayer's name.
TEST_F(Danos, segredo_fora_de_todo_arquivo) {
    constexpr std::string_view kSegredo = "SEGREDO-7F3A-DO-CONTRIBUINTE";
    for (const Roteiro &roteiro : roteiros()) {
        SCOPED_TRACE(roteiro.nome);
        disco::revelar(ensaio_.diretorio(), {});
        const Processo processo(ensaio_.diretorio());
        const Funcoes &f = processo.funcoes();
        ASSERT_EQ(f.regAlterarValor_ZEL("CONFIGURACAO\\TokenSefaz", kSegredo.data()), ZEL_OK);
        for (const Passo &passo : roteiro.passos)
            ASSERT_GT(passo.fazer(f, ensaio_.diretorio()), 0) << passo.nome;
        for (const auto &[nome, bytes] : disco::fotografar(ensaio_.diretorio())) {
            const bool guarda = nome == kConfig || nome == "ZEL_Framework.diario";
            if (!guarda) {
                EXPECT_EQ(bytes.find(kSegredo), std::string::npos) << nome;
                continue;
            }
            if (nome == kConfig) {
                EXPECT_NE(bytes.find(kSegredo), std::string::npos) << "it was set";
            }
            EXPECT_EQ(std::filesystem::status(ensaio_.diretorio() + nome).permissions(),
                      std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
        }
    }
}

} // namespace
