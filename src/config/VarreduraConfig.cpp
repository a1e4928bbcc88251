// SPDX-License-Identifier: MIT
#include "config/VarreduraConfig.h"

#include <algorithm>
#include <utility>

namespace zel {

namespace {

constexpr std::string_view kInicioRaiz = "<FRAMEWORKZEL>";
constexpr std::string_view kFimRaiz = "</FRAMEWORKZEL>";

constexpr std::string_view kBrancos = " \t\r\n";

struct TagConfig {
    std::size_t inicio; // of its "<"
    std::size_t fim;    // after its ">"
    std::string_view nome;
    bool vazia = false; // an element without content: "<name/>"

    std::size_t fimDoNome() const { return inicio + 1 + nome.size(); }
};

// The place after the comment that begins at `posicao`.
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
    // A "<" without its ">" must not swallow the tag after it: it is a tag without a name.
    if (texto[fim] == '<') return TagConfig{posicao, fim, {}};
    TagConfig tag{posicao, fim + 1, texto.substr(posicao + 1, fim - posicao - 1)};
    tag.vazia = tag.nome.ends_with('/') && !tag.nome.starts_with('/');
    if (tag.vazia) {
        tag.nome.remove_suffix(1);
        tag.nome = tag.nome.substr(0, tag.nome.find_last_not_of(kBrancos) + 1);
    }
    return tag;
}

// The end tags of a text, wherever they stand, by name: looking for the end of one unknown element
// after another must not read the rest of the text each time.
class TagsDeFim {
public:
    explicit TagsDeFim(std::string_view texto) {
        for (std::size_t i = 0; (i = texto.find("</", i)) != texto.npos; i += 2) {
            const std::size_t fim = texto.find_first_of("<>", i + 2);
            if (fim == texto.npos) break;
            if (texto[fim] == '>') tags_.emplace_back(texto.substr(i + 2, fim - i - 2), i);
        }
        std::sort(tags_.begin(), tags_.end());
    }

    // The place of the first one of that name from `posicao` on, npos without any.
    std::size_t primeira(std::string_view nome, std::size_t posicao) const {
        const auto tag = std::lower_bound(tags_.begin(), tags_.end(), std::pair(nome, posicao));
        return tag != tags_.end() && tag->first == nome ? tag->second : nome.npos;
    }

private:
    std::vector<std::pair<std::string_view, std::size_t>> tags_;
};

class Varredor {
public:
    explicit Varredor(std::string_view texto)
        : texto_(texto), posicao_(texto.find(kInicioRaiz) + kInicioRaiz.size()) {
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
            if (stZELTAGs[*entrada].tipo == TipoEntrada::kChave) return lerChave(*entrada, tag);
            abrirGrupo(*entrada);
            if (tag.vazia) fecharGrupo({tag.fimDoNome(), tag.fim});
            return;
        }
        resultado_.regular = false;
        if (!tag.vazia) pularDesconhecido(tag.nome);
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

    // Ends the innermost open group; of one that is written twice the first end counts.
    void fecharGrupo(FimDeGrupo lugar) {
        FimDeGrupo &fim = resultado_.fimDosGrupos[pilha_.back()];
        if (!fim.existe()) fim = lugar;
        pilha_.pop_back();
    }

    void anotar(const ElementoConfig &elemento) {
        const std::size_t chave = elemento.chave.indice;
        resultado_.presentes[chave] = lidasNoGrupo_[chave] = true;
        resultado_.elementos.push_back(elemento);
        if (resultado_.regular) ++resultado_.totalEntendidos;
    }

    void lerChave(std::uint16_t chave, const TagConfig &tag) {
        if (tag.vazia)
            return anotar({Chave{chave}, tag.fimDoNome(), tag.fim, FormaElemento::kVazio});
        const std::size_t fim = texto_.find("</", posicao_);
        if (fim == texto_.npos) {
            resultado_.regular = false;
            posicao_ = texto_.size();
            return;
        }
        // Another end tag is judged on its own: it may be the group's.
        const std::string_view resto = texto_.substr(fim + 2);
        const bool fechado =
            resto.starts_with(tag.nome) && resto.substr(tag.nome.size()).starts_with('>');
        anotar({Chave{chave}, posicao_, fim,
                fechado ? FormaElemento::kCompleto : FormaElemento::kSemFim});
        posicao_ = fechado ? fim + tag.nome.size() + 3 : fim;
    }

    // An end tag of a group further out ends those within; one of no open group says nothing.
    void fechar(const TagConfig &tag) {
        const auto grupo = std::find_if(pilha_.rbegin(), pilha_.rend(), [&](std::uint16_t aberto) {
            return stZELTAGs[aberto].nome == tag.nome.substr(1);
        });
        if (grupo != pilha_.rbegin()) resultado_.regular = false;
        if (grupo == pilha_.rend()) return;
        pilha_.erase(grupo.base(), pilha_.end());
        if (pilha_.back() == 0) resultado_.fimDaRaiz = tag.fim;
        fecharGrupo({tag.inicio, tag.inicio});
    }

    // Steps over the element whole when it ends within its group, else over its start tag alone:
    // what it holds belongs to it, not to the group around it.
    void pularDesconhecido(std::string_view nome) {
        if (!tagsDeFim_) tagsDeFim_.emplace(texto_);
        const std::size_t fimGrupo = tagsDeFim_->primeira(stZELTAGs[pilha_.back()].nome, posicao_);
        const std::size_t fim = tagsDeFim_->primeira(nome, posicao_);
        if (fimGrupo != texto_.npos && fim < fimGrupo) posicao_ = fim + nome.size() + 3;
    }

    std::string_view texto_;
    std::size_t posicao_;
    std::vector<std::uint16_t> pilha_; // open groups, the root first
    std::array<bool, kTotalEntradas> lidasNoGrupo_{};
    std::optional<TagsDeFim> tagsDeFim_; // made for the first unknown element
    Varredura resultado_;
};

} // namespace

std::optional<Varredura> varrerConfig(std::string_view texto) {
    if (texto.find(kInicioRaiz) == texto.npos || texto.find(kFimRaiz) == texto.npos)
        return std::nullopt;
    return Varredor(texto).varrer();
}

} // namespace zel
