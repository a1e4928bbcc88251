// SPDX-License-Identifier: MIT
#include "config/ArquivoSecreto.h"

#include "comum/Descritor.h"

#include <sys/stat.h>

namespace zel::envio {

namespace {

constexpr std::size_t kMaiorSegredo = 1024;

bool fechado(const struct stat &dados) {
    return (dados.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

} // namespace

std::optional<std::string> lerArquivoSecreto(const std::string &arquivo, std::string_view campo,
                                             Recusas &recusas) {
    const auto recusar = [&](std::string_view motivo) {
        recusas.juntar(campo, "", motivo);
        return std::nullopt;
    };
    // Looked at through the descriptor: no other file can take its place in between.
    const comum::Descritor aberto(arquivo, O_RDONLY | O_NONBLOCK | O_NOCTTY);
    struct stat dados {};
    if (!aberto.aberto() || ::fstat(aberto.fd(), &dados) != 0 || !S_ISREG(dados.st_mode))
        return recusar("o arquivo não existe ou não pode ser lido");
    if (!fechado(dados))
        return recusar("guarda um segredo e só o dono pode ter acesso a ele: chmod 600");
    char lido[kMaiorSegredo];
    const ssize_t n = comum::insistir([&] { return ::read(aberto.fd(), lido, sizeof lido); });
    const std::string_view texto(lido, n < 0 ? 0 : static_cast<std::size_t>(n));
    const std::string_view linha = texto.substr(0, texto.find_first_of("\r\n"));
    if (linha.empty()) return recusar("a primeira linha está vazia; escreva nela o segredo");
    return std::string(linha);
}

bool soDoDono(const std::string &arquivo) {
    struct stat dados {};
    return ::stat(arquivo.c_str(), &dados) == 0 && fechado(dados);
}

} // namespace zel::envio
