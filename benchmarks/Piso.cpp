// SPDX-License-Identifier: MIT
#include "Piso.h"

#include "Loja.h"

#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

// Checked, so that a floor which writes nothing cannot pass for a fast one.
void exigirBytes(ssize_t feitos, std::size_t pedidos) {
    if (feitos < 0 || static_cast<std::size_t>(feitos) != pedidos)
        throw std::runtime_error("the floor cannot write or read");
}

void escreverEDescarregar(int fd, const std::string &bytes) {
    exigirBytes(write(fd, bytes.data(), bytes.size()), bytes.size());
    exigirBytes(fdatasync(fd), 0);
}

// From the first byte that differs to the last one, in texts of one length.
std::string_view trechoMudado(std::string_view antes, std::string_view depois) {
    std::size_t inicio = 0, fim = depois.size();
    while (inicio < fim && antes[inicio] == depois[inicio])
        ++inicio;
    while (fim > inicio && antes[fim - 1] == depois[fim - 1])
        --fim;
    return depois.substr(inicio, fim - inicio);
}

std::string mudancas(const std::map<std::string, std::string> &antes,
                     const std::map<std::string, std::string> &depois) {
    std::string bytes;
    for (const auto &[nome, conteudo] : depois) {
        const auto anterior = antes.find(nome);
        if (anterior == antes.end())
            bytes += conteudo;
        else if (anterior->second.size() == conteudo.size())
            bytes += trechoMudado(anterior->second, conteudo);
        else
            bytes += conteudo.starts_with(anterior->second)
                         ? conteudo.substr(anterior->second.size())
                         : conteudo;
    }
    return bytes;
}

int abrir(const std::string &caminho, int modo) {
    const int fd = open(caminho.c_str(), modo | O_CLOEXEC, 0600);
    if (fd < 0) throw std::runtime_error(caminho + " cannot be opened");
    return fd;
}

void criar(const std::string &caminho, const std::string &conteudo) {
    const int fd = abrir(caminho, O_WRONLY | O_CREAT | O_EXCL);
    escreverEDescarregar(fd, conteudo);
    close(fd);
}

} // namespace

std::vector<std::string> gravacoesDoCupom(const fs::path &base, int itens) {
    Loja loja(base);
    emitirCupom(loja, itens); // the first receipt of a till makes its files
    std::vector<std::string> gravacoes;
    auto antes = loja.arquivos();
    percorrerCupom(loja, itens, [&](int) {
        auto depois = loja.arquivos();
        std::string bytes = mudancas(antes, depois);
        if (!bytes.empty()) gravacoes.push_back(std::move(bytes));
        antes = std::move(depois);
    });
    return gravacoes;
}

Piso::Piso(const fs::path &base) : pasta_(base) {
    fd_ = abrir(pasta_ / "piso", O_WRONLY | O_CREAT | O_EXCL | O_APPEND);
}

Piso::~Piso() {
    close(fd_);
}

void Piso::gravar(const std::vector<std::string> &gravacoes) const {
    for (const std::string &bytes : gravacoes)
        escreverEDescarregar(fd_, bytes);
}

ChamadasDeVenda::ChamadasDeVenda(const fs::path &base, const std::string &configuracao,
                                 const std::string &documento)
    : pasta_(base), configuracao_(pasta_ / "ZEL_Framework.xml"),
      documento_(pasta_ / "ArqPersist.bin"), lido_(configuracao.size() + 1) {
    criar(configuracao_, configuracao);
    criar(documento_, documento);
}

void ChamadasDeVenda::vender(const std::string &registro) {
    struct stat dados {};
    int fd = abrir(configuracao_, O_RDONLY | O_NONBLOCK);
    exigirBytes(fstat(fd, &dados), 0);
    exigirBytes(read(fd, lido_.data(), lido_.size()), lido_.size() - 1);
    close(fd);
    fd = abrir(documento_, O_WRONLY | O_APPEND | O_NONBLOCK);
    exigirBytes(fstat(fd, &dados), 0);
    escreverEDescarregar(fd, registro);
    close(fd);
}
