// SPDX-License-Identifier: MIT
#include "fault/Ensaio.h"

#include <algorithm>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <stdexcept>
#include <unistd.h>
#include <utility>

namespace fs = std::filesystem;

namespace {

constexpr long kAgora = 1795600000;
constexpr int kPassoFalhou = 1;
constexpr const char *kTrava = "ZEL_Framework.trava", *kDiario = "ZEL_Framework.diario";

// A process that forks off another one to come after its death is still alive: what it holds locked
// is released through the descriptor that the other one inherits.
void soltarTravasHerdadas() {
    for (const fs::directory_entry &entrada : fs::directory_iterator("/proc/self/fd")) {
        std::error_code fechado;
        const std::string alvo = fs::read_symlink(entrada.path(), fechado).string();
        if (alvo.find(kTrava) == alvo.npos) continue;
        struct flock tudo {};
        tudo.l_type = F_UNLCK;
        fcntl(std::stoi(entrada.path().filename()), F_OFD_SETLK, &tudo);
    }
}

// Beside a file of the library's; those beside a file that the application named are its own.
bool temRascunho(const disco::Fotografia &arquivos) {
    return std::any_of(arquivos.begin(), arquivos.end(), [](const auto &arquivo) {
        return arquivo.first.ends_with(".novo") && !arquivo.first.starts_with("embaralhado") &&
               !arquivo.first.starts_with("claro");
    });
}

// Loaded once and never called by this process, so that each process that forks off finds it as
// new; to load it again for each of them would take most of the time.
const Biblioteca &bibliotecaNova() {
    static const Biblioteca biblioteca(ZEL_BIBLIOTECA);
    return biblioteca;
}

const pid_t kPrimeiroProcesso = getpid();
bool usada = false; // by this process; the first one never does

// Another file is another library to the loader. Made by the first process, for itself and for
// those that it starts: these end in the middle of things and would leave theirs.
class Copia {
public:
    Copia() : diretorio_((fs::temp_directory_path() / "zel-copia-XXXXXX").string()) {
        if (mkdtemp(diretorio_.data()) == nullptr) throw std::runtime_error("no directory");
        fs::copy_file(ZEL_BIBLIOTECA, caminho());
    }
    ~Copia() {
        if (getpid() == kPrimeiroProcesso) fs::remove_all(diretorio_);
    }
    Copia(const Copia &) = delete;
    Copia &operator=(const Copia &) = delete;

    std::string caminho() const { return diretorio_ + "/lib.so"; }

private:
    std::string diretorio_;
};

const Copia kCopia;

} // namespace

Processo::Processo(const std::string &diretorio, bool frio) {
    setenv("ZEL_DIRETORIO", diretorio.c_str(), 1);
    bibliotecaNova();
    const std::string caminho = kCopia.caminho();
    if (getpid() == kPrimeiroProcesso || std::exchange(usada, true)) {
        if (dlopen(caminho.c_str(), RTLD_NOW | RTLD_NOLOAD) != nullptr)
            throw std::runtime_error("the library of an earlier process is still loaded");
        carregada_ = std::make_unique<Biblioteca>(caminho);
    }
    char info[ZEL_TAMANHO_INFO];
    if (!frio) funcoes().rInfoEstendida_ZEL("1", info);
}

const Funcoes &Processo::funcoes() const {
    return (carregada_ ? *carregada_ : bibliotecaNova()).funcoes();
}

namespace {

Retrato retratarArquivos(const std::string &diretorio) {
    Retrato retrato;
    retrato.arquivos = disco::fotografar(diretorio);
    // A record without its line end was not written.
    if (const auto registros = retrato.arquivos.find("ArqPersist.bin");
        registros != retrato.arquivos.end())
        registros->second.resize(registros->second.rfind('\n') + 1);
    // After its root tag a changed configuration ends, a created one has a line end.
    if (const auto config = retrato.arquivos.find("ZEL_Framework.xml");
        config != retrato.arquivos.end())
        config->second.resize(config->second.find_last_not_of("\r\n") + 1);
    // Scratch files: nobody reads them, the next process removes them. The return is the sending
    // component's. The journal is the way there, not what is there.
    std::erase_if(retrato.arquivos, [](const auto &arquivo) {
        return arquivo.first.ends_with(".novo") || arquivo.first.ends_with(".antigo") ||
               arquivo.first == "retorno.xml" || arquivo.first.starts_with(kDiario);
    });
    return retrato;
}

} // namespace

Retrato retratar(const Funcoes &funcoes, const std::string &diretorio) {
    Retrato retrato = retratarArquivos(diretorio);
    char texto[ZEL_TAMANHO_VALOR];
    for (const char *indice : {"1", "3"}) {
        funcoes.rInfoEstendida_ZEL(indice, texto);
        retrato.memoria.emplace_back(texto);
    }
    retrato.memoria.push_back(std::to_string(funcoes.rCFVerificarStatus_ZEL()));
    for (const char *chave : {"IDE\\nNF", "NFCE\\ChaveDeAcesso", "CONFIGURACAO\\TrocoUltimaNFCe"}) {
        funcoes.regRetornarValor_ZEL(chave, texto);
        retrato.memoria.emplace_back(texto);
    }
    return retrato;
}

std::string diferenca(const Retrato &achado, const Retrato &esperado) {
    std::string texto;
    for (std::size_t i = 0; i < achado.memoria.size(); ++i)
        if (achado.memoria[i] != esperado.memoria[i])
            texto += "reported " + achado.memoria[i] + " for " + esperado.memoria[i] + "; ";
    for (const auto &[nome, bytes] : achado.arquivos) {
        const auto outro = esperado.arquivos.find(nome);
        if (outro == esperado.arquivos.end()) {
            texto += nome + " is too much; ";
        } else if (bytes != outro->second) {
            const auto [x, y] = std::mismatch(bytes.begin(), bytes.end(), outro->second.begin(),
                                              outro->second.end());
            texto += nome + " has \"" + std::string(x, bytes.end()).substr(0, 40) + "\" for \"" +
                     std::string(y, outro->second.end()).substr(0, 40) + "\"; ";
        }
    }
    for (const auto &[nome, bytes] : esperado.arquivos)
        if (!achado.arquivos.contains(nome)) texto += nome + " is missing; ";
    return texto;
}

NovasFalhas::NovasFalhas()
    : antes_(testing::UnitTest::GetInstance()->current_test_info()->result()->total_part_count()) {}

int NovasFalhas::codigo() const {
    const NovasFalhas agora;
    return agora.antes_ > antes_ ? 1 : 0;
}

void recusarSe(const char *quando, const std::string &diferenca) {
    if (!diferenca.empty()) ADD_FAILURE() << quando << ": " << diferenca;
}

void emProcessoNovo(const std::string &diretorio,
                    const std::function<void(const Funcoes &)> &conferir) {
    const int resposta = disco::emOutroProcesso([&] {
        const NovasFalhas falhas;
        soltarTravasHerdadas();
        const Processo processo(diretorio);
        conferir(processo.funcoes());
        return falhas.codigo();
    });
    EXPECT_EQ(resposta, 0);
}

Ensaio::Ensaio(const Roteiro &roteiro) : roteiro_(roteiro), meios_(roteiro.passos.size()) {
    disco::fixarRelogio(kAgora);
    // Each in a process that ends without a goodbye, so that the journal goes on.
    const auto tocar = [&](std::size_t passo, const Acao &acao) {
        const std::string memoria = pasta_.caminho() + ".memoria";
        const int resposta = disco::emOutroProcesso([&] {
            const Processo processo(diretorio_);
            const int codigo = acao(processo.funcoes(), diretorio_);
            std::ofstream arquivo(memoria);
            for (const std::string &linha : retratar(processo.funcoes(), diretorio_).memoria)
                arquivo << linha << '\n';
            return codigo > 0 ? 0 : 1;
        });
        if (resposta != 0) throw std::runtime_error(nome(passo));
        Retrato retrato = retratarArquivos(diretorio_);
        std::ifstream arquivo(memoria);
        for (std::string linha; std::getline(arquivo, linha);)
            retrato.memoria.push_back(linha);
        fs::remove(memoria);
        fotos_.push_back(disco::fotografar(diretorio_));
        return retrato;
    };
    retratos_.push_back(tocar(0, [](const Funcoes &, const std::string &) { return 1; }));
    for (std::size_t passo = 0; passo < passos(); ++passo) {
        if (const Acao &meio = roteiro_.passos[passo].meio) {
            meios_[passo] = tocar(passo, meio).arquivos;
            fotos_.pop_back();
            preparar(passo);
        }
        retratos_.push_back(tocar(passo, roteiro_.passos[passo].fazer));
    }
}

Ensaio::~Ensaio() {
    disco::fixarRelogio(0);
}

int Ensaio::chamadas(std::size_t passo, bool soMudancas) const {
    preparar(passo);
    const Processo processo(diretorio_);
    const disco::Vigia vigia({.soMudancas = soMudancas});
    EXPECT_GT(fazer(passo, processo.funcoes()), 0);
    return vigia.contadas();
}

int Ensaio::sob(std::size_t passo, const disco::Plano &plano) const {
    preparar(passo);
    return disco::emOutroProcesso([&] {
        const Processo processo(diretorio_);
        const disco::Vigia vigia(plano);
        return fazer(passo, processo.funcoes()) > 0 ? 0 : kPassoFalhou;
    });
}

std::string Ensaio::foraDoLugar(std::size_t passo, const Retrato &achado) const {
    const Retrato &antes = retrato(passo), &depois = retrato(passo + 1);
    if (achado == antes || achado == depois) return {};
    if (!roteiro_.passos[passo].porPartes) return diferenca(achado, antes);
    for (const auto &[nome, bytes] : achado.arquivos) {
        const auto em = [&, chave = nome, conteudo = bytes](const disco::Fotografia &arquivos) {
            const auto um = arquivos.find(chave);
            return um != arquivos.end() && um->second == conteudo;
        };
        if (!em(antes.arquivos) && !em(depois.arquivos) && !em(meios_[passo]))
            return nome + " is neither that of before nor of after: " + diferenca(achado, antes);
    }
    for (const auto &[nome, bytes] : antes.arquivos)
        if (!achado.arquivos.contains(nome) && depois.arquivos.contains(nome))
            return nome + " is missing";
    return {};
}

std::string Ensaio::diferencaNoFim(std::size_t passo, const Retrato &achado) const {
    if (outroCodigo(passo)) return {};
    return diferenca(achado, retrato(passo + 1));
}

void Ensaio::conferirSucessor(std::size_t passo, bool feito) const {
    // To the end of the roteiro is long: in a selection, one of four goes there.
    const std::size_t fim = tudo() || ++conferidos_ % 4 == 0 ? passos() : passo + 1;
    emProcessoNovo(diretorio_, [&](const Funcoes &f) {
        EXPECT_FALSE(temRascunho(disco::fotografar(diretorio_)))
            << "scratch files of a dead process";
        const Retrato achado = retratar(f, diretorio_);
        const bool depois = achado == retrato(passo + 1);
        if (feito) recusarSe("after it", diferenca(achado, retrato(passo + 1)));
        recusarSe("found", foraDoLugar(passo, achado));
        for (std::size_t i = depois ? passo + 1 : passo; i < fim; ++i)
            EXPECT_GT(fazer(i, f), 0) << nome(i);
        if (depois || !outroCodigo(passo))
            recusarSe("at the end", diferenca(retratar(f, diretorio_), retrato(fim)));
    });
}

bool tudo() {
    return std::getenv("ZEL_FALHAS_TUDO") != nullptr;
}
