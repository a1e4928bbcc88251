#include "config/VarreduraConfig.h"

#include <algorithm>
#include <string>

namespace zel {

namespace {

constexpr std::string_view kInicioRaiz = "<FRAMEWORKZEL>";
constexpr std::string_view kFimRaiz = "</FRAMEWORKZEL>";

// Looking for the end of an unknown element may read the text to its end; a text with more of them
// than this is not looked at further, so that none takes the square of its length.
constexpr int kMaximoDesconhecidos = 50;

struct TagConfig {
    std::size_t inicio; // of its "<"
    std::size_t fim;    // behind its ">"
    std::string_view nome;
};

// The place behind the comment that begins at `posicao`.
std::size_t fnXML_TratarComentario(std::string_view texto, std::size_t posicao) {
    const std::size_t fim = texto.find("-->", posicao + 4);
    return fim == texto.npos ? texto.size() : fim + 3;
}

// The next start or end tag from `posicao` on, comments skipped.
std::optional<TagConfig> fnXML_RetornarProxTag(std::string_view texto, std::size_t posicao) {
    for (;;) {
        posicao = texto.find('<', posicao);
        if (posicao == texto.npos) return std::nullopt;
        if (!texto.substr(posicao).starts_with("<!--")) break;
        posicao = fnXML_TratarComentario(texto, posicao);
    }
    const std::size_t fim = texto.find_first_of("<>", posicao + 1);
    if (fim == texto.npos) return std::nullopt;
    // A "<" without its ">" must not swallow the tag behind it: it is a tag without a name.
    if (texto[fim] == '<') return TagConfig{posicao, fim, {}};
    return TagConfig{posicao, fim + 1, texto.substr(posicao + 1, fim - posicao - 1)};
}

std::string tagDeFim(std::string_view nome) {
    return std::string("</").append(nome).append(">");
}

class Varredor {
public:
    explicit Varredor(std::string_view texto)
        : texto_(texto), posicao_(texto.find(kInicioRaiz) + kInicioRaiz.size()) {
        resultado_.fimDosGrupos.fill(Varredura::kAusente);
        abrirGrupo(0);
    }

    Varredura varrer() {
        while (!pilha_.empty()) {
            const auto tag = fnXML_RetornarProxTag(texto_, posicao_);
            if (!tag) break;
            posicao_ = tag->fim;
            if (tag->nome.empty())
                resultado_.regular = false;
            else
                tag->nome.front() == '/' ? fechar(*tag) : abrir(*tag);
        }
        return std::move(resultado_);
    }

private:
    // A known name under a group further out means that the end tags between are missing.
    void abrir(const TagConfig &tag) {
        for (std::size_t nivel = pilha_.size(); nivel > 0; --nivel) {
            const auto entrada = entradaDe(pilha_[nivel - 1], tag.nome);
            if (!entrada) continue;
            if (nivel != pilha_.size()) resultado_.regular = false;
            pilha_.resize(nivel);
            return stZELTAGs[*entrada].tipo == TipoEntrada::kChave ? lerChave(*entrada)
                                                                   : abrirGrupo(*entrada);
        }
        resultado_.regular = false;
        pularDesconhecido(tag.nome);
    }

    std::optional<std::uint16_t> entradaDe(std::uint16_t grupo, std::string_view nome) const {
        std::optional<std::uint16_t> ultima;
        const auto nova = procurarNoGrupo(grupo, [&](std::uint16_t i) {
            if (stZELTAGs[i].nome != nome) return false;
            ultima = i;
            return !lidasNoGrupo_[i];
        });
        return nova ? nova : ultima;
    }

    void abrirGrupo(std::uint16_t grupo) {
        resultado_.presentes[grupo] = true;
        std::fill(lidasNoGrupo_.begin() + grupo, lidasNoGrupo_.begin() + kLugares[grupo].fim,
                  false);
        pilha_.push_back(grupo);
    }

    void lerChave(std::uint16_t chave) {
        const std::size_t fim = texto_.find("</", posicao_);
        if (fim == texto_.npos) {
            resultado_.regular = false;
            posicao_ = texto_.size();
            return;
        }
        // Another end tag is judged on its own: it may be the group's.
        const std::string fecho = tagDeFim(stZELTAGs[chave].nome);
        const bool fechado = texto_.substr(fim).starts_with(fecho);
        resultado_.presentes[chave] = lidasNoGrupo_[chave] = true;
        resultado_.elementos.push_back({Chave{chave}, posicao_, fim, fechado});
        if (resultado_.regular) ++resultado_.totalEntendidos;
        posicao_ = fechado ? fim + fecho.size() : fim;
    }

    // An end tag of a group further out ends those within; one of no open group says nothing.
    void fechar(const TagConfig &tag) {
        const auto grupo = std::find_if(pilha_.rbegin(), pilha_.rend(), [&](std::uint16_t aberto) {
            return stZELTAGs[aberto].nome == tag.nome.substr(1);
        });
        if (grupo != pilha_.rbegin()) resultado_.regular = false;
        if (grupo == pilha_.rend()) return;
        std::size_t &fim = resultado_.fimDosGrupos[*grupo];
        fim = std::min(fim, tag.inicio);
        if (*grupo == 0) resultado_.fimDaRaiz = tag.fim;
        pilha_.erase(std::prev(grupo.base()), pilha_.end());
    }

    // Steps over the element whole when it ends within its group, else over its start tag alone:
    // what it holds belongs to it, not to the group around it.
    void pularDesconhecido(std::string_view nome) {
        if (++desconhecidos_ > kMaximoDesconhecidos) {
            posicao_ = texto_.size();
            return;
        }
        const std::size_t fimGrupo = texto_.find(tagDeFim(stZELTAGs[pilha_.back()].nome), posicao_);
        if (fimGrupo == texto_.npos) return;
        const std::string fecho = tagDeFim(nome);
        const std::size_t fim = texto_.substr(0, fimGrupo).find(fecho, posicao_);
        if (fim != texto_.npos) posicao_ = fim + fecho.size();
    }

    std::string_view texto_;
    std::size_t posicao_;
    std::vector<std::uint16_t> pilha_; // open groups, the root first
    std::array<bool, kTotalEntradas> lidasNoGrupo_{};
    int desconhecidos_ = 0;
    Varredura resultado_;
};

} // namespace

std::optional<Varredura> varrerConfig(std::string_view texto) {
    if (texto.find(kInicioRaiz) == texto.npos || texto.find(kFimRaiz) == texto.npos)
        return std::nullopt;
    return Varredor(texto).varrer();
}

} // namespace zel
