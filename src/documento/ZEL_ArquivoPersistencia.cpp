#include "documento/ZEL_ArquivoPersistencia.h"

#include "ZEL_FelborFramework.h"
#include "documento/ZEL_Controle.h"
#include "documento/ZEL_Parser.h"
#include "documento/ZEL_Persistencia.h"
#include "util/Arquivo.h"
#include "util/Diretorio.h"
#include "util/Numero.h"
#include "util/Trava.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace zel {

namespace {

// The section of each record type, "01" first.
constexpr std::array<Secao, 6> kSecaoDoTipo{Secao::kAbertura,    Secao::kVenda,
                                            Secao::kTotalizacao, Secao::kTransporte,
                                            Secao::kPagamento,   Secao::kEncerramento};

constexpr bool ehLista(Secao secao) {
    return secao == Secao::kVenda || secao == Secao::kPagamento;
}

// What this process knows of the file.
struct EstadoDoArquivo {
    bool lido = false; // or found missing; what could not be read must not be written over
    std::optional<std::size_t> tamanho; // none: the next save writes the whole document
    bool danificado = false;            // keep a copy before it is replaced
};
EstadoDoArquivo arquivo;

ArquivoPendente persistencia("ArqPersist.bin", "ArqPersist.tmp", Acesso::kPrivado);
constexpr std::string_view kNomeDanificado = "ArqPersist.bin.danificado";

// One record, from its type to its line end.
void escreverRegistro(std::string &texto, Secao secao, const ST_tagZEL &raiz) {
    const auto tipo = std::find(kSecaoDoTipo.begin(), kSecaoDoTipo.end(), secao);
    texto += formatarInteiro(tipo - kSecaoDoTipo.begin() + 1, 2);
    texto += '|';
    if (ehLista(secao)) {
        // A damaged payment's number was read together with what stood behind it.
        const std::string_view numero = raiz.valor ? std::string_view(*raiz.valor) : "";
        texto.append(numero.substr(0, numero.find('|'))) += '|';
    }
    raiz.escreverEstrutura(texto);
    texto += "\r\n";
}

std::string escreverDocumento(const ST_PersitenceXML_ZEL &documento) {
    std::string texto;
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

// The place of a line's record type in kSecaoDoTipo.
std::optional<std::size_t> tipoDaLinha(std::string_view linha) {
    const long long tipo = lerInteiro(linha.substr(0, 2));
    if (tipo < 1 || tipo > static_cast<long long>(kSecaoDoTipo.size())) return {};
    return static_cast<std::size_t>(tipo - 1);
}

// Calls `ler` with each complete line until it answers something other than 1. Returns that answer,
// and in `inteiro` the bytes that complete lines take.
template <class Ler>
int percorrerLinhas(std::string_view texto, std::size_t &inteiro, Ler ler) {
    inteiro = 0;
    for (std::size_t fim; (fim = texto.find('\n', inteiro)) != texto.npos; inteiro = fim + 1) {
        std::string_view linha = texto.substr(inteiro, fim - inteiro);
        if (linha.ends_with('\r')) linha.remove_suffix(1);
        if (const int resultado = ler(linha); resultado != ZEL_OK) return resultado;
    }
    return ZEL_OK;
}

int lerRegistro(ST_PersitenceXML_ZEL &documento, std::string_view linha) {
    const auto tipo = tipoDaLinha(linha);
    if (!tipo) return ZEL_RECUSADO;
    const Secao secao = kSecaoDoTipo[*tipo];
    std::string_view conteudo = linha.substr(std::min<std::size_t>(3, linha.size()));
    ST_tagZEL raiz = newST_tagZEL(false, nomeSecao(secao));
    if (ehLista(secao)) {
        const std::size_t barra = conteudo.find('|');
        if (barra == conteudo.npos) return ZEL_RECUSADO;
        // A payment's number is the three characters behind the type, whatever they are.
        raiz.valor = secao == Secao::kPagamento
                         ? conteudo.substr(0, 3)
                         : conteudo.substr(0, std::min<std::size_t>(barra, 4));
        conteudo.remove_prefix(barra + 1);
    }
    if (const int resultado = fnParseToTag_ZEL(raiz, conteudo); resultado != ZEL_OK)
        return resultado;
    return documento.fnAdicionarTagZEL(secao, std::move(raiz));
}

// How many records of each type there are, "01" first; none when a line is damaged or the last one
// has no end.
std::optional<std::array<int, 6>> contarRegistros(std::string_view texto) {
    std::array<int, 6> quantos{};
    std::size_t inteiro = 0;
    const int resultado = percorrerLinhas(texto, inteiro, [&](std::string_view linha) {
        const auto tipo = tipoDaLinha(linha);
        if (tipo) ++quantos[*tipo];
        return static_cast<int>(tipo ? ZEL_OK : ZEL_RECUSADO);
    });
    if (resultado != ZEL_OK || inteiro != texto.size()) return {};
    return quantos;
}

// The first line of a record type; empty when there is none.
std::string_view linhaDoTipo(std::string_view texto, std::size_t tipo) {
    std::size_t inteiro = 0;
    std::string_view achada;
    percorrerLinhas(texto, inteiro, [&](std::string_view linha) {
        if (tipoDaLinha(linha) == tipo) achada = linha;
        return static_cast<int>(achada.empty() ? ZEL_OK : ZEL_RECUSADO);
    });
    return achada;
}

// Whether waiting records were committed: they are those of the state that the configuration holds,
// and the file in place lacks the record that led there. Only a payment that completes the total is
// committed with its state, and a closing section with the issued document.
bool pertencem(std::string_view esperando, std::string_view noLugar) {
    constexpr std::pair<Estado, std::size_t> kUltimoRegistro[] = {
        {kEncerrado, 5}, {kPagamento, 4}, {kTotalizado, 2}, {kVendendo, 1}, {kAberto, 0}};
    const auto novos = contarRegistros(esperando);
    if (!novos) return false;
    for (const auto &[estado, tipo] : kUltimoRegistro) {
        if ((*novos)[tipo] == 0) continue;
        if (estado != fnCFVerificarStatus_ZEL()) return false;
        // Any receipt begins with the same record.
        if (estado == kAberto) return true;
        // A till that was set back may have totalized before, with another result.
        if (!ehLista(kSecaoDoTipo[tipo]))
            return linhaDoTipo(esperando, tipo) != linhaDoTipo(noLugar, tipo);
        const auto antigos = contarRegistros(noLugar);
        return !antigos || (*antigos)[tipo] + 1 == (*novos)[tipo];
    }
    return false;
}

// Before any save: no waiting file, and a damaged original kept beside. 1 or -52.
int prepararGravacao() {
    if (persistencia.limpar() != ZEL_OK) return ZEL_ARQUIVO_INDISPONIVEL;
    if (!arquivo.danificado) return ZEL_OK;
    std::string original;
    const Leitura leitura = lerArquivo(persistencia.caminho(), original, Ligacao::kNaoSeguida);
    if (leitura == Leitura::kFalha) return ZEL_ARQUIVO_INDISPONIVEL;
    if (leitura == Leitura::kLido &&
        substituirArquivo(fnConfigurarPath(kNomeDanificado), original, Acesso::kPrivado) != ZEL_OK)
        return ZEL_ARQUIVO_INDISPONIVEL;
    arquivo.danificado = false;
    return ZEL_OK;
}

// True when a record of the section, written last, is read back in its place. A carrier's record in
// front of it changes nothing: items are counted among themselves.
bool ehUltimoRegistro(Secao secao) {
    const ST_PersitenceXML_ZEL &documento = G_stXML_Persistencia;
    if (documento.encerramento) return false;
    if (secao == Secao::kPagamento) return true;
    return !documento.totalizacao && documento.pagamentos->empty();
}

} // namespace

bool fnEstruturaLida_ZEL() {
    return arquivo.lido;
}

void fnEsquecerEstrutura_ZEL() {
    G_stXML_Persistencia.fnLimpar();
    arquivo = {};
}

int fnPersistEstrutura_ZEL() {
    if (!arquivo.lido || prepararGravacao() != ZEL_OK) return ZEL_ARQUIVO_INDISPONIVEL;
    const std::string texto = escreverDocumento(G_stXML_Persistencia);
    if (substituirArquivo(persistencia.caminho(), texto, Acesso::kPrivado) != ZEL_OK)
        return ZEL_ARQUIVO_INDISPONIVEL;
    arquivo.tamanho = texto.size();
    return ZEL_OK;
}

int fnPersistUltimo_ZEL(Secao secao) {
    if (!arquivo.tamanho || arquivo.danificado || !ehUltimoRegistro(secao))
        return fnPersistEstrutura_ZEL();
    if (persistencia.limpar() != ZEL_OK) return ZEL_ARQUIVO_INDISPONIVEL;
    const auto &lista =
        secao == Secao::kVenda ? G_stXML_Persistencia.vendas : G_stXML_Persistencia.pagamentos;
    std::string registro;
    escreverRegistro(registro, secao, lista->back());
    const int resultado = acrescentarArquivo(persistencia.caminho(), *arquivo.tamanho, registro);
    // Somebody replaced, cut or removed the file: what is in memory is the receipt.
    if (resultado == ZEL_RECUSADO) return fnPersistEstrutura_ZEL();
    if (resultado == ZEL_OK) *arquivo.tamanho += registro.size();
    return resultado;
}

int fnPersistComConfig_ZEL(std::span<const Alteracao> alteracoes, std::span<const Espera> outros) {
    if (!arquivo.lido || prepararGravacao() != ZEL_OK) return ZEL_ARQUIVO_INDISPONIVEL;
    const std::string texto = escreverDocumento(G_stXML_Persistencia);
    // Others wait for theirs; the document in progress is in memory until the next save.
    std::vector<Espera> esperas(outros.begin(), outros.end());
    esperas.push_back({persistencia, texto});
    const int resultado = confirmarJuntos(esperas, alteracoes);
    if (resultado == ZEL_OK) arquivo.tamanho = texto.size();
    return resultado;
}

int fnCarregaEstrutura_ZEL(bool *passageira) {
    if (passageira != nullptr) *passageira = true;
    std::string texto;
    Leitura leitura = lerArquivo(persistencia.caminho(), texto, Ligacao::kNaoSeguida);
    if (leitura == Leitura::kFalha) return ZEL_ARQUIVO_INDISPONIVEL;
    bool trocado = false;
    const auto pertence = [&](std::string_view esperando) {
        // With no file beside it, a waiting document is the only copy there is; in state 0 it is
        // that of an opening that did not happen.
        trocado = leitura == Leitura::kInexistente ? fnCFVerificarStatus_ZEL() != kNenhum
                                                   : pertencem(esperando, texto);
        return trocado;
    };
    if (const PosseDoCupom posse; posse && persistencia.resolver(pertence) != ZEL_OK)
        return ZEL_ARQUIVO_INDISPONIVEL;
    if (trocado) leitura = lerArquivo(persistencia.caminho(), texto, Ligacao::kNaoSeguida);
    if (leitura == Leitura::kFalha) return ZEL_ARQUIVO_INDISPONIVEL;

    // Read apart, for memory may run out on the way.
    ST_PersitenceXML_ZEL documento;
    std::size_t inteiro = 0;
    const int resultado = percorrerLinhas(
        texto, inteiro, [&](std::string_view linha) { return lerRegistro(documento, linha); });
    if (passageira != nullptr) *passageira = false;
    G_stXML_Persistencia = std::move(documento);
    arquivo = {.lido = true, .tamanho = {}};
    if (leitura == Leitura::kInexistente) return ZEL_ARQUIVO_INDISPONIVEL;
    arquivo.danificado = resultado != ZEL_OK;
    if (inteiro == texto.size()) arquivo.tamanho = inteiro;
    return resultado;
}

} // namespace zel
