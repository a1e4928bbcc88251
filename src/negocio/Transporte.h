// The carrier of a delivery: the group `transp` of the transport section.
#pragma once

#include <string_view>

namespace zel {

// A text longer than its field is left out, not cut.
struct DadosTransportadora {
    std::string_view documento; // CPF or CNPJ, 14 characters: up to 11 make a CPF, 13 a CNPJ
    std::string_view nome;      // 1 to 60
    std::string_view inscricaoEstadual; // exactly 2
    std::string_view endereco;          // 1 to 60
    std::string_view municipio;         // 1 to 60
    std::string_view uf;                // exactly 2
};

// Stores the carrier, in states 0 to 4, of a document whose "IDE\indPres" is 4 (delivery). The
// state does not change. 1; -100 another state; -109 no delivery; -52 no document in progress; -120
// to -122 a value out of its length; -40.
int fnCFIdentificarTransportadora_ZEL_Felbor(const DadosTransportadora &transportadora);

// Stores a section given as tag text; an empty text stands for an empty section.
int fnCFIdentificarTransportadoraTAG_ZEL(std::string_view texto);

// Checks a section text and puts it into the document in memory; saving is the caller's.
int adicionarTransporte(std::string_view texto);

// The section text of a document without a carrier.
inline constexpr std::string_view kSemTransporte = "<transp><modfrete>9</modfrete></transp>";

} // namespace zel
