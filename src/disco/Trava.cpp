// SPDX-License-Identifier: MIT
#include "disco/Trava.h"

#include "comum/ArquivosDoCaixa.h"
#include "disco/Arquivo.h"
#include "disco/ArquivoLog.h"
#include "disco/Diretorio.h"
#include "recusa/Mascara.h"
#include "recusa/Recusa.h"

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <pthread.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace zel {

namespace {

using arquivos::kLugarDoCupom;

constexpr std::string_view kArquivo = arquivos::kTrava;
constexpr std::int64_t kEspera = 3'000'000'000; // nanoseconds
constexpr long kPausa = 1'000'000;              // nanoseconds
constexpr off_t kLugarDaVez = 0;                // byte of the lock file

struct Travas {
    Descritor arquivo;
    pid_t processo = 0; // that opened it
    bool semTravas = false;
    bool cupom = false;
    int vezes = 0;                     // turns within each other
    int erro = 0;                      // of the last lock that was not had
    std::int64_t prazo = 0;            // of the turn, by the monotonic clock
    const Descritor *tambem = nullptr; // what the turn is extended to
};

Travas travas;
std::uint64_t turnos = 0;         // that this process has had
std::int64_t prazoDaChamada = -1; // 0 before its first turn is asked for; below 0 without a call

void esquecer() {
    travas.arquivo.fechar();
    travas = {};
}

// A child shares the open file, and with it the locks, until it closes it.
[[maybe_unused]] const int kNaBifurcacao = ::pthread_atfork(nullptr, nullptr, esquecer);

// Whoever may write in the directory may lock there.
void adequarPermissoes(const Descritor &arquivo, const std::string &caminho) {
    struct stat diretorio {};
    const std::string pai = caminho.substr(0, caminho.rfind('/') + 1);
    if (::stat(pai.c_str(), &diretorio) != 0) return;
    darAoDonoDoDiretorio(arquivo.fd(), caminho);
    static_cast<void>(::fchmod(arquivo.fd(), 0600 | (diretorio.st_mode & 0066)) == 0);
}

// The lock file open, and still the one that was opened; a child of fork has none.
bool pronta() {
    if (!travas.arquivo.aberto()) return false;
    const auto dados = travas.arquivo.situacao();
    return dados && dados->st_nlink > 0 && travas.arquivo.ehOGuardado(*dados);
}

Descritor abrir(const std::string &caminho, int modo) {
    constexpr int kModo = O_RDWR | O_NOFOLLOW | O_NONBLOCK;
    Descritor arquivo(caminho.c_str(), kModo | modo, 0600);
    if (!arquivo.aberto()) return arquivo;
    const auto dados = arquivo.situacao();
    if (!dados) return {};
    arquivo.guardar(*dados);
    return arquivo;
}

bool preparar() {
    if (pronta()) return true;
    esquecer();
    const std::string caminho = fnConfigurarPath(kArquivo);
    travas.arquivo = abrir(caminho, 0);
    if (!travas.arquivo.aberto() && errno == ENOENT) {
        travas.arquivo = abrir(caminho, O_CREAT);
        if (travas.arquivo.aberto()) adequarPermissoes(travas.arquivo, caminho);
    }
    travas.processo = ::getpid();
    return travas.arquivo.aberto() || falhouArquivo(caminho);
}

// Whether the name leads to the file that is locked: one that was removed keeps nobody out.
bool temSeuNome() {
    struct stat dados {};
    return ::lstat(fnConfigurarPath(kArquivo).c_str(), &dados) == 0
               ? travas.arquivo.ehOGuardado(dados)
               : !naoExiste();
}

bool semSuporte(int erro) {
    return erro == EINVAL || erro == ENOLCK || erro == ENOSYS || erro == EOPNOTSUPP;
}

bool travar(const Descritor &arquivo, off_t lugar, short tipo) {
    struct flock pedido {};
    pedido.l_type = tipo;
    pedido.l_whence = SEEK_SET;
    pedido.l_start = lugar;
    pedido.l_len = 1;
    if (travas.semTravas) return true;
    if (insistir([&] { return ::fcntl(arquivo.fd(), F_OFD_SETLK, &pedido); }) == 0) return true;
    travas.erro = errno;
    if (!semSuporte(errno)) return false;
    registrarLog("o sistema de arquivos de " + caminhoEmUmaLinha(fnConfigurarPath("")) +
                 " não tem travas: dois processos ali não são separados");
    return travas.semTravas = true;
}

bool ocupada() {
    return travas.erro == EAGAIN || travas.erro == EACCES;
}

int recusarTrava(Motivo deOutro) {
    if (travas.arquivo.aberto() && ocupada()) return recusar(deOutro);
    if (!travas.arquivo.aberto()) return arquivoIndisponivel();
    errno = travas.erro;
    return arquivoIndisponivel(kArquivo);
}

std::int64_t momento() {
    timespec agora{};
    ::clock_gettime(CLOCK_MONOTONIC, &agora);
    return agora.tv_sec * std::int64_t{1'000'000'000} + agora.tv_nsec;
}

// Waits for another process's turn, to the end of the time for it.
bool esperarVez(const Descritor &arquivo) {
    for (;;) {
        // Before it is tried: however late this process wakes up, it tries once more.
        const bool acabou = momento() >= travas.prazo;
        if (travar(arquivo, kLugarDaVez, F_WRLCK)) return true;
        if (!ocupada() || acabou) return false;
        const timespec pausa{0, kPausa};
        ::nanosleep(&pausa, nullptr);
    }
}

bool tomarVez() {
    const std::int64_t prazo = prazoDaChamada > 0 ? prazoDaChamada : momento() + kEspera;
    if (prazoDaChamada == 0) prazoDaChamada = prazo;
    do {
        if (!preparar()) return false;
        travas.prazo = prazo;
        if (!esperarVez(travas.arquivo)) return false;
        if (temSeuNome()) return true;
        esquecer();
    } while (momento() < prazo);
    errno = EAGAIN;
    return falhouArquivo(kArquivo);
}

} // namespace

EsperaDaChamada::EsperaDaChamada() {
    prazoDaChamada = 0;
}

EsperaDaChamada::~EsperaDaChamada() {
    prazoDaChamada = -1;
}

int Vez::recusa() {
    return recusarTrava(Motivo::kVezDeOutro);
}

Vez::Vez() : obtida_(travas.vezes > 0 || tomarVez()) {
    if (obtida_ && ++travas.vezes == 1) ++turnos;
}

std::uint64_t Vez::atual() {
    return travas.vezes > 0 ? turnos : 0;
}

pid_t Vez::processo() {
    return travas.processo;
}

bool Vez::estender(const Descritor &arquivo) {
    if (travas.vezes == 0) return true;
    travas.tambem = &arquivo;
    if (esperarVez(arquivo)) return true;
    errno = travas.erro;
    return false;
}

Vez::~Vez() {
    if (!obtida_ || --travas.vezes > 0) return;
    const Descritor *tambem = std::exchange(travas.tambem, nullptr);
    if (tambem != nullptr && tambem->aberto()) travar(*tambem, kLugarDaVez, F_UNLCK);
    travar(travas.arquivo, kLugarDaVez, F_UNLCK);
}

int PosseDoCupom::recusa() {
    return recusarTrava(Motivo::kCupomDeOutro);
}

PosseDoCupom::PosseDoCupom()
    : obtida_(travas.vezes > 0 && travas.arquivo.aberto()), nova_(obtida_ && !travas.cupom) {
    if (nova_) obtida_ = nova_ = travas.cupom = travar(travas.arquivo, kLugarDoCupom, F_WRLCK);
}

PosseDoCupom::~PosseDoCupom() {
    if (!nova_) return;
    travar(travas.arquivo, kLugarDoCupom, F_UNLCK);
    travas.cupom = false;
}

// Both locks are there before the name is: whoever waits for the old file's turn finds the new one
// taken.
bool PosseDoCupom::tomar() {
    if (travas.vezes == 0 || !ocupada()) return false;
    const std::string caminho = fnConfigurarPath(kArquivo),
                      nova = std::string(caminho).append(arquivos::kRascunho);
    removerArquivo(nova);
    Descritor arquivo = abrir(nova, O_CREAT | O_EXCL);
    if (!arquivo.aberto()) return falhouArquivo(nova);
    adequarPermissoes(arquivo, caminho);
    if (!travar(arquivo, kLugarDaVez, F_WRLCK) || !travar(arquivo, kLugarDoCupom, F_WRLCK) ||
        !renomearArquivo(nova, caminho)) {
        removerArquivo(nova);
        return false;
    }
    travas.arquivo = std::move(arquivo);
    return obtida_ = nova_ = travas.cupom = true;
}

bool PosseDoCupom::minha() {
    // A turn was had with both looked at.
    return travas.cupom && (travas.vezes > 0 || (pronta() && temSeuNome()));
}

bool PosseDoCupom::compartilhada() {
    static const bool pedida = [] {
        const char *valor = ::secure_getenv("ZEL_COMPARTILHADO");
        return valor != nullptr && std::string_view(valor) == "1";
    }();
    return pedida;
}

} // namespace zel
