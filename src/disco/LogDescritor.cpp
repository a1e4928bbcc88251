// SPDX-License-Identifier: MIT
#include "disco/LogDescritor.h"

#include "disco/Identidade.h"
#include "disco/LogSinais.h"
#include "texto/Numero.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace zel {

namespace {

constexpr std::string_view kNome = "/memfd:zel_felbor (deleted)";
constexpr std::size_t kMaiorLinha = 4096;

// The number that was given, with the identity of the file that it had then.
struct Destino {
    int fd = -1;
    struct stat dados {};

    Destino() {
        const char *dado = ::secure_getenv("ZEL_LOG_DESCRITOR");
        const std::string_view numero = dado == nullptr ? "" : dado;
        const char *fim = numero.data() + numero.size();
        int lido = -1;
        const auto [ate, erro] = std::from_chars(numero.data(), fim, lido);
        if (erro != std::errc{} || ate != fim || lido < 0) return;
        if (temONome(lido) && ::fstat(lido, &dados) == 0 && S_ISREG(dados.st_mode)) fd = lido;
    }

    // The host may have closed it since, and opened a file of its own under the number.
    bool aindaEle() const {
        struct stat agora {};
        return fd >= 0 && ::fstat(fd, &agora) == 0 && agora.st_dev == dados.st_dev &&
               agora.st_ino == dados.st_ino;
    }

private:
    static bool temONome(int numero) {
        const std::string ligacao = "/proc/self/fd/" + formatarInteiro(numero);
        std::array<char, kNome.size() + 1> nome{};
        const ssize_t lidos = ::readlink(ligacao.c_str(), nome.data(), nome.size());
        return lidos > 0 && std::string_view(nome.data(), static_cast<std::size_t>(lidos)) == kNome;
    }
};

const Destino &destino() {
    static const Destino unico;
    return unico;
}

void substituir(int fd, std::string_view linha) noexcept {
    const SemSinais semSinais;
    const ssize_t escritos = insistir([&] { return ::pwrite(fd, linha.data(), linha.size(), 0); });
    [[maybe_unused]] const int cortou =
        insistir([&] { return ::ftruncate(fd, escritos < 0 ? 0 : escritos); });
}

} // namespace

bool haDescritorDoLog() noexcept {
    try {
        return destino().fd >= 0;
    } catch (...) {
        return false; // without memory for its name
    }
}

void entregarRecusa(std::string_view linha) noexcept {
    if (!haDescritorDoLog() || !destino().aindaEle()) return;
    const int erro = errno;
    try {
        std::string texto;
        if (!linha.empty()) {
            texto.append("[").append(formatarInteiro(::getpid())).append("] ");
            texto.append(linha.substr(0, kMaiorLinha - texto.size() - 1)).append("\n");
        }
        substituir(destino().fd, texto);
    } catch (...) {
        substituir(destino().fd, {});
    }
    errno = erro;
}

} // namespace zel
