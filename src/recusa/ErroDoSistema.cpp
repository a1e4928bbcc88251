// SPDX-License-Identifier: MIT
#include "recusa/ErroDoSistema.h"

#include "texto/Numero.h"

#include <array>
#include <cerrno>
#include <string_view>

namespace zel {

namespace {

struct LinhaErro {
    int erro;
    std::string_view nome, texto;
};

constexpr std::array<LinhaErro, 28> kErros{{
    {kNaoEhArquivo, "", "não é um arquivo comum"},
    {0, "", "o sistema não disse por quê"},
    {EACCES, "EACCES", "permissão negada"},
    {EPERM, "EPERM", "operação não permitida"},
    {ENOENT, "ENOENT", "o arquivo ou o diretório não existe"},
    {ENOTDIR, "ENOTDIR", "uma parte do caminho não é um diretório"},
    {EISDIR, "EISDIR", "é um diretório"},
    {EEXIST, "EEXIST", "já existe"},
    {ENOSPC, "ENOSPC", "o disco está cheio"},
    {EDQUOT, "EDQUOT", "a cota de disco do usuário acabou"},
    {EFBIG, "EFBIG", "o arquivo passaria do tamanho permitido"},
    {EROFS, "EROFS", "o sistema de arquivos só permite leitura"},
    {EIO, "EIO", "erro de leitura ou gravação no disco"},
    {EMFILE, "EMFILE", "o processo tem arquivos abertos demais"},
    {ENFILE, "ENFILE", "o sistema tem arquivos abertos demais"},
    {ENOMEM, "ENOMEM", "falta memória"},
    {ELOOP, "ELOOP", "é uma ligação simbólica, que aqui não se segue"},
    {ENAMETOOLONG, "ENAMETOOLONG", "o caminho é longo demais"},
    {EBUSY, "EBUSY", "está em uso"},
    {EAGAIN, "EAGAIN", "está em uso por outro processo"},
    {ETXTBSY, "ETXTBSY", "é um programa em execução"},
    {ENXIO, "ENXIO", "ninguém lê do outro lado"},
    {ENODEV, "ENODEV", "o dispositivo não existe"},
    {ESTALE, "ESTALE", "o servidor de arquivos perdeu o arquivo"},
    {ENOLCK, "ENOLCK", "o sistema de arquivos não tem travas"},
    {EINTR, "EINTR", "a operação foi interrompida"},
    {EXDEV, "EXDEV", "está em outro sistema de arquivos"},
    {EINVAL, "EINVAL", "o sistema de arquivos não aceita a operação"},
}};

} // namespace

std::string textoDoErro(int erro) {
    for (const LinhaErro &linha : kErros) {
        if (linha.erro != erro) continue;
        std::string texto(linha.texto);
        return linha.nome.empty() ? texto : texto.append(" (").append(linha.nome).append(")");
    }
    return "erro " + formatarInteiro(erro) + " do sistema";
}

} // namespace zel
