// SPDX-License-Identifier: MIT
// The tag tree: one node per XML element, holding every document that the library builds. A node
// owns its value, its attributes and its children; copying a node copies its subtree. `valor` is
// XML text (references as they stand in the document), never plain characters.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zel {

// One attribute; at most 99 characters each.
struct ST_tagXMLPropriedade {
    std::string nome;
    std::string valor;
};

struct ST_tagZEL {
    std::string nome;                 // at most 39 characters
    std::optional<std::string> valor; // none: the element has no value
    bool ehGrupo = false;             // holds, or is meant to hold, sub-tags
    bool obrigatorio = false;         // templates: the caller's text must contain this tag
    int tamanhoMinimo = 0;            // characters; 0 = no minimum
    int tamanhoMaximo = 0;            // characters; 0 = no length check at all
    // A node with this list, even an empty one, is an element with children: its value is ignored.
    std::optional<std::vector<ST_tagZEL>> subTags;
    std::vector<ST_tagXMLPropriedade> propriedades;

    ST_tagZEL() = default;
    explicit ST_tagZEL(std::string_view nomeTag) : nome(nomeTag) {}
    ST_tagZEL(std::string_view nomeTag, std::string_view valorTag) : nome(nomeTag) {
        setValor(valorTag);
    }

    // Stores the text; an empty one changes nothing, so a value cannot be cleared through it.
    void setValor(std::string_view texto);

    // Makes room for so many children at once.
    void reservar(std::size_t filhos);

    // Append a child; each returns this node. An empty value leaves the child without one.
    ST_tagZEL &addSubTag(std::string_view nomeFilho, std::string_view valorFilho);
    ST_tagZEL &addSubTag(ST_tagZEL filho);

    // Inserts the child so that it becomes the one at `indice`; a negative index or one past the
    // end appends.
    void addSubTagAt(int indice, ST_tagZEL filho);

    // Appends an attribute; returns this node.
    ST_tagZEL &addPropriedade(std::string_view nomePropriedade, std::string_view valorPropriedade);

    // The child at the zero-based index, or the first one of exactly that name; null when none.
    ST_tagZEL *getSubTag(int indice);
    ST_tagZEL *getSubTag(std::string_view nomeFilho);
    const ST_tagZEL *getSubTag(int indice) const;
    const ST_tagZEL *getSubTag(std::string_view nomeFilho) const;

    // The value of the first child of that name; empty when there is none.
    std::string_view valorDe(std::string_view nomeFilho) const;

    // Takes out the first child of that name; false when there is none.
    bool removerSubTag(std::string_view nomeFilho);

    // Plain XML: no line ends, no declaration, no element left out.
    std::string toString() const;
    void escrever(std::string &texto) const; // toString, appended

    // Indented XML for display, four blanks a level.
    std::string toPDF(int nivel = 0) const;

    // toString of every child, without the node's own tags. Prescribed; no exported function
    // reaches it, they append.
    std::string getEstrutura() const;
    void escreverEstrutura(std::string &texto) const; // getEstrutura, appended

    // The first child in the form that the digest signs: this node's xmlns carried onto its start
    // tag, "> <" closed up inside its children. None when the node has no list of children.
    std::optional<std::string> canonicalizeNFSubTree() const;
};

// A group node without a value: `ehGrupo` set, `obrigatorio` as given.
ST_tagZEL newST_tagZEL(bool obrigatorio, std::string_view nome);

} // namespace zel
