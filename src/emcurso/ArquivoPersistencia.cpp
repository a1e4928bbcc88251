// SPDX-License-Identifier: MIT
#include "emcurso/ArquivoPersistencia.h"

#include "comum/ArquivosDoCaixa.h"
#include "diario/Gravacao.h"
#include "disco/Arquivo.h"
#include "disco/Diretorio.h"
#include "emcurso/Registros.h"
#include "recusa/Recusa.h"
#include "secao/Parser.h"
#include "texto/Numero.h"
#include "zel_felbor/codigos.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace zel {

namespace {

// What this process knows of the file.
struct EstadoDoArquivo {
    bool lido = false; // or found missing; what could not be read must not be written over
    std::optional<std::size_t> tamanho; // none: the next save writes the whole document
    bool danificado = false;            // keep a copy before it is replaced
    std::size_t transporteNoFim = 0;    // bytes of the carrier's record where that is the last one
    std::optional<Identidade> identidade; // of the file that memory has; none for no file
    std::uint64_t leituras = 0;           // of the journal, by then
};
EstadoDoArquivo arquivo;

constexpr std::string_view kNome = arquivos::kCupom;

std::string caminho() {
    return fnConfigurarPath(kNome);
}

// One record, from its type to its line end.
void escreverRegistro(std::string &texto, Secao secao, const ST_tagZEL &raiz) {
    const auto tipo = std::find(kSecaoDoTipo.begin(), kSecaoDoTipo.end(), secao);
    texto += formatarInteiro(tipo - kSecaoDoTipo.begin() + 1, 2);
    texto += '|';
    if (ehLista(secao)) {
        // A damaged payment's number was read together with what stood after it.
        const std::string_view numero = raiz.valor ? std::string_view(*raiz.valor) : "";
        texto.append(numero.substr(0, numero.find('|'))) += '|';
    }
    raiz.escreverEstrutura(texto);
    texto += "\r\n";
}

std::string escreverDocumento(const ST_PersitenceXML_ZEL &documento) {
    std::string texto;
    texto.reserve(arquivo.tamanho.value_or(0) * 5 / 4); // it seldom grows by more
    const auto uma = [&](Secao secao, const std::optional<ST_tagZEL> &raiz) {
        if (raiz) escreverRegistro(texto, secao, *raiz);
    };
    const auto lista = [&](Secao secao, const std::optional<std::vector<ST_tagZEL>> &raizes) {
        if (raizes)
            for (const ST_tagZEL &raiz : *raizes)
                escreverRegistro(texto, secao, raiz);
    };
    uma(Secao::kAbertura, documento.abertura);
    lista(Secao::kVenda, documento.vendas);
    uma(Secao::kTotalizacao, documento.totalizacao);
    uma(Secao::kTransporte, documento.transporte);
    lista(Secao::kPagamento, documento.pagamentos);
    uma(Secao::kEncerramento, documento.encerramento);
    return texto;
}

int lerRegistro(ST_PersitenceXML_ZEL &documento, std::string_view linha) {
    const auto tipo = tipoDaLinha(linha);
    if (!tipo) return recusar(Motivo::kRegistroDanificado);
    const Secao secao = kSecaoDoTipo[*tipo];
    std::string_view conteudo = linha.substr(std::min<std::size_t>(3, linha.size()));
    ST_tagZEL raiz = newST_tagZEL(false, nomeSecao(secao));
    if (ehLista(secao)) {
        const std::size_t barra = conteudo.find('|');
        if (barra == conteudo.npos) return recusar(Motivo::kRegistroDanificado);
        // A payment's number is the three characters after the type, whatever they are.
        raiz.valor = secao == Secao::kPagamento
                         ? conteudo.substr(0, 3)
                         : conteudo.substr(0, std::min<std::size_t>(barra, 4));
        conteudo.remove_prefix(barra + 1);
    }
    if (const int resultado = fnParseToTag_ZEL(raiz, conteudo); resultado != ZEL_OK)
        return resultado;
    return documento.fnAdicionarTagZEL(secao, std::move(raiz));
}

// Before any save: a damaged original is kept beside. False when it cannot be.
bool guardarDanificado() {
    if (!arquivo.danificado) return true;
    std::string original;
    const Leitura leitura = lerArquivo(caminho(), original, Ligacao::kNaoSeguida);
    if (leitura == Leitura::kFalha) return false;
    if (leitura == Leitura::kLido && substituirArquivo(fnConfigurarPath(arquivos::kCupomDanificado),
                                                       original, Acesso::kPrivado) != ZEL_OK)
        return false;
    arquivo.danificado = false;
    return true;
}

// What is known of a file that holds the document whole, in the order of its records.
EstadoDoArquivo estadoInteiro(const ST_PersitenceXML_ZEL &documento, std::size_t tamanho) {
    EstadoDoArquivo estado;
    estado.lido = true;
    estado.tamanho = tamanho;
    const bool noFim = documento.transporte && !documento.encerramento &&
                       (!documento.pagamentos || documento.pagamentos->empty());
    std::string registro;
    if (noFim) escreverRegistro(registro, Secao::kTransporte, *documento.transporte);
    estado.transporteNoFim = registro.size();
    return estado;
}

// The file is as the change that was just made left it.
void assumirGravado(EstadoDoArquivo estado) {
    estado.identidade = identidadeDeixada(kNome);
    estado.leituras = leiturasDoDiario();
    arquivo = estado;
}

// The record last added to the section; null for none.
const ST_tagZEL *ultimoDe(const ST_PersitenceXML_ZEL &documento, Secao secao) {
    const auto daLista = [](const std::optional<std::vector<ST_tagZEL>> &lista) {
        return lista && !lista->empty() ? &lista->back() : nullptr;
    };
    if (secao == Secao::kVenda) return daLista(documento.vendas);
    if (secao == Secao::kPagamento) return daLista(documento.pagamentos);
    return documento.totalizacao ? &*documento.totalizacao : nullptr;
}

// Where a new record begins a new end of the file; none where records stand after it that would
// have to be written anew. The carrier's goes after items and totals.
std::optional<std::size_t> lugarDoUltimo(const ST_PersitenceXML_ZEL &documento, Secao secao) {
    if (!arquivo.tamanho || documento.encerramento) return {};
    if (secao == Secao::kPagamento) return arquivo.tamanho;
    if (secao == Secao::kVenda && documento.totalizacao) return {};
    if (documento.pagamentos && !documento.pagamentos->empty()) return {};
    // A file that ends with something else was not written in this order.
    if (documento.transporte.has_value() != (arquivo.transporteNoFim > 0)) return {};
    return *arquivo.tamanho - arquivo.transporteNoFim;
}

} // namespace

bool estruturaLida() {
    return arquivo.lido;
}

int recusarSemDocumento() {
    return arquivo.lido ? recusar(Motivo::kSemDocumento) : arquivoIndisponivel();
}

bool estruturaAlterada() {
    if (!arquivo.lido || arquivo.leituras != leiturasDoDiario()) return true;
    Identidade achada;
    const Leitura leitura = identificar(caminho(), Ligacao::kNaoSeguida, achada);
    if (leitura == Leitura::kInexistente) return arquivo.identidade.has_value();
    return leitura != Leitura::kLido || arquivo.identidade != achada;
}

void esquecerEstrutura(ST_PersitenceXML_ZEL &documento) {
    documento.fnLimpar();
    arquivo = {};
}

int fnPersistEstrutura_ZEL(const ST_PersitenceXML_ZEL &documento,
                           std::span<const Alteracao> alteracoes,
                           std::span<const MudancaArquivo> outros) {
    if (!arquivo.lido || !guardarDanificado()) return arquivoIndisponivel();
    const std::string texto = escreverDocumento(documento);
    std::vector<MudancaArquivo> mudancas(outros.begin(), outros.end());
    mudancas.push_back({.nome = kNome, .depois = texto});
    const EstadoDoArquivo depois = estadoInteiro(documento, texto.size());
    if (const int resultado = alterarConfig(alteracoes, mudancas); resultado != ZEL_OK)
        return resultado;
    assumirGravado(depois);
    return ZEL_OK;
}

int persistirUltimo(const ST_PersitenceXML_ZEL &documento, Secao secao,
                    std::span<const Alteracao> alteracoes) {
    const ST_tagZEL *novo = ultimoDe(documento, secao);
    const auto lugar = lugarDoUltimo(documento, secao);
    if (arquivo.danificado || novo == nullptr || !lugar)
        return fnPersistEstrutura_ZEL(documento, alteracoes);
    std::string fim;
    escreverRegistro(fim, secao, *novo);
    // The carrier's, which the new one has taken the place of; a payment stands after it.
    if (*lugar < *arquivo.tamanho) escreverRegistro(fim, Secao::kTransporte, *documento.transporte);
    EstadoDoArquivo depois = arquivo;
    depois.tamanho = *lugar + fim.size();
    if (secao == Secao::kPagamento) depois.transporteNoFim = 0;
    const MudancaArquivo mudanca{
        .nome = kNome,
        .depois = fim,
        .fim = MudancaArquivo::Fim{.lugar = *lugar, .tamanho = *arquivo.tamanho, .inteiro = [&] {
                                       std::string texto = escreverDocumento(documento);
                                       depois = estadoInteiro(documento, texto.size());
                                       return texto;
                                   }}};
    if (const int resultado = alterarConfig(alteracoes, {&mudanca, 1}); resultado != ZEL_OK)
        return resultado;
    assumirGravado(depois);
    return ZEL_OK;
}

int fnCarregaEstrutura_ZEL(ST_PersitenceXML_ZEL &documento, bool *passageira) {
    if (passageira != nullptr) *passageira = true;
    std::string texto;
    Identidade identidade;
    const Leitura leitura = lerArquivo(caminho(), texto, Ligacao::kNaoSeguida, &identidade);
    if (leitura == Leitura::kFalha) return arquivoIndisponivel();

    // Read apart, for memory may run out on the way.
    ST_PersitenceXML_ZEL lido;
    std::size_t inteiro = 0;
    const int resultado = percorrerLinhas(
        texto, inteiro, [&](std::string_view linha) { return lerRegistro(lido, linha); });
    EstadoDoArquivo estado;
    estado.lido = true;
    if (leitura == Leitura::kLido && inteiro == texto.size()) {
        estado = estadoInteiro(lido, inteiro);
        // A file that was edited may have the carrier elsewhere.
        const std::size_t lugar = inteiro - std::min(estado.transporteNoFim, inteiro);
        if (!std::string_view(texto).substr(lugar).starts_with("04|")) estado.transporteNoFim = 0;
    }
    estado.leituras = leiturasDoDiario();
    if (leitura == Leitura::kLido) estado.identidade = identidade;
    estado.danificado = leitura == Leitura::kLido && resultado != ZEL_OK;
    if (passageira != nullptr) *passageira = false;
    documento = std::move(lido);
    arquivo = estado;
    return leitura == Leitura::kInexistente ? arquivoIndisponivel() : resultado;
}

} // namespace zel
