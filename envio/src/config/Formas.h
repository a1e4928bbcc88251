// SPDX-License-Identifier: MIT
// Names of the till's payment forms.
#pragma once

#include <string>
#include <string_view>

namespace zel::envio {

// The two digits that the till writes for a form given by its name, without regard to accents and
// case, or by the digits themselves; empty when it has no such form.
std::string_view formaDoCaixa(std::string_view nome);

// All of them, for people.
std::string formasDoCaixa();

// In capitals without accents, as names are compared; empty when ISO-8859-1 lacks a character.
std::string semAcentos(std::string_view utf8);

} // namespace zel::envio
