// SPDX-License-Identifier: MIT
#include "blackbox/Caixa.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kPrefixo = "libcaixa";

std::string lerTudo(const fs::path &caminho) {
    std::ifstream arquivo(caminho, std::ios::binary);
    EXPECT_TRUE(arquivo) << caminho << " cannot be read";
    return {std::istreambuf_iterator<char>(arquivo), {}};
}

void escreverTudo(const fs::path &caminho, std::string_view conteudo) {
    std::ofstream arquivo(caminho, std::ios::binary | std::ios::trunc);
    arquivo.write(conteudo.data(), static_cast<std::streamsize>(conteudo.size()));
    arquivo.close();
    EXPECT_TRUE(arquivo) << caminho << " cannot be written";
}

// Replaces what stands between the first `antes` and the next `depois`, if there is one.
void trocarEntre(std::string &texto, std::string_view antes, char depois, std::string_view novo) {
    const std::size_t achado = texto.find(antes);
    if (achado == std::string::npos) return;
    const std::size_t inicio = achado + antes.size();
    const std::size_t fim = texto.find(depois, inicio);
    ASSERT_NE(fim, std::string::npos) << antes << " is not closed";
    texto.replace(inicio, fim - inicio, novo);
}

} // namespace

Caixa::Caixa() {
    // A developer's own till must not be touched.
    unsetenv("ZEL_DIRETORIO");
    std::string modelo = (fs::temp_directory_path() / "zel-caixa-XXXXXX").string();
    if (mkdtemp(modelo.data()) == nullptr) throw std::runtime_error("no temporary directory");
    diretorio_ = modelo;
    iniciar();
}

Caixa::Caixa(const Caixa &daMesmaLoja) : diretorio_(daMesmaLoja.diretorio_), dono_(false) {
    iniciar();
}

Caixa::~Caixa() {
    parar();
    if (!dono_) return;
    std::error_code ignorado;
    fs::remove_all(diretorio_, ignorado);
}

void Caixa::iniciar() {
    // Another file name is another library to the loader, with globals of its own.
    static int copias = 0;
    const std::string nome =
        std::string(kPrefixo) + std::to_string(getpid()) + "_" + std::to_string(++copias) + ".so";
    const fs::path copia = diretorio_ / nome;
    fs::copy_file(ZEL_BIBLIOTECA, copia);
    biblioteca_ = dlopen(copia.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (biblioteca_ == nullptr) throw std::runtime_error(dlerror());
    funcoes_ = std::make_unique<Funcoes>(biblioteca_);
}

void Caixa::parar() {
    funcoes_.reset();
    if (biblioteca_ != nullptr) dlclose(biblioteca_);
    biblioteca_ = nullptr;
}

void Caixa::reiniciar() {
    parar();
    iniciar();
}

std::string Caixa::lerArquivo(std::string_view nome) const {
    return lerTudo(diretorio_ / nome);
}

bool Caixa::existe(std::string_view nome) const {
    return fs::exists(diretorio_ / nome);
}

void Caixa::escreverArquivo(std::string_view nome, std::string_view conteudo) const {
    escreverTudo(diretorio_ / nome, conteudo);
}

std::string Caixa::config(const char *chave) const {
    std::vector<char> valor(ZEL_TAMANHO_VALOR, '?');
    EXPECT_EQ(funcoes_->regRetornarValor_ZEL(chave, valor.data()), ZEL_OK) << chave;
    return valor.data();
}

void Caixa::config(const char *chave, const char *valor) const {
    EXPECT_EQ(funcoes_->regAlterarValor_ZEL(chave, valor), ZEL_OK) << chave;
}

std::string Caixa::info(const char *indice) const {
    std::vector<char> valor(ZEL_TAMANHO_INFO, '?');
    EXPECT_EQ(funcoes_->rInfoEstendida_ZEL(indice, valor.data()), ZEL_OK) << indice;
    return valor.data();
}

std::string elemento(std::string_view documento, std::string_view nome) {
    const std::string abre = "<" + std::string(nome) + ">";
    const std::size_t achado = documento.find(abre);
    if (achado == std::string_view::npos) return {};
    const std::size_t inicio = achado + abre.size();
    const std::size_t fim = documento.find("</" + std::string(nome) + ">", inicio);
    if (fim == std::string_view::npos) return {};
    return std::string(documento.substr(inicio, fim - inicio));
}

std::string mascarar(std::string_view documento) {
    EXPECT_EQ(documento.find_first_of("\r\n"), std::string_view::npos) << "line end in document";
    std::string texto(documento);
    trocarEntre(texto, "<dhEmi>", '<', "DATA E HORA");
    trocarEntre(texto, "<dhCont>", '<', "DATA E HORA");
    trocarEntre(texto, "Id=\"NFe", '"', "CHAVE");
    trocarEntre(texto, "<cDV>", '<', "DV");

    std::string linhas;
    for (std::size_t i = 0; i < texto.size(); ++i) {
        linhas += texto[i];
        if (texto[i] == '>' && i + 1 < texto.size() && texto[i + 1] == '<') linhas += '\n';
    }
    return linhas += '\n';
}

void compararComOuro(std::string_view nome, std::string_view texto) {
    const fs::path caminho = fs::path(ZEL_OURO) / nome;
    const char *regenerar = getenv("ZEL_REGENERAR");
    if (regenerar != nullptr && std::string_view(regenerar) == "1") {
        fs::create_directories(caminho.parent_path());
        escreverTudo(caminho, texto);
        return;
    }
    EXPECT_EQ(lerTudo(caminho), texto) << "golden file " << nome;
}
