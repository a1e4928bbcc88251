// SPDX-License-Identifier: MIT
// The keys of the configuration file as the checks see them: path, longest value, default, and what
// a value must be. The rows stand in TabelaChaves.h, which is generated.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zel::aplicativo {

// What a value must be when it is not empty; `argumento` says more.
enum class Regra : std::uint8_t {
    kLivre,
    kTexto,   // no blanks at its ends, at least `argumento` characters
    kLista,   // one of "a|b|c"
    kDigitos, // as many digits as "2|8"
    kInteiro, // within "1-999"
    kDecimal,
    kDecimalPonto, // a comma would end the number
    kFator,        // a decimal below `argumento`: not a percentage
    kCnpj,
    kCpf,
    kIe,
    kUf,
    kCuf,
    kMunicipio,
    kCfop,
    kChave,
    kToken,
    kEndereco,
    kDiretorios,
};

enum MarcaChave : unsigned {
    kObrigatoria = 1, // must not be empty
    kTrocar = 2,      // the default belongs to no shop
    kExigida = 4,     // must not be empty in a tax group that is used
    kLida = 8,        // something reads it
    kSegredo = 16,    // never shown
    kPessoal = 32,    // holds a person's data
    kAceitaVazio = 64 // empty where kExigida, the item is sold without its tax
};

struct LinhaChave {
    std::string_view caminho;
    std::size_t tamanho; // longest value, in characters
    std::string_view padrao;
    Regra regra;
    std::string_view argumento;
    unsigned marcas;
    std::string_view permitido; // the rule, for people
    std::string_view exemplo;

    bool tem(MarcaChave marca) const { return (marcas & marca) != 0; }
    std::string_view nome() const { return caminho.substr(caminho.rfind('\\') + 1); }
    std::string_view grupo() const { return caminho.substr(0, caminho.rfind('\\')); }
};

// The first key of that path, spelled exactly so, or without regard to case; null when there is
// none.
const LinhaChave *procurarChave(std::string_view caminho);
const LinhaChave *procurarChaveSemCaixa(std::string_view caminho);

// Whether the path is that of a group of keys, the root's being empty.
bool ehGrupo(std::string_view caminho);

} // namespace zel::aplicativo
