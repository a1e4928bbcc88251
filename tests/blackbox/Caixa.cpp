// SPDX-License-Identifier: MIT
#include "blackbox/Caixa.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kPrefixo = "libcaixa";

std::string lerOuFalhar(const fs::path &caminho) {
    const auto conteudo = lerTudo(caminho);
    EXPECT_TRUE(conteudo) << caminho << " cannot be read";
    return conteudo.value_or("");
}

void gravarOuFalhar(const fs::path &caminho, std::string_view conteudo) {
    EXPECT_TRUE(gravarTudo(caminho, conteudo)) << caminho << " cannot be written";
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

// The log of all tills of this process, gone with it.
class LogDaBateria {
public:
    LogDaBateria()
        : processo_(getpid()),
          caminho_(
              (fs::temp_directory_path() / ("zel-log-" + std::to_string(processo_))).string()) {
        setenv("ZEL_LOG", caminho_.c_str(), 1);
        unsetenv("ZEL_LOG_NIVEL");
    }
    ~LogDaBateria() {
        if (getpid() == processo_) unlink(caminho_.c_str());
    }
    LogDaBateria(const LogDaBateria &) = delete;
    LogDaBateria &operator=(const LogDaBateria &) = delete;

    const std::string &caminho() const { return caminho_; }

    // What was written since the last time.
    void conferir() {
        std::ifstream arquivo(caminho_, std::ios::binary);
        arquivo.seekg(lidos_);
        for (std::string linha; std::getline(arquivo, linha); lidos_ = arquivo.tellg())
            EXPECT_EQ(linha.find("motivo não registrado"), std::string::npos) << linha;
    }

private:
    pid_t processo_;
    std::string caminho_;
    std::ifstream::pos_type lidos_ = 0;
};
LogDaBateria logDeTodos;

} // namespace

const char *logDaBateria() {
    return logDeTodos.caminho().c_str();
}

Caixa::Caixa() : pasta_(std::make_shared<PastaTemporaria>()) {
    // A developer's own till must not be touched.
    unsetenv("ZEL_DIRETORIO");
    iniciar();
}

Caixa::Caixa(const Caixa &daMesmaLoja) : pasta_(daMesmaLoja.pasta_) {
    iniciar();
}

Caixa::~Caixa() {
    parar();
    logDeTodos.conferir();
}

void Caixa::iniciar() {
    static int copias = 0;
    const std::string copia = *pasta_ / (std::string(kPrefixo) + std::to_string(getpid()) + "_" +
                                         std::to_string(++copias) + ".so");
    fs::copy_file(ZEL_BIBLIOTECA, copia);
    biblioteca_ = std::make_unique<Biblioteca>(copia);
}

void Caixa::parar() {
    biblioteca_.reset();
}

void Caixa::reiniciar() {
    parar();
    iniciar();
}

std::string Caixa::lerArquivo(std::string_view nome) const {
    return lerOuFalhar(*pasta_ / nome);
}

bool Caixa::existe(std::string_view nome) const {
    return fs::exists(*pasta_ / nome);
}

void Caixa::escreverArquivo(std::string_view nome, std::string_view conteudo) const {
    gravarOuFalhar(*pasta_ / nome, conteudo);
}

std::string Caixa::config(const char *chave) const {
    std::vector<char> valor(ZEL_TAMANHO_VALOR, '?');
    EXPECT_EQ(funcoes().regRetornarValor_ZEL(chave, valor.data()), ZEL_OK) << chave;
    return valor.data();
}

void Caixa::config(const char *chave, const char *valor) const {
    EXPECT_EQ(funcoes().regAlterarValor_ZEL(chave, valor), ZEL_OK) << chave;
}

std::string Caixa::info(const char *indice) const {
    std::vector<char> valor(ZEL_TAMANHO_INFO, '?');
    EXPECT_EQ(funcoes().rInfoEstendida_ZEL(indice, valor.data()), ZEL_OK) << indice;
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
        gravarOuFalhar(caminho, texto);
        return;
    }
    EXPECT_EQ(lerOuFalhar(caminho), texto) << "golden file " << nome;
}
