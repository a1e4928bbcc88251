// SPDX-License-Identifier: MIT
#include "secao/Tag.h"

#include "texto/Texto.h"

#include <algorithm>
#include <utility>

namespace zel {

namespace {

std::vector<ST_tagZEL> &filhosDe(ST_tagZEL &no) {
    no.ehGrupo = true;
    if (!no.subTags) no.subTags.emplace();
    return *no.subTags;
}

// No is ST_tagZEL or const ST_tagZEL.
template <typename No>
No *filhoNo(No &no, int indice) {
    if (!no.subTags || indice < 0 || std::cmp_greater_equal(indice, no.subTags->size()))
        return nullptr;
    return &(*no.subTags)[static_cast<std::size_t>(indice)];
}

template <typename No>
No *filhoChamado(No &no, std::string_view nome) {
    if (!no.subTags) return nullptr;
    const auto filho = std::find_if(no.subTags->begin(), no.subTags->end(),
                                    [nome](const ST_tagZEL &tag) { return tag.nome == nome; });
    return filho == no.subTags->end() ? nullptr : &*filho;
}

void escreverPropriedade(std::string &texto, const ST_tagXMLPropriedade &propriedade) {
    texto.append(" ").append(propriedade.nome).append("=\"").append(propriedade.valor).append("\"");
}

// The start tag; `herdada` is an attribute of the parent that goes in front of the node's own.
void escreverInicio(std::string &texto, const ST_tagZEL &no,
                    const ST_tagXMLPropriedade *herdada = nullptr) {
    texto += '<';
    texto += no.nome;
    if (herdada != nullptr) escreverPropriedade(texto, *herdada);
    for (const auto &propriedade : no.propriedades)
        escreverPropriedade(texto, propriedade);
    texto += '>';
}

void escreverFim(std::string &texto, const ST_tagZEL &no) {
    texto += "</";
    texto += no.nome;
    texto += '>';
}

void escreverIndentado(std::string &texto, const ST_tagZEL &no, std::size_t nivel) {
    const std::size_t recuo = 4 * nivel;
    texto.append(recuo, ' ');
    escreverInicio(texto, no);
    if (no.subTags) {
        for (const auto &filho : *no.subTags) {
            texto.push_back('\n');
            escreverIndentado(texto, filho, nivel + 1);
        }
        texto.append("\n").append(recuo, ' ');
    } else if (no.valor) {
        texto.append(*no.valor);
    }
    escreverFim(texto, no);
}

} // namespace

void ST_tagZEL::setValor(std::string_view texto) {
    if (!texto.empty()) valor.emplace(texto);
}

void ST_tagZEL::reservar(std::size_t filhos) {
    filhosDe(*this).reserve(filhos);
}

ST_tagZEL &ST_tagZEL::addSubTag(std::string_view nomeFilho, std::string_view valorFilho) {
    return addSubTag(ST_tagZEL(nomeFilho, valorFilho));
}

ST_tagZEL &ST_tagZEL::addSubTag(ST_tagZEL filho) {
    filhosDe(*this).push_back(std::move(filho));
    return *this;
}

void ST_tagZEL::addSubTagAt(int indice, ST_tagZEL filho) {
    auto &filhos = filhosDe(*this);
    const auto posicao = indice < 0 || std::cmp_greater(indice, filhos.size())
                             ? filhos.end()
                             : filhos.begin() + indice;
    filhos.insert(posicao, std::move(filho));
}

ST_tagZEL &ST_tagZEL::addPropriedade(std::string_view nomePropriedade,
                                     std::string_view valorPropriedade) {
    propriedades.push_back({std::string(nomePropriedade), std::string(valorPropriedade)});
    return *this;
}

ST_tagZEL *ST_tagZEL::getSubTag(int indice) {
    return filhoNo(*this, indice);
}

ST_tagZEL *ST_tagZEL::getSubTag(std::string_view nomeFilho) {
    return filhoChamado(*this, nomeFilho);
}

const ST_tagZEL *ST_tagZEL::getSubTag(int indice) const {
    return filhoNo(*this, indice);
}

const ST_tagZEL *ST_tagZEL::getSubTag(std::string_view nomeFilho) const {
    return filhoChamado(*this, nomeFilho);
}

std::string_view ST_tagZEL::valorDe(std::string_view nomeFilho) const {
    const ST_tagZEL *filho = getSubTag(nomeFilho);
    return filho != nullptr && filho->valor ? std::string_view(*filho->valor) : std::string_view();
}

bool ST_tagZEL::removerSubTag(std::string_view nomeFilho) {
    const ST_tagZEL *filho = getSubTag(nomeFilho);
    if (filho == nullptr) return false;
    subTags->erase(subTags->begin() + (filho - subTags->data()));
    return true;
}

std::string ST_tagZEL::toString() const {
    std::string texto;
    escrever(texto);
    return texto;
}

void ST_tagZEL::escrever(std::string &texto) const {
    escreverInicio(texto, *this);
    if (subTags)
        escreverEstrutura(texto);
    else if (valor)
        texto.append(*valor);
    escreverFim(texto, *this);
}

std::string ST_tagZEL::toPDF(int nivel) const {
    std::string texto;
    escreverIndentado(texto, *this, static_cast<std::size_t>(std::max(nivel, 0)));
    return texto;
}

std::string ST_tagZEL::getEstrutura() const {
    std::string texto;
    escreverEstrutura(texto);
    return texto;
}

void ST_tagZEL::escreverEstrutura(std::string &texto) const {
    if (!subTags) return;
    for (const auto &filho : *subTags)
        filho.escrever(texto);
}

std::optional<std::string> ST_tagZEL::canonicalizeNFSubTree() const {
    const ST_tagZEL *assinado = getSubTag(0);
    if (assinado == nullptr) return std::nullopt;
    const auto xmlns =
        std::find_if(propriedades.begin(), propriedades.end(),
                     [](const ST_tagXMLPropriedade &p) { return p.nome == "xmlns"; });
    std::string texto;
    escreverInicio(texto, *assinado, xmlns == propriedades.end() ? nullptr : &*xmlns);
    if (assinado->subTags)
        for (const auto &filho : *assinado->subTags)
            texto.append(substituirAll(filho.toString(), "> <", "><"));
    escreverFim(texto, *assinado);
    return texto;
}

ST_tagZEL newST_tagZEL(bool obrigatorio, std::string_view nome) {
    ST_tagZEL no(nome);
    no.ehGrupo = true;
    no.obrigatorio = obrigatorio;
    return no;
}

} // namespace zel
