// SPDX-License-Identifier: MIT
#include "leitura/Arquivos.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zel::aplicativo {

namespace {

constexpr const char *kTrava = "ZEL_Framework.trava";
constexpr off_t kLugarDoCupom = 1; // byte of the lock file, the library's choice

// An open file, closed at the end of its life.
class Descritor {
public:
    explicit Descritor(const std::string &caminho)
        : fd_(::open(caminho.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {}
    ~Descritor() {
        if (fd_ >= 0) ::close(fd_);
    }
    Descritor(const Descritor &) = delete;
    Descritor &operator=(const Descritor &) = delete;
    int fd() const { return fd_; }

private:
    int fd_;
};

std::string motivoDoErro(int erro) {
    switch (erro) {
    case EACCES:
        return "sem permissão";
    case ENOENT:
        return "não existe";
    case ENAMETOOLONG:
        return "nome longo demais";
    case EIO:
        return "erro de leitura no disco";
    default:
        return std::strerror(erro);
    }
}

} // namespace

Leitura lerArquivo(const std::string &caminho, std::size_t maximo, std::string &conteudo,
                   std::string &motivo) {
    conteudo.clear();
    const Descritor arquivo(caminho);
    struct stat dados {};
    if (arquivo.fd() < 0 || ::fstat(arquivo.fd(), &dados) != 0) {
        motivo = motivoDoErro(errno);
        return errno == ENOENT ? Leitura::kInexistente : Leitura::kFalha;
    }
    if (!S_ISREG(dados.st_mode)) {
        motivo = "não é um arquivo comum";
        return Leitura::kFalha;
    }
    std::array<char, 65536> bloco;
    for (;;) {
        const ssize_t lidos = ::read(arquivo.fd(), bloco.data(), bloco.size());
        if (lidos < 0 && errno == EINTR) continue;
        if (lidos < 0) motivo = motivoDoErro(errno);
        if (lidos <= 0) return lidos == 0 ? Leitura::kLido : Leitura::kFalha;
        conteudo.append(bloco.data(), static_cast<std::size_t>(lidos));
        if (conteudo.size() <= maximo) continue;
        motivo = "é grande demais";
        return Leitura::kFalha;
    }
}

DadosArquivo olhar(const std::string &caminho) {
    struct stat dados {};
    if (::stat(caminho.c_str(), &dados) != 0) return {};
    const TipoArquivo tipo = S_ISREG(dados.st_mode)   ? TipoArquivo::kRegular
                             : S_ISDIR(dados.st_mode) ? TipoArquivo::kDiretorio
                                                      : TipoArquivo::kOutro;
    return {tipo, dados.st_mode & 07777U};
}

std::string ligacaoSemAlvo(const std::string &caminho) {
    std::array<char, PATH_MAX> alvo{};
    if (::readlink(caminho.c_str(), alvo.data(), alvo.size() - 1) < 0 ||
        olhar(caminho).tipo != TipoArquivo::kNenhum)
        return {};
    return alvo.data();
}

bool podeGravar(const std::string &caminho) {
    const int direitos = olhar(caminho).tipo == TipoArquivo::kDiretorio ? W_OK | X_OK : R_OK | W_OK;
    return ::faccessat(AT_FDCWD, caminho.c_str(), direitos, AT_EACCESS) == 0;
}

std::optional<std::string> diretorioInteiro(const std::string &caminho) {
    std::array<char, PATH_MAX> inteiro{};
    if (olhar(caminho).tipo != TipoArquivo::kDiretorio ||
        ::realpath(caminho.c_str(), inteiro.data()) == nullptr)
        return {};
    std::string diretorio = inteiro.data();
    if (!diretorio.ends_with('/')) diretorio += '/';
    return diretorio;
}

bool cupomComOutroProcesso(const std::string &diretorio) {
    const Descritor trava(diretorio + kTrava);
    if (trava.fd() < 0) return false;
    struct flock pedido {};
    pedido.l_type = F_WRLCK;
    pedido.l_whence = SEEK_SET;
    pedido.l_start = kLugarDoCupom;
    pedido.l_len = 1;
    // Asking changes nothing and needs no right to write.
    return ::fcntl(trava.fd(), F_OFD_GETLK, &pedido) == 0 && pedido.l_type != F_UNLCK;
}

} // namespace zel::aplicativo
