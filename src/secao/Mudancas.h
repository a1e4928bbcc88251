// SPDX-License-Identifier: MIT
// Changes of tags that can be taken back without a copy of the tree: what is kept is what was
// replaced or taken out, and no more. A changed tag must stay where it is until then; a list in
// which tags come and go moves those that stand in it.
#pragma once

#include "secao/Tag.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zel {

class Mudancas {
public:
    // As ST_tagZEL::setValor, addSubTagAt and removerSubTag do it.
    void trocarValor(ST_tagZEL &tag, std::string_view texto);
    void incluir(ST_tagZEL &pai, std::size_t lugar, ST_tagZEL filho);
    bool retirar(ST_tagZEL &pai, std::string_view nome);

    // Another tag in the place of this one.
    void trocar(ST_tagZEL &tag, ST_tagZEL nova);

    // How many were made, and all but the first so many taken back.
    std::size_t quantas() const { return feitas_.size(); }
    void desfazer(std::size_t ficam = 0) noexcept;

private:
    enum class Tipo { kNenhuma, kValor, kIncluida, kRetirada, kTrocada };

    struct Mudanca {
        ST_tagZEL *tag; // whose value, list of children or all was changed
        Tipo tipo = Tipo::kNenhuma;
        std::size_t lugar = 0; // of the child
        std::optional<std::string> valor = {};
    };

    Mudanca &anotar(ST_tagZEL &tag);

    std::vector<Mudanca> feitas_;
    std::vector<ST_tagZEL> tags_; // taken out or replaced, in that order
};

} // namespace zel
