// SPDX-License-Identifier: MIT
#include "assinatura/Credenciais.h"

#include "comum/Arquivo.h"
#include "comum/Descritor.h"

#include <cstdlib>
#include <string_view>
#include <sys/stat.h>

namespace zel::envio {

namespace {

// Nothing in a program that runs with another's rights.
std::string_view variavel(const char *nome) {
    const char *valor = ::secure_getenv(nome);
    return valor == nullptr ? std::string_view() : valor;
}

// A credential that systemd laid down for the service; empty when there is none of that name.
std::string credencial(const char *nome) {
    const std::string_view pasta = variavel("CREDENTIALS_DIRECTORY");
    if (!pasta.starts_with('/')) return {};
    std::string caminho = std::string(pasta) + '/' + nome;
    return comum::ehArquivo(caminho) ? caminho : std::string();
}

const char *porqueNaoServe(int fd) {
    struct stat dados {};
    if (fd < 0 || ::fstat(fd, &dados) != 0 || !S_ISREG(dados.st_mode))
        return "o arquivo da senha não existe ou não pode ser lido";
    if (dados.st_uid != ::geteuid() && dados.st_uid != 0)
        return "o arquivo da senha é de outro usuário";
    if ((dados.st_mode & 077) != 0) return "o arquivo da senha pode ser lido por outros: chmod 600";
    return nullptr;
}

} // namespace

std::optional<std::string> arquivoDoCertificado(const ConfigCertificado &config, Recusas &recusas) {
    if (!config.arquivo.empty()) return config.arquivo;
    const std::string_view dito = variavel("ZEL_ENVIO_CERTIFICADO");
    if (dito.starts_with('/')) return std::string(dito);
    if (!dito.empty()) {
        recusas.juntar("ZEL_ENVIO_CERTIFICADO", "", "diga o caminho inteiro, a partir de /");
        return {};
    }
    std::string entregue = credencial("certificado");
    if (!entregue.empty()) return entregue;
    recusas.juntar("certificado.arquivo", "",
                   "nenhum certificado foi dito: ponha arquivo (A1) ou modulo (A3) em "
                   "[certificado] de zel-envio.toml, ou ZEL_ENVIO_CERTIFICADO");
    return {};
}

std::optional<Segredo> senhaDoCertificado(const ConfigCertificado &config, Recusas &recusas) {
    Segredo senha;
    if (!config.arquivoSenha.empty()) {
        const comum::Descritor arquivo(config.arquivoSenha, O_RDONLY | O_NONBLOCK);
        if (const char *motivo = porqueNaoServe(arquivo.fd())) {
            recusas.juntar("certificado.senha_arquivo", "", motivo);
            return {};
        }
        senha.lerLinha(arquivo.fd());
        return senha;
    }
    if (const std::string_view dita = variavel("ZEL_ENVIO_SENHA"); !dita.empty())
        return Segredo(dita);
    // Who may read a credential is systemd's business, by lists of access that a mode does not
    // show.
    if (const std::string entregue = credencial("senha"); !entregue.empty())
        senha.lerLinha(comum::Descritor(entregue, O_RDONLY | O_NONBLOCK).fd());
    return senha;
}

} // namespace zel::envio
