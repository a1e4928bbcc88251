// SPDX-License-Identifier: MIT
#include "Biblioteca.h"

#include "Arquivos.h"
#include "Texto.h"

#include "ZEL_FelborFramework.h"

#include <array>
#include <cstdlib>
#include <dlfcn.h>

namespace zel::aplicativo {

namespace {

constexpr const char *kVariavel = "ZEL_DIRETORIO";

// As the library: what the variable says when it is an absolute path, else beside the library.
std::string diretorioDaBiblioteca() {
    const char *escolhido = ::secure_getenv(kVariavel);
    if (escolhido != nullptr && *escolhido == '/') return escolhido;
    const void *funcao = ::dlsym(RTLD_DEFAULT, "aCFInicializar_ZEL");
    Dl_info biblioteca{};
    if (funcao == nullptr || ::dladdr(funcao, &biblioteca) == 0 || biblioteca.dli_fname == nullptr)
        return "./";
    const std::string caminho = biblioteca.dli_fname;
    const std::size_t barra = caminho.rfind('/');
    return barra == caminho.npos ? "./" : caminho.substr(0, barra + 1);
}

} // namespace

std::optional<std::string> escolherDiretorio(const std::string &dado) {
    if (dado.empty()) {
        const std::string padrao = diretorioDaBiblioteca();
        return diretorioInteiro(padrao).value_or(padrao.ends_with('/') ? padrao : padrao + "/");
    }
    auto inteiro = diretorioInteiro(dado);
    // Before the first call the library has not looked at it.
    if (inteiro) ::setenv(kVariavel, inteiro->c_str(), 1);
    return inteiro;
}

bool temConfig(const std::string &diretorio) {
    return olhar(diretorio + "ZEL_Framework.xml").tipo == TipoArquivo::kRegular;
}

std::optional<std::string> lerConfig(std::string_view caminho, int &codigo) {
    std::array<char, ZEL_TAMANHO_VALOR> valor{};
    codigo = regRetornarValor_ZEL(std::string(caminho).c_str(), valor.data());
    if (codigo != ZEL_OK) return {};
    return utf8DeLatin1(valor.data());
}

std::string configuracao(std::string_view caminho) {
    int codigo = 0;
    return lerConfig(caminho, codigo).value_or("");
}

int gravarConfig(std::string_view caminho, const std::string &latin1) {
    return regAlterarValor_ZEL(std::string(caminho).c_str(), latin1.c_str());
}

int carregarBiblioteca() {
    return aCFInicializar_ZEL();
}

int estadoDoCupom() {
    return rCFVerificarStatus_ZEL();
}

} // namespace zel::aplicativo
