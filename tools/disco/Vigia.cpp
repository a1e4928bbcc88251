// SPDX-License-Identifier: MIT
#include "disco/Vigia.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <map>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace disco {

namespace {

Vigia *vigia = nullptr;
long relogio = 0;

// By inode, the true times of a file that was aged and those that are told instead.
std::map<ino_t, std::pair<Tempos, Tempos>> &envelhecidos() {
    static std::map<ino_t, std::pair<Tempos, Tempos>> tempos;
    return tempos;
}

std::map<ino_t, ino_t> &nosContados() {
    static std::map<ino_t, ino_t> nos;
    return nos;
}

// By path, what was told last.
std::map<std::string, Tempos> &vistos() {
    static std::map<std::string, Tempos> tempos;
    return tempos;
}

void trocar(timespec &tempo, const timespec &verdadeiro, const timespec &contado) {
    if (tempo.tv_sec == verdadeiro.tv_sec && tempo.tv_nsec == verdadeiro.tv_nsec) tempo = contado;
}

int contarIdade(int resultado, struct stat *dados) {
    if (resultado != 0) return resultado;
    const auto antigo = envelhecidos().find(dados->st_ino);
    if (const auto no = nosContados().find(dados->st_ino); no != nosContados().end())
        dados->st_ino = no->second;
    if (antigo == envelhecidos().end()) return resultado;
    const auto &[verdadeiros, contados] = antigo->second;
    trocar(dados->st_ctim, verdadeiros.mudanca, contados.mudanca);
    trocar(dados->st_mtim, verdadeiros.escrita, contados.escrita);
    return resultado;
}

// The C library's own function that the one defined here replaces.
template <class Funcao>
Funcao *proxima(const char *nome) {
    return reinterpret_cast<Funcao *>(dlsym(RTLD_NEXT, nome));
}

std::string absoluto(const char *caminho) {
    if (caminho[0] == '/') return caminho;
    char atual[4096];
    return getcwd(atual, sizeof atual) == nullptr ? caminho : std::string(atual) + "/" + caminho;
}

// What a descriptor was opened for, perhaps before anybody watched.
std::string caminhoDe(int fd) {
    char alvo[4096];
    const std::string ligacao = "/proc/self/fd/" + std::to_string(fd);
    const ssize_t tamanho = readlink(ligacao.c_str(), alvo, sizeof alvo);
    return tamanho < 0 ? "" : std::string(alvo, static_cast<std::size_t>(tamanho));
}

using Destino = Vigia::Destino;

// Makes the call, or not, as the plan has it. `fazer(destino)` makes it; `narrar(resultado)`
// reports what a success did.
template <class Fazer, class Narrar>
auto passar(Chamada chamada, Fazer fazer, Narrar narrar) {
    using Resultado = decltype(fazer(Destino::kFazer));
    if (vigia == nullptr) return fazer(Destino::kFazer);
    const Destino destino = vigia->julgar(chamada);
    if (destino == Destino::kRecusar) return static_cast<Resultado>(-1);
    const Resultado resultado = fazer(destino);
    // The record allocates; the caller looks at errno.
    const int erro = errno;
    if (resultado >= 0) {
        Evento evento = narrar(resultado);
        evento.chamada = chamada;
        vigia->anotar(std::move(evento));
    }
    errno = erro;
    return resultado;
}

} // namespace

bool muda(Chamada chamada) {
    return chamada != Chamada::kLer && chamada != Chamada::kSituacao &&
           chamada != Chamada::kFechar && chamada != Chamada::kTravar;
}

Vigia::Vigia(Plano plano) : plano_(plano) {
    vigia = this;
}

Vigia::~Vigia() {
    vigia = nullptr;
}

Vigia::Destino Vigia::julgar(Chamada chamada) {
    using Ato = Plano::Ato;
    if (cheio_ && chamada == Chamada::kEscrever) {
        cheio_ = false;
        errno = ENOSPC;
        return Destino::kRecusar;
    }
    if (plano_.soMudancas && !muda(chamada)) return Destino::kFazer;
    ++contadas_;
    if (plano_.ato == Ato::kNada || contadas_ < plano_.em ||
        (contadas_ > plano_.em && plano_.ato != Ato::kErroSempre))
        return Destino::kFazer;
    const bool cortada = plano_.ato == Ato::kMorrerNoMeio || plano_.ato == Ato::kCurta ||
                         plano_.ato == Ato::kCurtaCheia;
    if (cortada && chamada != Chamada::kEscrever) return Destino::kFazer;
    disparou_ = true;
    if (plano_.ato == Ato::kMorrer) _exit(kMorto);
    if (plano_.ato == Ato::kSair) std::exit(kMorto);
    if (plano_.ato == Ato::kMorrerNoMeio) return Destino::kMetadeEMorrer;
    cheio_ = plano_.ato == Ato::kCurtaCheia;
    errno = plano_.erro;
    return cortada ? Destino::kMetade : Destino::kRecusar;
}

void envelhecer(const std::string &diretorio, Idade idade) {
    namespace fs = std::filesystem;
    envelhecidos().clear();
    nosContados().clear();
    std::vector<fs::path> todos{diretorio};
    for (const fs::directory_entry &entrada : fs::directory_iterator(diretorio))
        todos.push_back(entrada.path());
    for (const fs::path &um : todos) {
        struct stat dados {};
        if (::stat(um.c_str(), &dados) != 0) continue;
        const auto visto = vistos().find(um);
        // A directory's time goes to the disk together with the names in it.
        const bool recente =
            idade == Idade::kVista && visto != vistos().end() && !S_ISDIR(dados.st_mode);
        envelhecidos()[dados.st_ino] = {{dados.st_ctim, dados.st_mtim},
                                        recente ? visto->second : Tempos{{1, 0}, {1, 0}}};
    }
}

void contarNo(const std::string &caminho, ino_t no) {
    struct stat dados {};
    if (::stat(caminho.c_str(), &dados) == 0) nosContados()[dados.st_ino] = no;
}

void ver(const Evento &evento) {
    if (evento.chamada == Chamada::kSituacao && !evento.caminho.empty())
        vistos()[evento.caminho] = evento.tempos;
}

void fixarRelogio(long segundos) {
    relogio = segundos;
}

namespace {

// A call reported by its descriptor alone.
template <class Real>
int comDescritor(Chamada chamada, int fd, Real real) {
    return passar(
        chamada, [&](Destino) { return real(); },
        [&](int) { return Evento{.fd = fd, .caminho = caminhoDe(fd)}; });
}

template <class Real>
int comCaminhos(Chamada chamada, const char *caminho, const char *outro, Real real) {
    return passar(
        chamada, [&](Destino) { return real(); },
        [&](int) {
            return Evento{.caminho = absoluto(caminho),
                          .outro = outro == nullptr ? "" : absoluto(outro)};
        });
}

template <class Real>
int perguntar(const char *caminho, struct stat *dados, Real real) {
    return passar(
        Chamada::kSituacao, [&](Destino) { return contarIdade(real(caminho, dados), dados); },
        [&](int) {
            return Evento{.caminho = absoluto(caminho), .tempos = {dados->st_ctim, dados->st_mtim}};
        });
}

template <class Real>
ssize_t escrever(int fd, const void *dados, std::size_t tamanho, std::optional<std::size_t> lugar,
                 Real real) {
    const auto fazer = [&](Destino destino) {
        if (destino == Destino::kFazer) return real(tamanho);
        const ssize_t metade = real((tamanho + 1) / 2);
        if (destino == Destino::kMetadeEMorrer) _exit(kMorto);
        return metade;
    };
    return passar(Chamada::kEscrever, fazer, [&](ssize_t escritos) {
        return Evento{
            .fd = fd,
            .caminho = caminhoDe(fd),
            .bytes = {static_cast<const char *>(dados), static_cast<std::size_t>(escritos)},
            .lugar = lugar};
    });
}

} // namespace

} // namespace disco

using namespace disco;

// The file functions of the C library, for this program and all that it loads.
extern "C" {

int open(const char *caminho, int modo, ...) {
    static const auto real = proxima<int(const char *, int, mode_t)>("open");
    mode_t permissoes = 0;
    if ((modo & O_CREAT) != 0) {
        va_list argumentos;
        va_start(argumentos, modo);
        permissoes = va_arg(argumentos, mode_t);
        va_end(argumentos);
    }
    const bool cria = vigia != nullptr && (modo & O_CREAT) != 0 && access(caminho, F_OK) != 0;
    return passar(
        Chamada::kAbrir, [&](Destino) { return real(caminho, modo, permissoes); },
        [&](int fd) { return Evento{.fd = fd, .cria = cria, .caminho = absoluto(caminho)}; });
}

ssize_t read(int fd, void *dados, size_t tamanho) {
    static const auto real = proxima<ssize_t(int, void *, size_t)>("read");
    return passar(
        Chamada::kLer, [&](Destino) { return real(fd, dados, tamanho); },
        [&](ssize_t lidos) {
            return Evento{.fd = fd, .tamanho = static_cast<std::size_t>(lidos)};
        });
}

ssize_t pread(int fd, void *dados, size_t tamanho, off_t lugar) {
    static const auto real = proxima<ssize_t(int, void *, size_t, off_t)>("pread");
    return passar(
        Chamada::kLer, [&](Destino) { return real(fd, dados, tamanho, lugar); },
        [&](ssize_t lidos) {
            return Evento{.fd = fd, .tamanho = static_cast<std::size_t>(lidos)};
        });
}

ssize_t write(int fd, const void *dados, size_t tamanho) {
    static const auto real = proxima<ssize_t(int, const void *, size_t)>("write");
    return escrever(fd, dados, tamanho, {}, [&](size_t quanto) { return real(fd, dados, quanto); });
}

ssize_t pwrite(int fd, const void *dados, size_t tamanho, off_t lugar) {
    static const auto real = proxima<ssize_t(int, const void *, size_t, off_t)>("pwrite");
    return escrever(fd, dados, tamanho, static_cast<std::size_t>(lugar),
                    [&](size_t quanto) { return real(fd, dados, quanto, lugar); });
}

int fsync(int fd) {
    static const auto real = proxima<int(int)>("fsync");
    return comDescritor(Chamada::kDescarregar, fd, [&] { return real(fd); });
}

int fdatasync(int fd) {
    static const auto real = proxima<int(int)>("fdatasync");
    return comDescritor(Chamada::kDescarregar, fd, [&] { return real(fd); });
}

int close(int fd) {
    static const auto real = proxima<int(int)>("close");
    const int fechado = real(fd);
    // A refused close has closed all the same.
    return comDescritor(Chamada::kFechar, fd, [&] { return fechado; });
}

int fcntl(int fd, int comando, ...) {
    static const auto real = proxima<int(int, int, void *)>("fcntl");
    va_list argumentos;
    va_start(argumentos, comando);
    void *argumento = va_arg(argumentos, void *);
    va_end(argumentos);
    if (comando != F_OFD_SETLK) return real(fd, comando, argumento);
    return comDescritor(Chamada::kTravar, fd, [&] { return real(fd, comando, argumento); });
}

int fchmod(int fd, mode_t modo) noexcept {
    static const auto real = proxima<int(int, mode_t)>("fchmod");
    return comDescritor(Chamada::kPermissao, fd, [&] { return real(fd, modo); });
}

int fchown(int fd, uid_t dono, gid_t grupo) noexcept {
    static const auto real = proxima<int(int, uid_t, gid_t)>("fchown");
    return comDescritor(Chamada::kPermissao, fd, [&] { return real(fd, dono, grupo); });
}

int futimens(int fd, const timespec momentos[2]) noexcept {
    static const auto real = proxima<int(int, const timespec[2])>("futimens");
    return comDescritor(Chamada::kPermissao, fd, [&] { return real(fd, momentos); });
}

int fstat(int fd, struct stat *dados) noexcept {
    static const auto real = proxima<int(int, struct stat *)>("fstat");
    return passar(
        Chamada::kSituacao, [&](Destino) { return contarIdade(real(fd, dados), dados); },
        [&](int) {
            return Evento{
                .fd = fd, .caminho = caminhoDe(fd), .tempos = {dados->st_ctim, dados->st_mtim}};
        });
}

int lstat(const char *caminho, struct stat *dados) noexcept {
    static const auto real = proxima<int(const char *, struct stat *)>("lstat");
    return perguntar(caminho, dados, real);
}

int stat(const char *caminho, struct stat *dados) noexcept {
    static const auto real = proxima<int(const char *, struct stat *)>("stat");
    return perguntar(caminho, dados, real);
}

int ftruncate(int fd, off_t tamanho) noexcept {
    static const auto real = proxima<int(int, off_t)>("ftruncate");
    return passar(
        Chamada::kCortar, [&](Destino) { return real(fd, tamanho); },
        [&](int) { return Evento{.fd = fd, .tamanho = static_cast<std::size_t>(tamanho)}; });
}

int rename(const char *de, const char *para) noexcept {
    static const auto real = proxima<int(const char *, const char *)>("rename");
    return comCaminhos(Chamada::kRenomear, de, para, [&] { return real(de, para); });
}

int renameat2(int deOnde, const char *de, int paraOnde, const char *para, unsigned modo) noexcept {
    static const auto real =
        proxima<int(int, const char *, int, const char *, unsigned)>("renameat2");
    return comCaminhos(Chamada::kTrocar, de, para,
                       [&] { return real(deOnde, de, paraOnde, para, modo); });
}

int link(const char *de, const char *para) noexcept {
    static const auto real = proxima<int(const char *, const char *)>("link");
    return comCaminhos(Chamada::kLigar, de, para, [&] { return real(de, para); });
}

int unlink(const char *caminho) noexcept {
    static const auto real = proxima<int(const char *)>("unlink");
    return comCaminhos(Chamada::kRemover, caminho, nullptr, [&] { return real(caminho); });
}

time_t time(time_t *onde) noexcept {
    static const auto real = proxima<time_t(time_t *)>("time");
    const time_t agora = relogio != 0 ? relogio : real(nullptr);
    if (onde != nullptr) *onde = agora;
    return agora;
}

} // extern "C"
