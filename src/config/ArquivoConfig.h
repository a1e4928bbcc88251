// SPDX-License-Identifier: MIT
// The text of the configuration file: written whole, read into values, changed in place. Pure
// functions over texts; where the text comes from and goes to is the registry's. The text is read
// as far as the catalogue knows it, and changed without touching what stands after that place.
#pragma once

#include "config/Catalogo.h"
#include "config/VarreduraConfig.h"

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace zel {

// One change of a configuration value.
struct Alteracao {
    Chave chave;
    std::string valor; // cut to the key's length
};

// One value for every key of the catalogue; the defaults to begin with.
class ValoresConfig {
public:
    ValoresConfig();

    std::string_view operator[](Chave chave) const { return textos_[donaDoValor(chave).indice]; }

    // Cuts the value to the key's length.
    void definir(Chave chave, std::string_view valor);
    // Takes a value that is cut already.
    void assumir(Alteracao &&alteracao) noexcept;

private:
    std::array<std::string, kTotalEntradas> textos_;
};

// A text with the places of what stands in it, so that a change has nothing to look for.
struct TextoConfig {
    std::string texto;
    Varredura varredura;
};

// A text with its places found. None when one of the root's tags is missing.
std::optional<TextoConfig> localizar(std::string texto);

// The file with these values: one line for each catalogue entry, two blanks for each group around
// it, ended by "\r\n".
std::string fnXML_CriarArquivo(const ValoresConfig &valores);

struct CargaConfig {
    ValoresConfig valores;
    TextoConfig arquivo; // the text read, with what it lacked added
    bool inteira;        // every element was understood: values and text say the same
};

// Reads the values of a file over `atuais`. An element that the catalogue does not know under the
// groups around it ends the reading; keys after it keep their value. A key or group written as an
// empty element ("<key/>") is that one, empty. Keys and groups that stand nowhere in the text are
// added to it before the end tag of their group, if that is there, and so is a key's missing end
// tag; a text so torn that something would be lacking again stays as it is. None when one of the
// root's tags is missing.
std::optional<CargaConfig> fnXML_CarregarXML(std::string_view texto, const ValoresConfig &atuais);

// The text with the changes made in each element of their keys, ended one character after the
// root's end tag; where no value changes, the text as it is. Values are at most as long as their
// keys and hold no "</". None when one of the keys has no element.
std::optional<TextoConfig> fnXML_AlterarArquivo(const TextoConfig &atual,
                                                std::span<const Alteracao> alteracoes);

} // namespace zel
