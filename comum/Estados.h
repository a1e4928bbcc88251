// SPDX-License-Identifier: MIT
// The 27 states: abbreviation, IBGE code, and the form of the state registration (IE) as far as the
// states' published rules are simple. Pure functions over a table.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace zel {

// How a check digit follows from the remainder modulo 11 of the weighted digits.
enum class Modulo { kPadrao, kResto };

struct DigitoIe {
    std::size_t lugar = 0;  // of the check digit, 0 for none
    std::string_view pesos; // of the digits in front of it, from the first one on
};

struct Estado {
    std::string_view uf;
    std::string_view codigo;             // IBGE
    std::array<std::size_t, 2> tamanhos; // of an IE in digits; 0: no second one
    DigitoIe primeiro, segundo;          // checked when the IE has the first of these lengths
    Modulo modulo = Modulo::kPadrao;
};

// Null when there is no such state. The abbreviation is matched as it is written, in capitals.
const Estado *procurarEstado(std::string_view uf);
const Estado *procurarEstadoPorCodigo(std::string_view codigo);

// The state that a postal code of eight digits is of; null for any other text.
const Estado *estadoDoCep(std::string_view cep);

// Whether an offset "-03:00" is one of the country's, and what to do about another.
bool fusoDoBrasil(std::string_view fuso);
std::string_view remedioDoFuso();

// Whether the number of digits is one that the state uses, and the check digits are right (true
// where the state's rule is not known here). The text holds digits alone.
bool tamanhoDeIe(const Estado &estado, std::string_view ie);
bool digitosDeIe(const Estado &estado, std::string_view ie);

} // namespace zel
