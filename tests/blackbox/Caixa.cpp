// SPDX-License-Identifier: MIT
#include "blackbox/Caixa.h"

#include "apoio/Ambiente.h"
#include "apoio/Trecho.h"

#include <unistd.h>

#include <regex>

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kPrefixo = "libcaixa";

// The log of all tills of this process; processes that fork off end without destructors.
class LogDaBateria {
public:
    // What was written since the last time.
    void conferir() const {
        EXPECT_FALSE(contem(pasta_.ler("log"), "motivo não registrado"));
        pasta_.gravar("log", "");
    }

private:
    PastaTemporaria pasta_;
    Ambiente destino_{"ZEL_LOG", (pasta_ / "log").c_str()}, nivel_{"ZEL_LOG_NIVEL", nullptr};
};
const LogDaBateria logDeTodos;

} // namespace

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
    const auto conteudo = lerTudo(*pasta_ / nome);
    EXPECT_TRUE(conteudo) << nome << " cannot be read";
    return conteudo.value_or("");
}

bool Caixa::existe(std::string_view nome) const {
    return fs::exists(*pasta_ / nome);
}

void Caixa::escreverArquivo(std::string_view nome, std::string_view conteudo) const {
    EXPECT_TRUE(gravarTudo(*pasta_ / nome, conteudo)) << nome << " cannot be written";
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
    const std::pair<const char *, const char *> trocas[] = {
        {"<(dhEmi|dhCont)>[^<]*", "<$1>DATA E HORA"},
        {"Id=\"NFe[^\"]*", "Id=\"NFeCHAVE"},
        {"<cDV>[^<]*", "<cDV>DV"},
        {"><", ">\n<"},
    };
    std::string texto(documento);
    for (const auto &[de, para] : trocas)
        texto = std::regex_replace(texto, std::regex(de), para);
    return texto += '\n';
}
