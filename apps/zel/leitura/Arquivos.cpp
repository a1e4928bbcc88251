// SPDX-License-Identifier: MIT
#include "leitura/Arquivos.h"

#include "comum/ArquivosDoCaixa.h"
#include "comum/Descritor.h"

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

std::string motivoDoErro(int erro) {
    switch (erro) {
    case EACCES:
        return "sem permissão";
    case ENOENT:
        return "não existe";
    case EFBIG:
        return "é grande demais";
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
    const comum::Descritor arquivo(caminho, O_RDONLY | O_NONBLOCK);
    const auto dados = arquivo.aberto() ? arquivo.situacao() : std::nullopt;
    if (!dados) {
        motivo = motivoDoErro(errno);
        return errno == ENOENT ? Leitura::kInexistente : Leitura::kFalha;
    }
    if (!S_ISREG(dados->st_mode)) {
        motivo = "não é um arquivo comum";
        return Leitura::kFalha;
    }
    if (arquivo.lerTudo(conteudo, static_cast<std::size_t>(dados->st_size), maximo))
        return Leitura::kLido;
    motivo = motivoDoErro(errno);
    return Leitura::kFalha;
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
    const comum::Descritor trava(std::string(diretorio).append(arquivos::kTrava),
                                 O_RDONLY | O_NONBLOCK);
    if (!trava.aberto()) return false;
    struct flock pedido {};
    pedido.l_type = F_WRLCK;
    pedido.l_whence = SEEK_SET;
    pedido.l_start = arquivos::kLugarDoCupom;
    pedido.l_len = 1;
    // Asking changes nothing and needs no right to write.
    return ::fcntl(trava.fd(), F_OFD_GETLK, &pedido) == 0 && pedido.l_type != F_UNLCK;
}

} // namespace zel::aplicativo
