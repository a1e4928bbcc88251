// SPDX-License-Identifier: MIT
#include "config/Registro.h"

#include "comum/ArquivosDoCaixa.h"
#include "diario/Gravacao.h"
#include "disco/Arquivo.h"
#include "disco/Diretorio.h"
#include "disco/Trava.h"
#include "recusa/Recusa.h"
#include "texto/Numero.h"
#include "texto/TextoXml.h"
#include "zel_felbor/codigos.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace zel {

namespace {

constexpr std::size_t kMaximoCaminho = 100;
constexpr std::size_t kMaximoAutorizacao = 44;

struct Registro {
    ValoresConfig valores;
    // The file's bytes as last loaded or saved; none until then. They and the values change
    // together, and only after the file has.
    std::optional<TextoConfig> arquivo;
    // How a file stands that holds these bytes; none where it could be changed and look the same.
    std::optional<Identidade> identidade;
    std::uint64_t vez = 0; // in which they were last found to be the file's
    bool inteiro = false;  // every value is the one that `arquivo` holds
    std::uint64_t numerosDeOutros = 0;
    Autorizacao autorizacao;
};

// Holds the defaults from the moment the library is loaded.
Registro G_stRegistroZEL_AUX;

constexpr std::string_view kNomeArquivo = arquivos::kConfig;

std::string caminhoArquivo() {
    return fnConfigurarPath(kNomeArquivo);
}

MudancaArquivo mudancaPara(std::string_view texto) {
    MudancaArquivo mudanca{.nome = kNomeArquivo, .ligacao = Ligacao::kSeguida, .depois = texto};
    if (G_stRegistroZEL_AUX.arquivo) mudanca.antes = G_stRegistroZEL_AUX.arquivo->texto;
    return mudanca;
}

// The file's bytes are those in memory, or `lido` when they were just read.
int gravar(std::string_view texto, std::optional<std::string_view> lido) {
    const Vez vez;
    if (!vez) return vez.recusa();
    if (const int codigo = acompanharDiario(); codigo != ZEL_OK) return codigo;
    MudancaArquivo mudanca = mudancaPara(texto);
    mudanca.antes = lido;
    return gravarJuntos({&mudanca, 1});
}

bool mesmoNumero(const ValoresConfig &a, const ValoresConfig &b) {
    constexpr Chave kNumero = R"(IDE\nNF)"_chave, kSerie = R"(IDE\Serie)"_chave;
    return a[kNumero] == b[kNumero] && a[kSerie] == b[kSerie];
}

void assumir(CargaConfig carga) {
    if (!mesmoNumero(G_stRegistroZEL_AUX.valores, carga.valores))
        ++G_stRegistroZEL_AUX.numerosDeOutros;
    G_stRegistroZEL_AUX.valores = std::move(carga.valores);
    G_stRegistroZEL_AUX.arquivo = std::move(carga.arquivo);
    G_stRegistroZEL_AUX.identidade.reset();
    G_stRegistroZEL_AUX.inteiro = carga.inteira;
}

int fnXML_CriarArquivo_Felbor_ZEL() {
    const ValoresConfig &valores = G_stRegistroZEL_AUX.valores;
    // What it writes it finds again.
    CargaConfig carga{valores, *localizar(fnXML_CriarArquivo(valores)), true};
    if (const int codigo = gravar(carga.arquivo.texto, {}); codigo != ZEL_OK) return codigo;
    assumir(std::move(carga));
    return ZEL_OK;
}

// Whether the file is the one whose bytes are known, by its identity; asked once in a turn.
bool inalterada() {
    const Registro &registro = G_stRegistroZEL_AUX;
    if (!registro.arquivo) return false;
    if (Vez::atual() != 0 && registro.vez == Vez::atual()) return true;
    Identidade achada;
    return registro.identidade &&
           identificar(caminhoArquivo(), Ligacao::kSeguida, achada) == Leitura::kLido &&
           achada == *registro.identidade;
}

// Takes over what the file holds, unless its bytes are known already; a missing file is created
// from the values in memory. `texto` receives the file's bytes where they had to be read.
int carregar(std::string &texto) {
    if (inalterada()) {
        G_stRegistroZEL_AUX.vez = Vez::atual();
        return ZEL_OK;
    }
    Identidade identidade;
    switch (lerArquivo(caminhoArquivo(), texto, Ligacao::kSeguida, &identidade)) {
    case Leitura::kInexistente:
        return fnXML_CriarArquivo_Felbor_ZEL();
    case Leitura::kFalha:
        return arquivoIndisponivel();
    case Leitura::kLido:
        break;
    }
    Registro &registro = G_stRegistroZEL_AUX;
    if (!registro.arquivo || registro.arquivo->texto != texto) {
        auto carga = fnXML_CarregarXML(texto, registro.valores);
        if (!carga) return recusar(Motivo::kConfigIlegivel);
        const bool completa = carga->arquivo.texto == texto;
        if (!completa)
            if (const int codigo = gravar(carga->arquivo.texto, texto); codigo != ZEL_OK)
                return codigo;
        assumir(std::move(*carga));
        if (!completa) return ZEL_OK;
    }
    registro.vez = Vez::atual();
    if (assentada(identidade)) registro.identidade = identidade;
    return ZEL_OK;
}

// The defaults in memory and the file over them; one without its root tags makes way for a new one.
int carregarSobrePadroes() {
    fnInicializarEstruturaDadosZEL_AUX();
    std::string texto;
    const int codigo = carregar(texto);
    if (codigo != ZEL_CONFIG_ILEGIVEL) return codigo;
    // It may be the only copy of the taxpayer's settings.
    if (const int copia = substituirArquivo(fnConfigurarPath(arquivos::kConfigDanificada), texto,
                                            Acesso::kPrivado);
        copia != ZEL_OK)
        return copia;
    return fnXML_CriarArquivo_Felbor_ZEL();
}

} // namespace

std::string_view valorConfig(Chave chave) {
    return G_stRegistroZEL_AUX.valores[chave];
}

double fnArredondarTruncar(double valor) {
    const bool truncar = igualSemCaixa(valorConfig(R"(CONFIGURACAO\ArredondarTruncar)"_chave), "T");
    return arredondarOuTruncar(valor, truncar);
}

int fnXML_CarregarXML_ZEL() {
    std::string texto;
    return carregar(texto);
}

bool configAlterada() {
    return !inalterada();
}

std::uint64_t numerosDeOutros() {
    return G_stRegistroZEL_AUX.numerosDeOutros;
}

int garantirConfig() {
    return G_stRegistroZEL_AUX.arquivo ? int{ZEL_OK} : fnXML_CarregarXML_ZEL();
}

int inicializarConfig() {
    Registro anterior = G_stRegistroZEL_AUX;
    try {
        const int codigo = carregarSobrePadroes();
        if (codigo != ZEL_OK) {
            G_stRegistroZEL_AUX = std::move(anterior);
            return codigo;
        }
        // No process closed a document under the defaults in between.
        const bool deOutro = !mesmoNumero(G_stRegistroZEL_AUX.valores, anterior.valores);
        G_stRegistroZEL_AUX.numerosDeOutros = anterior.numerosDeOutros + (deOutro ? 1 : 0);
        return codigo;
    } catch (...) {
        G_stRegistroZEL_AUX = std::move(anterior);
        throw;
    }
}

int alterarConfig(std::span<const Alteracao> alteracoes, std::span<const MudancaArquivo> outros) {
    std::vector<Alteracao> cortadas(alteracoes.begin(), alteracoes.end());
    for (Alteracao &alteracao : cortadas) {
        const std::size_t maximo = stZELTAGs[alteracao.chave.indice].tamanho;
        alteracao.valor.resize(cortarBytes(alteracao.valor, maximo).size());
        // It would end the value in the file.
        if (alteracao.valor.find("</") != std::string::npos)
            return recusar(Motivo::kValorComFim, {.campo = caminhoDa(alteracao.chave)});
    }
    const Vez vez;
    if (!vez) return vez.recusa();
    // A call may change more than once: what is read must be what the last change left.
    if (const int codigo = completarDiario(); codigo != ZEL_OK) return codigo;
    if (cortadas.empty()) return outros.empty() ? int{ZEL_OK} : gravarJuntos(outros);
    if (const int codigo = fnXML_CarregarXML_ZEL(); codigo != ZEL_OK) return codigo;

    Registro &registro = G_stRegistroZEL_AUX;
    const bool iguais =
        registro.inteiro &&
        std::all_of(cortadas.begin(), cortadas.end(), [&](const Alteracao &alteracao) {
            return registro.valores[alteracao.chave] == alteracao.valor;
        });
    if (iguais) return outros.empty() ? int{ZEL_OK} : gravarJuntos(outros);
    auto novo = fnXML_AlterarArquivo(*registro.arquivo, cortadas);
    if (!novo)
        return recusar(Motivo::kConfigSemLugar, {.campo = caminhoDa(cortadas.front().chave)});
    std::vector<MudancaArquivo> mudancas(outros.begin(), outros.end());
    mudancas.push_back(mudancaPara(novo->texto));
    if (const int codigo = gravarJuntos(mudancas); codigo != ZEL_OK) return codigo;
    // Nothing may fail after the commit.
    for (Alteracao &alteracao : cortadas)
        registro.valores.assumir(std::move(alteracao));
    registro.arquivo = std::move(*novo);
    registro.identidade = identidadeMarcada(kNomeArquivo);
    return ZEL_OK;
}

std::vector<Alteracao> valoresAtuais(std::span<const Alteracao> alteracoes) {
    std::vector<Alteracao> atuais;
    for (const Alteracao &alteracao : alteracoes)
        atuais.push_back({alteracao.chave, std::string(valorConfig(alteracao.chave))});
    return atuais;
}

namespace {

int recusarChave(std::string_view caminho) {
    return caminho.data() == nullptr
               ? recusar(Motivo::kChaveNula)
               : recusar(Motivo::kChaveDesconhecida, {.campo = "chave", .dado = caminho});
}

} // namespace

int fnInicializarEstruturaDadosZEL_AUX() {
    G_stRegistroZEL_AUX.valores = ValoresConfig{};
    // What the file holds has to be read again.
    G_stRegistroZEL_AUX.arquivo.reset();
    G_stRegistroZEL_AUX.identidade.reset();
    return ZEL_OK;
}

int fnRegRetornarValor_ZEL(std::string_view caminho, std::string &valor) {
    const auto chave = procurarChave(caminho.substr(0, kMaximoCaminho));
    if (!chave) return recusarChave(caminho);
    valor = valorConfig(*chave);
    return ZEL_OK;
}

int fnRegAlterarValor_ZEL(std::string_view caminho, std::string_view valor) {
    const auto chave = procurarChave(caminho.substr(0, kMaximoCaminho));
    if (!chave) return recusarChave(caminho);
    const Alteracao alteracao{*chave, std::string(valor)};
    return alterarConfig({&alteracao, 1});
}

const Autorizacao &autorizacaoUltimoDocumento() {
    return G_stRegistroZEL_AUX.autorizacao;
}

void definirAutorizacao(Autorizacao autorizacao) {
    for (std::string *texto : {&autorizacao.digest, &autorizacao.dataHora})
        if (texto->size() > kMaximoAutorizacao) texto->resize(kMaximoAutorizacao);
    G_stRegistroZEL_AUX.autorizacao = std::move(autorizacao);
}

} // namespace zel
