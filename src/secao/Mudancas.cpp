// SPDX-License-Identifier: MIT
#include "secao/Mudancas.h"

#include <algorithm>
#include <utility>

namespace zel {

// A note of nothing first: the memory for it may run out, and then nothing was changed.
Mudancas::Mudanca &Mudancas::anotar(ST_tagZEL &tag) {
    return feitas_.emplace_back(Mudanca{.tag = &tag});
}

void Mudancas::trocarValor(ST_tagZEL &tag, std::string_view texto) {
    if (texto.empty()) return;
    Mudanca &mudanca = anotar(tag);
    mudanca.valor.emplace(texto);
    mudanca.tipo = Tipo::kValor;
    std::swap(mudanca.valor, tag.valor);
}

void Mudancas::incluir(ST_tagZEL &pai, std::size_t lugar, ST_tagZEL filho) {
    Mudanca &mudanca = anotar(pai);
    pai.addSubTagAt(static_cast<int>(lugar), std::move(filho));
    mudanca.lugar = std::min(lugar, pai.subTags->size() - 1);
    mudanca.tipo = Tipo::kIncluida;
}

bool Mudancas::retirar(ST_tagZEL &pai, std::string_view nome) {
    ST_tagZEL *filho = pai.getSubTag(nome);
    if (filho == nullptr) return false;
    Mudanca &mudanca = anotar(pai);
    tags_.push_back(std::move(*filho));
    mudanca.lugar = static_cast<std::size_t>(filho - pai.subTags->data());
    mudanca.tipo = Tipo::kRetirada;
    pai.subTags->erase(pai.subTags->begin() + (filho - pai.subTags->data()));
    return true;
}

void Mudancas::trocar(ST_tagZEL &tag, ST_tagZEL nova) {
    Mudanca &mudanca = anotar(tag);
    tags_.push_back(std::move(nova));
    mudanca.tipo = Tipo::kTrocada;
    std::swap(tags_.back(), tag);
}

// The last one first. What is put back finds its room, for its list was at least as long before.
void Mudancas::desfazer(std::size_t ficam) noexcept {
    for (; feitas_.size() > ficam; feitas_.pop_back()) {
        auto &[tag, tipo, lugar, valor] = feitas_.back();
        const auto indice = static_cast<std::ptrdiff_t>(lugar);
        if (tipo == Tipo::kValor) tag->valor = std::move(valor);
        if (tipo == Tipo::kIncluida) tag->subTags->erase(tag->subTags->begin() + indice);
        if (tipo == Tipo::kRetirada)
            tag->subTags->insert(tag->subTags->begin() + indice, std::move(tags_.back()));
        if (tipo == Tipo::kTrocada) *tag = std::move(tags_.back());
        if (tipo == Tipo::kRetirada || tipo == Tipo::kTrocada) tags_.pop_back();
    }
}

} // namespace zel
