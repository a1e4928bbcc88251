// SPDX-License-Identifier: MIT
// Takes values out of XML text by walking from start tag to start tag, without building a tree: a
// document is read in one pass, and where an element may stand is bounded by the group around it.
// Files and texts come out in ISO-8859-1, values with their references decoded and on one line,
// unless their line ends are asked for: those are "\n" then.
#pragma once

#include "texto/TextoXml.h"

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

namespace zel {

// The text in ISO-8859-1, without byte order mark. It counts as UTF-8 when its XML declaration or a
// byte order mark says so, or when everything beyond ASCII is valid multi-byte sequences; a
// character that ISO-8859-1 does not have becomes "?". Other bytes stay as they are.
std::string emLatin1(std::string_view texto);

enum class Forma { kClara, kEmbaralhada };

struct ArquivoXml {
    std::string original; // as the file holds it, unscrambled, without byte order mark
    std::string texto;    // in ISO-8859-1
};

// Reads a file whole, for reading only; none when that fails.
std::optional<ArquivoXml> lerArquivoXml(std::string_view caminho, Forma forma);

// A cursor over a text that must outlive it. A step that does not find what it looks for leaves the
// cursor where it is.
class LeitorXml {
public:
    explicit LeitorXml(std::string_view texto) : resto_(texto) {}

    // Goes after the next `marca` ("<enderEmit>").
    bool avancar(std::string_view marca);

    // The value of the element whose start tag is the next `marca` ("<xNome>"): the text up to the
    // next "<". Goes after it.
    std::optional<std::string> valor(std::string_view marca,
                                     FimDeLinha fimDeLinha = FimDeLinha::kBranco);

    // The attribute value after the next `abertura`, which ends in the quote ("Id=\""). Goes
    // after it.
    std::optional<std::string> propriedade(std::string_view abertura);

    // A reader of the next group of that name, its attributes included; none for an empty element
    // ("<dest/>"). The group ends at its end tag, or where the next one of its name begins. Goes to
    // that end.
    std::optional<LeitorXml> grupo(std::string_view nome);

private:
    std::string_view resto_;
};

// The value of the first of the start tags that occurs anywhere in the text.
std::optional<std::string> primeiroValor(std::string_view texto,
                                         std::initializer_list<std::string_view> marcas,
                                         FimDeLinha fimDeLinha = FimDeLinha::kBranco);

// The value of the first element of that name, in any case, in the return of a document; with its
// line ends.
std::optional<std::string> valorDoRetorno(std::string_view retorno, std::string_view nome);

} // namespace zel
