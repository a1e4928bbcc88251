// SPDX-License-Identifier: MIT
#include "Loja.h"

#include "apoio/Retorno.h"

#include <array>
#include <cstdlib>

namespace fs = std::filesystem;

namespace {

struct Mercadoria {
    const char *quantidade, *preco, *codigo, *unidade, *descricao;
};

constexpr std::array<Mercadoria, 8> kMercadorias{{
    {"1", "27,90", "7891000100101", "UN", "Arroz branco tipo 1 pacote 5 kg"},
    {"2", "8,49", "7891000100202", "UN", "Feij\xE3o carioca pacote 1 kg"},
    {"0,350", "39,90", "2000000000303", "KG", "Queijo minas frescal & doce"},
    {"6", "0,75", "2000000000404", "UN", "P\xE3o franc\xEAs"},
    {"12", "3,29", "7891000100505", "UN", "Leite integral caixa 1 L"},
    {"1,125", "18,70", "2000000000606", "KG", "Caf\xE9 torrado a granel"},
    {"3", "2,15", "7891000100707", "UN", "Sab\xE3o em barra"},
    {"1", "11,99", "7891000100808", "FD", "Refrigerante fardo com 6 de 2 L"},
}};

constexpr std::array<std::array<const char *, 2>, 12> kEmitente{{
    {"EMIT\\CNPJ", "11222333000181"},
    {"EMIT\\xNome", "Padaria da Esquina Ltda"},
    {"EMIT\\ENDEREMIT\\xLgr", "Rua Direita"},
    {"EMIT\\ENDEREMIT\\Nro", "10"},
    {"EMIT\\ENDEREMIT\\xBairro", "Centro"},
    {"EMIT\\ENDEREMIT\\cMun", "3550308"},
    {"EMIT\\ENDEREMIT\\UF", "SP"},
    {"EMIT\\ENDEREMIT\\CEP", "01001000"},
    {"EMIT\\IE", "111111111111"},
    {"EMIT\\CRT", "3"},
    {"IDE\\cUF", "35"},
    {"IDE\\cMunFG", "3550308"},
}};

constexpr std::string_view kCopia = "libloja";
constexpr std::string_view kDiario = "ZEL_Framework.diario";
constexpr const char *kProtocolo = "135260000000001";
constexpr const char *kAutorizadoEm = "2026-11-24T10:20:30-03:00";

std::string base64(std::string_view bytes) {
    constexpr std::string_view kLetras =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string texto;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        unsigned tres = 0;
        const std::size_t quantos = std::min<std::size_t>(3, bytes.size() - i);
        for (std::size_t k = 0; k < 3; ++k)
            tres = tres << 8 | (k < quantos ? static_cast<unsigned char>(bytes[i + k]) : 0U);
        for (std::size_t k = 0; k < 4; ++k)
            texto += k <= quantos ? kLetras[tres >> (18 - 6 * k) & 63] : '=';
    }
    return texto;
}

} // namespace

void exigir(int codigo, std::string_view passo, int esperado) {
    if (codigo != esperado)
        throw std::runtime_error(std::string(passo) + " answered " + std::to_string(codigo));
}

Loja::Loja(const fs::path &base, fs::path biblioteca)
    : pasta_(base), original_(biblioteca.empty() ? ZEL_BIBLIOTECA : std::move(biblioteca)) {
    unsetenv("ZEL_DIRETORIO"); // a developer's own till must not be touched
    copiar();
    carregar();
    for (const auto &[chave, valor] : kEmitente)
        exigir((*this)->regAlterarValor_ZEL(chave, valor), chave);
}

void Loja::descarregar() {
    biblioteca_.reset();
}

void Loja::copiar() {
    // Another file name is another library to the loader, with globals of its own.
    if (!copia_.empty()) fs::remove(copia_);
    copia_ = pasta_ / (std::string(kCopia) + std::to_string(++copias_) + ".so");
    fs::copy_file(original_, copia_);
}

void Loja::carregar() {
    biblioteca_ = std::make_unique<Biblioteca>(copia_);
}

std::map<std::string, std::string> Loja::arquivos() const {
    std::map<std::string, std::string> todos;
    for (const fs::directory_entry &entrada : fs::recursive_directory_iterator(diretorio())) {
        const std::string nome = fs::relative(entrada.path(), diretorio()).string();
        if (entrada.is_regular_file() && !nome.starts_with(kCopia) && nome != kDiario)
            todos[nome] = ler(nome);
    }
    return todos;
}

std::string Loja::ler(std::string_view nome) const {
    const auto conteudo = lerTudo(pasta_ / nome);
    if (!conteudo) throw std::runtime_error(std::string(nome) + " cannot be read");
    return *conteudo;
}

void Loja::escrever(std::string_view nome, std::string_view conteudo) const {
    if (!gravarTudo(pasta_ / nome, conteudo))
        throw std::runtime_error(std::string(nome) + " cannot be written");
}

std::string Loja::config(const char *chave) const {
    std::vector<char> valor(ZEL_TAMANHO_VALOR);
    exigir((*this)->regRetornarValor_ZEL(chave, valor.data()), chave);
    return valor.data();
}

void Loja::abrir() const {
    exigir((*this)->aCFAbrir_ZEL("123.456.789-09", "Maria de F\xE1tima", "Rua das Flores", "25",
                                 "Jardim", "3550308", "S\xE3o Paulo", "SP", "01310100"),
           "aCFAbrir_ZEL");
}

void Loja::vender(int item) const {
    const Mercadoria &m = kMercadorias[static_cast<std::size_t>(item) % kMercadorias.size()];
    exigir((*this)->aCFVender_ZEL("T1800", m.quantidade, m.preco, "", "", m.codigo, m.unidade,
                                  m.descricao),
           "aCFVender_ZEL");
}

void Loja::vender(int primeiro, int ultimo) const {
    for (int item = primeiro; item <= ultimo; ++item)
        vender(item);
}

void Loja::totalizar() const {
    exigir((*this)->aCFTotalizar_ZEL("", ""), "aCFTotalizar_ZEL");
}

void Loja::pagar() const {
    exigir((*this)->aCFEfetuarPagamento_ZEL("Dinheiro", ""), "aCFEfetuarPagamento_ZEL");
}

void Loja::encerrar() const {
    exigir((*this)->tCFEncerrar_ZEL("Obrigado pela prefer\xEAncia"), "tCFEncerrar_ZEL");
}

void Loja::autorizar() const {
    escrever("nota.xml", ler("documentosEnvio.xml"));
    escrever("retorno.xml", retornoAutorizado(config("NFCE\\ChaveDeAcesso")));
}

int Loja::imprimir(std::vector<char> &saida) const {
    return (*this)->GerarArquivoFormatadoNF_ZEL((diretorio() + "nota.xml").c_str(),
                                                (diretorio() + "retorno.xml").c_str(), "", 48, 1,
                                                "", saida.data());
}

std::size_t tamanhoDoCupom(int itens) {
    return 65536 + std::size_t{512} * static_cast<std::size_t>(itens);
}

std::string documentoAutorizado(const Loja &loja) {
    return base64("<nfeProc versao=\"3.10\">" + loja.ler("documentosEnvio.xml") +
                  "<protNFe versao=\"3.10\"><infProt><chNFe>" + loja.config("NFCE\\ChaveDeAcesso") +
                  "</chNFe><dhRecbto>" + kAutorizadoEm + "</dhRecbto><nProt>" + kProtocolo +
                  "</nProt><digVal>abc=</digVal><cStat>100</cStat></infProt></protNFe></nfeProc>");
}
