// SPDX-License-Identifier: MIT
// A small reader of XML documents: elements, attributes and texts as a tree, and where a document
// that is not well-formed goes wrong. Reads what a fiscal document needs and refuses what it must
// not hold (a DOCTYPE, entities of its own). Ends on any bytes.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zel::aplicativo {

struct NoXml {
    std::string nome;      // without its prefix
    std::string texto;     // of its own, references read, in UTF-8
    std::size_t linha = 0; // 0 in a document of one line
    std::vector<std::pair<std::string, std::string>> atributos;
    std::vector<NoXml> filhos;

    // The first child, respectively attribute, of that name; null when there is none.
    const NoXml *filho(std::string_view procurado) const;
    const std::string *atributo(std::string_view procurado) const;
    // The text at the end of a path "ide/serie"; empty when an element is missing.
    std::string_view valor(std::string_view caminho) const;
    // The first element of that name below this one, or itself; null when there is none.
    const NoXml *procurar(std::string_view procurado) const;
};

struct ErroXml {
    std::size_t linha;
    std::string texto;
};

// UTF-8 when the declaration says so or, without one, when the bytes are; ISO-8859-1 otherwise, as
// the library writes it.
bool ehXmlUtf8(std::string_view bytes);

// Reads a document. None when it is not well-formed; `erro` then says why.
std::optional<NoXml> lerXml(std::string_view bytes, ErroXml &erro);

} // namespace zel::aplicativo
