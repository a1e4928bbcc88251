// SPDX-License-Identifier: MIT
#include "disco/Diretorio.h"

#include "texto/Texto.h"

#include <array>
#include <climits>
#include <cstdlib>
#include <dlfcn.h>

namespace zel {

namespace {

constexpr std::size_t kMaximoDiretorios = 3;
constexpr std::size_t kMaiorDiretorio = 300;

std::string diretorioDaBiblioteca() {
    Dl_info biblioteca{};
    if (::dladdr(reinterpret_cast<const void *>(&fnConfigurarPath), &biblioteca) == 0 ||
        biblioteca.dli_fname == nullptr)
        return "./";
    const std::string caminho = biblioteca.dli_fname;
    const std::size_t barra = caminho.rfind('/');
    const std::string diretorio = barra == caminho.npos ? "./" : caminho.substr(0, barra + 1);
    // The name may be relative to the directory the application was in when it loaded the library.
    std::array<char, PATH_MAX> absoluto{};
    return ::realpath(diretorio.c_str(), absoluto.data()) != nullptr ? absoluto.data() : diretorio;
}

// Found while the library is loaded, before the application can change its working directory.
const std::string kDiretorioDaBiblioteca = diretorioDaBiblioteca();

// A host with more rights than its user takes no directory from him.
std::string escolherDiretorio() {
    const char *escolhido = ::secure_getenv("ZEL_DIRETORIO");
    std::string diretorio =
        escolhido != nullptr && escolhido[0] == '/' ? escolhido : kDiretorioDaBiblioteca;
    if (!diretorio.ends_with('/')) diretorio.push_back('/');
    return diretorio;
}

// Chosen by the first call that needs it; empty until then.
std::string diretorioDeDados;

} // namespace

std::string fnConfigurarPath(std::string_view nome) {
    if (diretorioDeDados.empty()) diretorioDeDados = escolherDiretorio();
    return std::string(diretorioDeDados).append(nome);
}

std::string diretorioSemLigacoes() {
    const std::string diretorio = fnConfigurarPath("");
    std::array<char, PATH_MAX> real{};
    return ::realpath(diretorio.c_str(), real.data()) != nullptr ? real.data() : diretorio;
}

void esquecerDiretorio() {
    diretorioDeDados.clear();
}

std::vector<std::string_view> separarDiretorios(std::string_view lista) {
    std::vector<std::string_view> diretorios = split(lista, '|', kMaximoDiretorios);
    for (std::string_view &diretorio : diretorios)
        diretorio = diretorio.substr(0, kMaiorDiretorio);
    return diretorios;
}

} // namespace zel
