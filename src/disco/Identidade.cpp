// SPDX-License-Identifier: MIT
#include "disco/Identidade.h"

#include "recusa/Recusa.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <iterator>
#include <sys/vfs.h>
#include <time.h>

namespace zel {

namespace {

constexpr std::int64_t kSegundo = 1'000'000'000;   // nanoseconds
constexpr std::int64_t kMaiorPasso = 2 * kSegundo; // of a file system's clock: FAT

constexpr std::int64_t emNanossegundos(const timespec &momento) {
    return momento.tv_sec * kSegundo + momento.tv_nsec;
}

} // namespace

std::int64_t agora() {
    timespec momento{};
    ::clock_gettime(CLOCK_REALTIME, &momento);
    return emNanossegundos(momento);
}

bool naoExiste() {
    return errno == ENOENT || errno == ENOTDIR;
}

Identidade identidadeDe(const struct stat &dados) {
    return {dados.st_ino, static_cast<std::uint64_t>(dados.st_size), emNanossegundos(dados.st_ctim),
            emNanossegundos(dados.st_mtim)};
}

Leitura identificar(const std::string &caminho, Ligacao ligacao, Identidade &identidade) {
    struct stat dados {};
    const int resultado = ligacao == Ligacao::kSeguida ? ::stat(caminho.c_str(), &dados)
                                                       : ::lstat(caminho.c_str(), &dados);
    if (resultado != 0) {
        falhouArquivo(caminho);
        return naoExiste() ? Leitura::kInexistente : Leitura::kFalha;
    }
    if (!S_ISREG(dados.st_mode)) {
        naoEhArquivo(caminho);
        return Leitura::kFalha;
    }
    identidade = identidadeDe(dados);
    return Leitura::kLido;
}

bool identificar(const Descritor &arquivo, Identidade &identidade) {
    const auto dados = arquivo.aberto() ? arquivo.situacao() : std::nullopt;
    if (!dados || !S_ISREG(dados->st_mode) || dados->st_nlink == 0 || !arquivo.ehOGuardado(*dados))
        return false;
    identidade = identidadeDe(*dados);
    return true;
}

bool assentada(const Identidade &identidade) {
    return agora() - std::max(identidade.mudanca, identidade.escrita) > kMaiorPasso + kSegundo;
}

// The time of the change remains the system's, and so does that of whoever writes next.
void darEscrita(const Descritor &arquivo, std::int64_t momento) {
    const timespec acessoEEscrita[] = {{0, UTIME_OMIT}, {momento / kSegundo, momento % kSegundo}};
    static_cast<void>(::futimens(arquivo.fd(), acessoEEscrita) == 0);
}

std::int64_t escritaInteira(std::int64_t momento) {
    return momento / kMaiorPasso * kMaiorPasso - kMaiorPasso;
}

bool temNosPassageiros(const std::string &diretorio) {
    // statfs(2): FAT, exFAT, FUSE, CIFS, SMB2, 9P, VirtualBox.
    constexpr unsigned long kPassageiros[] = {0x4d44,     0x2011bab0, 0x65735546, 0xff534d42,
                                              0xfe534d42, 0x01021997, 0x786f4256};
    struct statfs dados {};
    return ::statfs(diretorio.c_str(), &dados) != 0 ||
           std::ranges::find(kPassageiros, static_cast<std::uint32_t>(dados.f_type)) !=
               std::end(kPassageiros);
}

std::optional<std::uint64_t> noDe(const std::string &caminho) {
    struct stat dados {};
    if (::stat(caminho.c_str(), &dados) != 0) return {};
    return dados.st_ino;
}

Identidade identificarDiretorio(const std::string &caminho) {
    struct stat dados {};
    return ::stat(caminho.c_str(), &dados) == 0 ? identidadeDe(dados) : Identidade{};
}

} // namespace zel
