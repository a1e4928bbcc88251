// SPDX-License-Identifier: MIT
// How a value of layout 4.00 is written: the types of the schema (tiposBasico_v4.00.xsd), as values
// that a table of elements can name. Numbers are never rounded, texts never cut.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zel::envio {

enum class Tipo {
    kLivre,   // as a rule made it
    kTexto,   // TString: ISO-8859-1 without control characters, blanks put in order
    kDigitos, // digits alone; points, dashes, bars and blanks between them go
    kInteiro, // digits without a zero in front
    kUmDe,    // one of some texts
    kDecimal, // a number without a sign
    kCnpj,    // with right check digits, as the next two
    kCpf,
    kMunicipio, // with a minimum: in Brazil
    kUf,
    kMomento, // TDateTimeUTC
    kCfop,
    kVisivel, // letters and signs without blanks
};

struct Formato {
    Tipo tipo = Tipo::kLivre;
    int minimo = 0, maximo = 0;    // characters; of a number, decimals
    int inteiros = 0;              // digits before the point
    std::string_view valores = {}; // of kUmDe, separated by blanks
};

constexpr Formato texto(int minimo, int maximo) {
    return {Tipo::kTexto, minimo, maximo};
}
constexpr Formato digitos(int minimo, int maximo) {
    return {Tipo::kDigitos, minimo, maximo};
}
constexpr Formato inteiro(int maximo) {
    return {Tipo::kInteiro, 1, maximo};
}
constexpr Formato umDe(std::string_view valores) {
    return {Tipo::kUmDe, 0, 0, 0, valores};
}
// With `minimo` decimals where 0 keeps those that the till wrote.
constexpr Formato decimal(int minimo, int maximo, int inteiros) {
    return {Tipo::kDecimal, minimo, maximo, inteiros};
}

inline constexpr Formato kLivre{};
inline constexpr Formato kCnpj{Tipo::kCnpj};
inline constexpr Formato kCpf{Tipo::kCpf};
inline constexpr Formato kMunicipio{Tipo::kMunicipio};
inline constexpr Formato kMunicipioDaLoja{Tipo::kMunicipio, 1};
inline constexpr Formato kUf{Tipo::kUf};
inline constexpr Formato kCfop{Tipo::kCfop};
inline constexpr Formato kIdEstrangeiro{Tipo::kVisivel, 5, 20};
inline constexpr Formato kMomento{Tipo::kMomento};
inline constexpr Formato kTDec_1302 = decimal(2, 2, 13);
inline constexpr Formato kTDec_0302a04 = decimal(2, 4, 3);
inline constexpr Formato kTDec_1104 = decimal(4, 4, 11);
inline constexpr Formato kTDec_1104v = decimal(0, 4, 11);
inline constexpr Formato kTDec_1110v = decimal(0, 10, 11);
inline constexpr Formato kTDec_1204 = decimal(4, 4, 12);
inline constexpr Formato kTDec_1204v = decimal(0, 4, 12);
inline constexpr Formato kTaxa = decimal(4, 4, 3); // TDec_0302_04 as rates are shown

// `valor`, without blanks at its ends, as the format wants it; none when it cannot be.
std::optional<std::string> formatar(const Formato &formato, std::string_view valor);

// What the format takes, as the end of a sentence in Portuguese: "tem de 1 a 60 caracteres".
std::string permitido(const Formato &formato);

} // namespace zel::envio
