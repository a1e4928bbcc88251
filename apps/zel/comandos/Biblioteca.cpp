// SPDX-License-Identifier: MIT
#include "comandos/Biblioteca.h"

#include "comum/ArquivosDoCaixa.h"
#include "leitura/Arquivos.h"
#include "leitura/Terminal.h"
#include "leitura/Texto.h"

#include "ZEL_FelborFramework.h"

#include <array>
#include <cstdlib>
#include <dlfcn.h>

namespace zel::aplicativo {

namespace {

constexpr const char *kVariavel = "ZEL_DIRETORIO";

// Why it is no directory, and what to do.
std::string motivoSemDiretorio(const std::string &caminho) {
    const std::string nome = argumento(caminho.c_str());
    std::string bytes, motivo;
    if (lerArquivo(caminho, 0, bytes, motivo) == Leitura::kInexistente)
        return juntar({nome, ": o diretório não existe\n    Remédio: mkdir -p '", nome,
                       "', com o usuário do caixa"});
    if (olhar(caminho).tipo != TipoArquivo::kNenhum) return juntar({nome, ": não é um diretório"});
    return juntar({nome, ": ", motivo, "\n    Remédio: rode o zel com o usuário do caixa."});
}

// As the library: beside it.
std::string diretorioDaBiblioteca() {
    const void *funcao = ::dlsym(RTLD_DEFAULT, "aCFInicializar_ZEL");
    Dl_info biblioteca{};
    if (funcao == nullptr || ::dladdr(funcao, &biblioteca) == 0 || biblioteca.dli_fname == nullptr)
        return "./";
    const std::string caminho = biblioteca.dli_fname;
    const std::size_t barra = caminho.rfind('/');
    return barra == caminho.npos ? "./" : caminho.substr(0, barra + 1);
}

} // namespace

std::optional<std::string> escolherDiretorio(const std::string &dado, std::string &motivo) {
    const char *variavel = dado.empty() ? ::secure_getenv(kVariavel) : nullptr;
    const std::string escolhido = variavel != nullptr ? variavel : dado;
    if (escolhido.empty()) {
        const std::string padrao = diretorioDaBiblioteca();
        return diretorioInteiro(padrao).value_or(padrao.ends_with('/') ? padrao : padrao + "/");
    }
    if (variavel != nullptr && *variavel != '/') {
        const std::string nome = argumento(variavel);
        motivo = juntar({kVariavel, "=", nome, ": não é um caminho absoluto, e a biblioteca o ",
                         "ignora\n    Remédio: export ", kVariavel, "=\"$PWD/", nome, "\""});
        return {};
    }
    auto inteiro = diretorioInteiro(escolhido);
    if (!inteiro)
        motivo = juntar(
            {variavel != nullptr ? juntar({kVariavel, "="}) : "", motivoSemDiretorio(escolhido)});
    // Before the first call the library has not looked at it.
    else if (variavel == nullptr)
        ::setenv(kVariavel, inteiro->c_str(), 1);
    return inteiro;
}

bool temConfig(const std::string &diretorio) {
    return olhar(std::string(diretorio).append(arquivos::kConfig)).tipo == TipoArquivo::kRegular;
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

int estadoDoCupom() {
    return rCFVerificarStatus_ZEL();
}

} // namespace zel::aplicativo
