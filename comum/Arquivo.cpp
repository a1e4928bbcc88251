// SPDX-License-Identifier: MIT
#include "comum/Arquivo.h"

#include "comum/Descritor.h"

#include <cstdio>
#include <sys/stat.h>

namespace zel::comum {

namespace {

// Two threads or programs that write the same picture must not write into the same file beside it.
std::string nomeAoLado(const std::string &caminho) {
    return caminho + "." + std::to_string(::gettid()) + ".novo";
}

bool gravarNovo(const std::string &caminho, std::string_view conteudo,
                std::optional<mode_t> modo = {}) {
    // A scratch file that a thread of the same number left when it died goes first.
    ::unlink(caminho.c_str());
    Descritor novo(caminho, O_WRONLY | O_CREAT | O_EXCL);
    return novo.aberto() && (!modo || ::fchmod(novo.fd(), *modo) == 0) && novo.escrever(conteudo) &&
           novo.descarregar() && novo.fechar();
}

// False, with the reason of the failure in errno, and nothing left beside the file.
bool desistir(const std::string &novo) {
    const int motivo = errno;
    ::unlink(novo.c_str());
    errno = motivo;
    return false;
}

// A file system that cannot flush a directory has renamed nonetheless.
void descarregarDiretorio(const std::string &caminho) {
    const std::size_t barra = caminho.rfind('/');
    const Descritor diretorio(barra == caminho.npos ? "." : caminho.substr(0, barra + 1),
                              O_RDONLY | O_DIRECTORY);
    if (diretorio.aberto()) diretorio.descarregar();
}

bool trocar(const std::string &novo, const std::string &caminho) {
    if (::rename(novo.c_str(), caminho.c_str()) != 0) return desistir(novo);
    descarregarDiretorio(caminho);
    return true;
}

} // namespace

bool ehArquivo(const std::string &caminho) {
    struct stat dados {};
    return ::stat(caminho.c_str(), &dados) == 0 && S_ISREG(dados.st_mode);
}

std::optional<std::string> lerArquivo(const std::string &caminho, std::size_t maior) {
    if (!ehArquivo(caminho)) return {};
    const Descritor arquivo(caminho, O_RDONLY | O_NONBLOCK);
    const auto dados = arquivo.aberto() ? arquivo.situacao() : std::nullopt;
    std::string conteudo;
    if (!dados || !arquivo.lerTudo(conteudo, static_cast<std::size_t>(dados->st_size), maior))
        return {};
    return conteudo;
}

bool substituirArquivo(const std::string &caminho, std::string_view conteudo) {
    struct stat dados {};
    if (::lstat(caminho.c_str(), &dados) == 0 && !S_ISREG(dados.st_mode) &&
        !S_ISLNK(dados.st_mode)) {
        errno = EINVAL;
        return false;
    }
    const std::string novo = nomeAoLado(caminho);
    return gravarNovo(novo, conteudo) ? trocar(novo, caminho) : desistir(novo);
}

bool tomarLugar(const std::string &novo, const std::string &caminho) {
    const Descritor escrito(novo, O_RDONLY);
    if (!escrito.aberto() || insistir([&] { return ::fsync(escrito.fd()); }) != 0)
        return desistir(novo);
    return trocar(novo, caminho);
}

bool criarArquivo(const std::string &caminho, std::string_view conteudo, mode_t modo) {
    const std::string novo = nomeAoLado(caminho);
    if (!gravarNovo(novo, conteudo, modo) || ::link(novo.c_str(), caminho.c_str()) != 0)
        return desistir(novo);
    ::unlink(novo.c_str());
    descarregarDiretorio(caminho);
    return true;
}

bool criarDiretorios(const std::string &caminho, mode_t modo) {
    for (std::size_t barra = caminho.find('/', 1);; barra = caminho.find('/', barra + 1)) {
        const std::string este = caminho.substr(0, barra);
        if (::mkdir(este.c_str(), modo) == 0)
            descarregarDiretorio(este);
        else if (errno != EEXIST)
            return false;
        if (barra == caminho.npos || barra + 1 == caminho.size()) break;
    }
    return true;
}

} // namespace zel::comum
