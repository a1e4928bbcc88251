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

constexpr int kNovo = O_RDWR | O_CREAT | O_EXCL;
constexpr std::size_t kBloco = 4096, kSetor = 512; // of the journal
constexpr std::size_t kDiario = std::size_t{4} << 20;

void travar(int fd, short tipo) {
    struct flock pedido {};
    pedido.l_type = tipo;
    pedido.l_whence = SEEK_SET;
    pedido.l_len = 1;
    exigirBytes(fcntl(fd, F_OFD_SETLK, &pedido), 0);
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

Aberto::Aberto(const std::string &caminho, int modo)
    : fd_(open(caminho.c_str(), modo | O_CLOEXEC, 0600)) {
    if (fd_ < 0) throw std::runtime_error(caminho + " cannot be opened");
}

Aberto::~Aberto() {
    close(fd_);
}

Piso::Piso(const fs::path &base) : pasta_(base), arquivo_(pasta_ / "piso", kNovo | O_APPEND) {}

void Piso::gravar(const std::vector<std::string> &gravacoes) const {
    for (const std::string &bytes : gravacoes)
        escreverEDescarregar(arquivo_.fd(), bytes);
}

ChamadasDeVenda::ChamadasDeVenda(const fs::path &base, const std::string &configuracao,
                                 const std::string &documento)
    : pasta_(base), configuracao_(pasta_ / "ZEL_Framework.xml"), nomeDaTrava_(pasta_ / "trava"),
      trava_(nomeDaTrava_, kNovo), diario_(pasta_ / "diario", kNovo),
      aberto_(pasta_ / "ArqPersist.bin", kNovo), tamanho_(documento.size()) {
    escreverEDescarregar(Aberto(configuracao_, kNovo).fd(), configuracao);
    escreverEDescarregar(diario_.fd(), std::string(kDiario, '\0'));
    escreverEDescarregar(aberto_.fd(), documento);
}

void ChamadasDeVenda::vender(const std::string &registro) {
    struct stat dados {};
    char bloco[kBloco] = {};
    travar(trava_.fd(), F_WRLCK);
    exigirBytes(fstat(trava_.fd(), &dados), 0);
    exigirBytes(lstat(nomeDaTrava_.c_str(), &dados), 0);
    travar(diario_.fd(), F_WRLCK);
    exigirBytes(fstat(diario_.fd(), &dados), 0);
    exigirBytes(pread(diario_.fd(), bloco, kSetor, static_cast<off_t>(fim_)), kSetor);
    exigirBytes(stat(configuracao_.c_str(), &dados), 0);
    exigirBytes(fstat(aberto_.fd(), &dados), 0);
    exigirBytes(pwrite(diario_.fd(), bloco, kBloco, static_cast<off_t>(fim_)), kBloco);
    exigirBytes(fdatasync(diario_.fd()), 0);
    exigirBytes(
        pwrite(aberto_.fd(), registro.data(), registro.size(), static_cast<off_t>(tamanho_)),
        registro.size());
    exigirBytes(fstat(aberto_.fd(), &dados), 0);
    fim_ += kBloco;
    tamanho_ += registro.size();
    exigirBytes(pwrite(diario_.fd(), bloco, kBloco, static_cast<off_t>(fim_)), kBloco);
    travar(diario_.fd(), F_UNLCK);
    travar(trava_.fd(), F_UNLCK);
}
