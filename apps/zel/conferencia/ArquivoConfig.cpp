// SPDX-License-Identifier: MIT
#include "conferencia/ArquivoConfig.h"

#include "leitura/Codigos.h"
#include "leitura/TabelaChaves.h"
#include "leitura/Texto.h"

#include "ZEL_FelborFramework.h"

#include <algorithm>
#include <set>

namespace zel::aplicativo {

namespace {

constexpr std::string_view kInicioRaiz = "<FRAMEWORKZEL>";
constexpr std::string_view kFimRaiz = "</FRAMEWORKZEL>";
constexpr std::string_view kNomeRaiz = "FRAMEWORKZEL";
constexpr std::string_view kProducaoAC = R"(URLS\AC\Producao)";
constexpr std::string_view kProducaoRS = R"(URLS\RS\Producao)";

// As the library: looking for the end of an unknown element may read the text to its end.
constexpr int kMaximoDesconhecidos = 50;
constexpr std::size_t kMaximoFalhas = 5; // said of one file

struct Marca {
    std::size_t inicio; // of its "<"
    std::size_t fim;    // after its ">"
    std::string_view nome;
};

// Walks the text as the library does: groups open and close, a key's value runs to the next "</".
class Leitor {
public:
    Leitor(std::string_view texto, std::vector<ElementoConfig> &elementos, Relatorio &relatorio)
        : texto_(texto), elementos_(elementos), relatorio_(relatorio) {}

    void ler() {
        posicao_ = texto_.find(kInicioRaiz) + kInicioRaiz.size();
        grupos_.emplace_back();
        while (!grupos_.empty()) {
            const Marca marca = proxima();
            if (marca.inicio == texto_.npos) break;
            posicao_ = marca.fim;
            if (marca.nome.empty())
                falhar("elemento-aberto", marca.inicio, "uma marca que começa com < não termina",
                       "Complete ou apague a marca.");
            else
                marca.nome.front() == '/' ? fechar(marca) : abrir(marca);
        }
    }

private:
    Marca proxima() const {
        std::size_t lugar = texto_.find('<', posicao_);
        while (lugar != texto_.npos && texto_.substr(lugar).starts_with("<!--")) {
            const std::size_t fim = texto_.find("-->", lugar + 4);
            lugar = fim == texto_.npos ? fim : texto_.find('<', fim);
        }
        if (lugar == texto_.npos) return {texto_.npos, texto_.npos, {}};
        const std::size_t fim = texto_.find_first_of("<>", lugar + 1);
        if (fim == texto_.npos) return {texto_.npos, texto_.npos, {}};
        if (texto_[fim] == '<') return {lugar, fim, {}};
        return {lugar, fim + 1, texto_.substr(lugar + 1, fim - lugar - 1)};
    }

    // Lines are counted on from the place last asked for, so that all of them cost one pass.
    std::size_t linhaDe(std::size_t lugar) {
        if (lugar < contadoAte_) {
            contadoAte_ = 0;
            linha_ = 1;
        }
        linha_ += static_cast<std::size_t>(
            std::count(texto_.begin() + static_cast<std::ptrdiff_t>(contadoAte_),
                       texto_.begin() + static_cast<std::ptrdiff_t>(lugar), '\n'));
        contadoAte_ = lugar;
        return linha_;
    }

    // Of many failures the first ones say what happened.
    void falhar(const IdAchado &id, std::size_t lugar, std::string texto, std::string remedio) {
        parou_ = true;
        if (++falhas_ > kMaximoFalhas) return;
        relatorio_.registrar(
            {id, "ZEL_Framework.xml", linhaDe(lugar), std::move(texto), std::move(remedio)});
    }

    static std::string dentroDe(const std::string &grupo, std::string_view nome) {
        return grupo.empty() ? std::string(nome) : juntar({grupo, "\\", nome});
    }

    void abrir(const Marca &marca) {
        for (std::size_t nivel = grupos_.size(); nivel > 0; --nivel) {
            const std::string caminho = dentroDe(grupos_[nivel - 1], marca.nome);
            const LinhaChave *chave = procurarChave(caminho);
            if (chave == nullptr && !ehGrupo(caminho)) continue;
            if (nivel != grupos_.size()) falharAberto(marca.inicio, grupos_.back());
            grupos_.resize(nivel);
            if (chave != nullptr) return lerChave(*chave, marca);
            grupos_.push_back(caminho);
            return;
        }
        desconhecido(marca);
    }

    void falharAberto(std::size_t lugar, const std::string &grupo) {
        falhar("elemento-aberto", lugar, juntar({"o grupo ", grupo, " não foi fechado antes"}),
               juntar({"Ponha </", grupo.substr(grupo.rfind('\\') + 1), "> antes desta linha."}));
    }

    void lerChave(const LinhaChave &chave, const Marca &marca) {
        const std::size_t fim = texto_.find("</", posicao_);
        if (fim == texto_.npos) {
            falhar("elemento-aberto", marca.inicio, juntar({chave.caminho, " não foi fechada"}),
                   juntar({"Ponha </", chave.nome(), "> depois do valor."}));
            posicao_ = texto_.size();
            return;
        }
        const std::string fecho = juntar({"</", chave.nome(), ">"});
        const bool fechada = texto_.substr(fim).starts_with(fecho);
        const std::string_view valor = texto_.substr(posicao_, fim - posicao_);
        if (!fechada) {
            // The library takes the value, and judges the end tag on its own.
            const bool antes = parou_;
            falhar("elemento-aberto", marca.inicio, juntar({chave.caminho, " não foi fechada"}),
                   juntar({"Ponha ", fecho, " depois do valor."}));
            parou_ = antes;
        }
        elementos_.push_back({&chave, utf8DeLatin1(valor), linhaDe(marca.inicio), parou_});
        posicao_ = fechada ? fim + fecho.size() : fim;
    }

    void fechar(const Marca &marca) {
        const std::string_view nome = marca.nome.substr(1);
        for (std::size_t nivel = grupos_.size(); nivel > 0; --nivel) {
            const std::string &grupo = grupos_[nivel - 1];
            const std::string_view seu =
                nivel == 1 ? kNomeRaiz : std::string_view(grupo).substr(grupo.rfind('\\') + 1);
            if (seu != nome) continue;
            if (nivel != grupos_.size()) falharAberto(marca.inicio, grupos_.back());
            grupos_.resize(nivel - 1);
            return;
        }
        falhar("elemento-aberto", marca.inicio, juntar({"</", nome, "> não fecha nada"}),
               "Apague a marca, ou ponha a de início que falta.");
    }

    void desconhecido(const Marca &marca) {
        const std::string caminho = dentroDe(grupos_.back(), marca.nome);
        const LinhaChave *parecida = procurarChaveSemCaixa(caminho);
        falhar("elemento-desconhecido", marca.inicio,
               juntar({"a biblioteca não conhece <", inicio(utf8DeLatin1(marca.nome), 40), "> em ",
                       grupos_.back().empty() ? kNomeRaiz : std::string_view(grupos_.back()),
                       " e para de ler aqui"}),
               parecida != nullptr ? juntar({"Escreva ", parecida->nome(), ", como no catálogo."})
                                   : "Apague o elemento, ou corrija o nome.");
        pular(marca.nome);
    }

    // Steps over the element whole when it ends within its group.
    void pular(std::string_view nome) {
        if (++desconhecidos_ > kMaximoDesconhecidos) {
            posicao_ = texto_.size();
            return;
        }
        const std::string &grupo = grupos_.back();
        const std::string_view seu =
            grupos_.size() == 1 ? kNomeRaiz : std::string_view(grupo).substr(grupo.rfind('\\') + 1);
        const std::size_t fimGrupo = texto_.find(juntar({"</", seu, ">"}), posicao_);
        if (fimGrupo == texto_.npos) return;
        const std::string fecho = juntar({"</", nome, ">"});
        const std::size_t fim = texto_.substr(0, fimGrupo).find(fecho, posicao_);
        if (fim != texto_.npos) posicao_ = fim + fecho.size();
    }

    std::string_view texto_;
    std::vector<ElementoConfig> &elementos_;
    Relatorio &relatorio_;
    std::size_t posicao_ = 0;
    std::vector<std::string> grupos_; // open groups, the root first
    bool parou_ = false;
    std::size_t falhas_ = 0;
    int desconhecidos_ = 0;
    std::size_t contadoAte_ = 0, linha_ = 1;
};

} // namespace

std::string_view remedioDaRaiz() {
    return procurarCodigo(ZEL_CONFIG_ILEGIVEL)->remedio;
}

std::string_view faltaDaRaiz(std::string_view bytes) {
    if (bytes.empty()) return "o arquivo está vazio";
    if (bytes.find(kInicioRaiz) == bytes.npos)
        return "não tem <FRAMEWORKZEL>: não é o arquivo da biblioteca";
    if (bytes.find(kFimRaiz) == bytes.npos)
        return "não tem </FRAMEWORKZEL>: o arquivo está cortado";
    return {};
}

ArquivoConfig::ArquivoConfig(std::string_view bytes, Relatorio &relatorio)
    : temRaiz_(faltaDaRaiz(bytes).empty()) {
    if (temRaiz_) {
        Leitor(bytes, elementos_, relatorio).ler();
        conferirPresenca(relatorio);
        conferirCodificacao(bytes, relatorio);
    } else {
        relatorio.registrar({"raiz-ausente", "ZEL_Framework.xml", 0,
                             std::string(faltaDaRaiz(bytes)), std::string(remedioDaRaiz())});
    }
    valer();
}

const ValorConfig &ArquivoConfig::operator[](std::string_view caminho) const {
    return valores_.find(caminho)->second;
}

bool ArquivoConfig::lidaInteira() const {
    return std::ranges::none_of(elementos_, &ElementoConfig::ignorado);
}

// The last element of a key counts; AC and RS share one value.
void ArquivoConfig::valer() {
    for (const LinhaChave &chave : kChaves)
        valores_[std::string(chave.caminho)] = {std::string(chave.padrao), 0};
    for (const ElementoConfig &elemento : elementos_) {
        if (elemento.ignorado) continue;
        valores_[std::string(elemento.chave->caminho)] = {elemento.valor, elemento.linha};
        if (elemento.chave->caminho == kProducaoAC || elemento.chave->caminho == kProducaoRS)
            valores_[std::string(kProducaoAC)] =
                valores_[std::string(kProducaoRS)] = {elemento.valor, elemento.linha};
    }
}

void ArquivoConfig::conferirPresenca(Relatorio &relatorio) const {
    std::map<std::string_view, std::size_t> vezes, esperadas;
    std::vector<std::string_view> ignoradas, ausentes;
    for (const LinhaChave &chave : kChaves)
        ++esperadas[chave.caminho];
    for (const ElementoConfig &elemento : elementos_) {
        const std::string_view caminho = elemento.chave->caminho;
        if (elemento.ignorado) ignoradas.push_back(caminho);
        if (++vezes[caminho] == esperadas[caminho] + 1)
            relatorio.registrar({"chave-repetida", std::string(caminho), elemento.linha,
                                 "aparece mais de uma vez; vale o último valor",
                                 "Apague as repetições."});
    }
    for (const auto &[caminho, quantas] : esperadas)
        if (vezes.find(caminho) == vezes.end()) ausentes.push_back(caminho);
    if (!ignoradas.empty())
        relatorio.registrar(
            {"chave-ignorada", "ZEL_Framework.xml", 0,
             juntar({"depois do primeiro erro valem os valores de fábrica: ", enumerar(ignoradas)}),
             "Corrija o primeiro erro do arquivo e confira de novo; o que uma chave diz de outra "
             "não foi conferido."});
    if (!ausentes.empty())
        relatorio.registrar(
            {"chave-ausente", "ZEL_Framework.xml", 0,
             juntar({ausentes.size() == 1 ? "falta uma chave: " : "faltam chaves: ",
                     enumerar(ausentes)}),
             "A biblioteca acrescenta o que falta, com o padrão, ao carregar o arquivo."});
}

// An editor that saves in UTF-8 turns "São" into "SÃ£o".
void ArquivoConfig::conferirCodificacao(std::string_view bytes, Relatorio &relatorio) const {
    if (ehAscii(bytes)) return;
    std::vector<std::string_view> trocadas;
    std::size_t linha = 0;
    for (const ElementoConfig &elemento : elementos_) {
        const auto original = latin1DeUtf8(elemento.valor);
        if (!original || ehAscii(*original) || !ehUtf8(*original)) continue;
        if (trocadas.empty()) linha = elemento.linha;
        trocadas.push_back(elemento.chave->caminho);
    }
    if (!trocadas.empty())
        relatorio.registrar({"acentos-utf8", "ZEL_Framework.xml", linha,
                             juntar({"os acentos de ", enumerar(trocadas),
                                     " foram gravados em UTF-8 e saem trocados"}),
                             "Salve o arquivo na codificação ISO-8859-1 (Latin-1), ou grave estes "
                             "valores com zel config gravar."});
}

} // namespace zel::aplicativo
