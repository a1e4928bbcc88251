// SPDX-License-Identifier: MIT
#include "disco/ArquivoLog.h"

#include "disco/Identidade.h"
#include "disco/LogDescritor.h"
#include "disco/LogSinais.h"

#include <fcntl.h>
#include <poll.h>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zel {

namespace {

constexpr off_t kMaximo = 10'000'000;
constexpr off_t kFolga = 1'000'000; // while another process is at the rename
constexpr std::string_view kAnterior = ".1";

const OpcoesLog &opcoes() {
    static const OpcoesLog unicas = [] {
        const bool haDescritor = haDescritorDoLog(); // looked for by the first call in any case
        OpcoesLog lidas;
        if (lidas.nivel == NivelLog::kDesligado && haDescritor) lidas.nivel = NivelLog::kRecusas;
        return lidas;
    }();
    return unicas;
}

// One write, so that lines of two processes do not mix.
void escreverLinha(int fd, const std::string &linha) {
    const SemSinais semSinais;
    [[maybe_unused]] const auto escritos =
        insistir([&] { return ::write(fd, linha.data(), linha.size()); });
}

// Whether a line can be written without waiting for a reader.
bool recebe(int fd) {
    pollfd pedido{fd, POLLOUT, 0};
    return ::poll(&pedido, 1, 0) == 1;
}

Descritor abrirArquivo(const std::string &caminho) {
    return {caminho.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK | O_NOFOLLOW, 0600};
}

enum class Giro { kFeito, kDeOutro, kImpossivel };

// Puts the file out of the way. The one who has its lock does so, and only while it still stands
// under its name: another process may have done it since this one opened the file, and what stands
// there now is the new one.
Giro girar(const Descritor &arquivo, const std::string &caminho) {
    if (::flock(arquivo.fd(), LOCK_EX | LOCK_NB) != 0)
        return errno == EWOULDBLOCK ? Giro::kDeOutro : Giro::kImpossivel;
    const auto este = arquivo.situacao();
    if (!este) return Giro::kImpossivel;
    struct stat ali {};
    const bool saiu = ::lstat(caminho.c_str(), &ali) != 0 || ali.st_ino != este->st_ino ||
                      ali.st_dev != este->st_dev;
    const bool feito =
        saiu || ::rename(caminho.c_str(), std::string(caminho).append(kAnterior).c_str()) == 0 ||
        ::ftruncate(arquivo.fd(), 0) == 0;
    return feito ? Giro::kFeito : Giro::kImpossivel;
}

void acrescentar(const std::string &caminho, const std::string &linha) {
    constexpr int kTentativas = 3;
    for (int vez = 0; vez < kTentativas; ++vez) {
        const Descritor arquivo = abrirArquivo(caminho);
        const auto dados = arquivo.aberto() ? arquivo.situacao() : std::nullopt;
        if (!dados) return;
        const off_t tamanho = dados->st_size + static_cast<off_t>(linha.size());
        if (!S_ISREG(dados->st_mode) || tamanho <= kMaximo)
            return escreverLinha(arquivo.fd(), linha);
        const Giro giro = girar(arquivo, caminho);
        // Wherever the other one puts the file, the line goes with it.
        if (giro == Giro::kDeOutro && tamanho <= kMaximo + kFolga)
            escreverLinha(arquivo.fd(), linha);
        if (giro != Giro::kFeito) return;
    }
}

} // namespace

NivelLog nivelDoLog() noexcept {
    return opcoes().nivel;
}

void registrarLog(std::string_view texto) noexcept {
    if (opcoes().destino.vazio()) return;
    const int erro = errno;
    try {
        const std::string linha = linhaDoLog(texto);
        const std::string_view destino = opcoes().destino;
        if (destino != "stderr")
            acrescentar(std::string(destino), linha);
        else if (recebe(STDERR_FILENO))
            escreverLinha(STDERR_FILENO, linha);
    } catch (...) {
        // Memory ran out for a line.
    }
    errno = erro;
}

} // namespace zel
