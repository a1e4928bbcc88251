// SPDX-License-Identifier: MIT
#include "util/Trava.h"

#include "util/Arquivo.h"
#include "util/Descritor.h"
#include "util/Diretorio.h"
#include "util/Log.h"
#include "util/Mascara.h"
#include "util/Recusa.h"

#include <ctime>
#include <fcntl.h>
#include <pthread.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace zel {

namespace {

constexpr std::string_view kArquivo = "ZEL_Framework.trava";
constexpr int kTentativas = 3000;                   // a thousandth of a second apart
constexpr long kPausa = 1'000'000;                  // nanoseconds
constexpr off_t kLugarDaVez = 0, kLugarDoCupom = 1; // bytes of the lock file

struct Travas {
    Descritor arquivo;
    pid_t processo = 0; // that opened it
    bool semTravas = false;
    bool cupom = false;
    int vezes = 0; // turns within each other
    int erro = 0;  // of the last lock that was not had
};

Travas travas;
std::uint64_t turnos = 0; // that this process has had

void esquecer() {
    travas.arquivo.fechar();
    travas = {};
}

// A child shares the open file, and with it the locks, until it closes it.
[[maybe_unused]] const int kNaBifurcacao = ::pthread_atfork(nullptr, nullptr, esquecer);

// Whoever may write in the directory may lock there.
void adequarPermissoes(const std::string &caminho) {
    struct stat diretorio {};
    const std::string pai = caminho.substr(0, caminho.rfind('/') + 1);
    if (::stat(pai.c_str(), &diretorio) != 0) return;
    darAoDonoDoDiretorio(travas.arquivo.fd(), caminho);
    static_cast<void>(::fchmod(travas.arquivo.fd(), 0600 | (diretorio.st_mode & 0066)) == 0);
}

// The lock file open in this process, and still the one of that name: a file that was removed keeps
// nobody out.
bool pronta() {
    if (!travas.arquivo.aberto()) return false;
    if (travas.vezes > 0) return true;
    if (travas.processo != ::getpid()) return false;
    struct stat dados {};
    return ::fstat(travas.arquivo.fd(), &dados) == 0 && dados.st_nlink > 0;
}

bool preparar() {
    if (pronta()) return true;
    esquecer();
    const std::string caminho = fnConfigurarPath(kArquivo);
    constexpr int kModo = O_RDWR | O_NOFOLLOW | O_NONBLOCK;
    travas.arquivo = Descritor(caminho.c_str(), kModo);
    if (!travas.arquivo.aberto() && errno == ENOENT) {
        travas.arquivo = Descritor(caminho.c_str(), kModo | O_CREAT, 0600);
        if (travas.arquivo.aberto()) adequarPermissoes(caminho);
    }
    travas.processo = ::getpid();
    return travas.arquivo.aberto() || falhouArquivo(caminho);
}

bool semSuporte(int erro) {
    return erro == EINVAL || erro == ENOLCK || erro == ENOSYS || erro == EOPNOTSUPP;
}

bool travar(off_t lugar, short tipo) {
    struct flock pedido {};
    pedido.l_type = tipo;
    pedido.l_whence = SEEK_SET;
    pedido.l_start = lugar;
    pedido.l_len = 1;
    if (travas.semTravas) return true;
    if (insistir([&] { return ::fcntl(travas.arquivo.fd(), F_OFD_SETLK, &pedido); }) == 0)
        return true;
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

bool esperarVez() {
    for (int tentativa = 0; tentativa < kTentativas; ++tentativa) {
        if (travar(kLugarDaVez, F_WRLCK)) return true;
        if (!ocupada()) return false;
        const timespec pausa{0, kPausa};
        ::nanosleep(&pausa, nullptr);
    }
    return false;
}

} // namespace

int Vez::recusa() {
    return recusarTrava(Motivo::kVezDeOutro);
}

Vez::Vez() : obtida_(preparar() && (travas.vezes > 0 || esperarVez())) {
    if (obtida_ && ++travas.vezes == 1) ++turnos;
}

std::uint64_t Vez::atual() {
    return travas.vezes > 0 ? turnos : 0;
}

Vez::~Vez() {
    if (obtida_ && --travas.vezes == 0) travar(kLugarDaVez, F_UNLCK);
}

int PosseDoCupom::recusa() {
    return recusarTrava(Motivo::kCupomDeOutro);
}

PosseDoCupom::PosseDoCupom() : obtida_(preparar()), nova_(obtida_ && !travas.cupom) {
    if (nova_) obtida_ = nova_ = travas.cupom = travar(kLugarDoCupom, F_WRLCK);
}

PosseDoCupom::~PosseDoCupom() {
    if (!nova_) return;
    travar(kLugarDoCupom, F_UNLCK);
    travas.cupom = false;
}

} // namespace zel
