// SPDX-License-Identifier: MIT
// What the requests have in common: what they may name, checked before the library is asked. Pure
// functions.
#pragma once

#include <string>
#include <string_view>

namespace zel::aplicativo {

// Number and series of the document that an access key names, without leading zeros.
struct NumeroESerie {
    std::string numero, serie;
};
NumeroESerie numeroDaChave(std::string_view chave);

// Each answers what is wrong with the text; empty when nothing is.
std::string conferirNumero(std::string_view texto);                          // 1 to 999999999
std::string conferirSerie(std::string_view texto);                           // 0 to 999
std::string conferirData(std::string_view texto);                            // AAAA-MM-DD
std::string conferirFaixa(std::string_view inicial, std::string_view final); // of numbers
// What the tax authority takes: 15 characters and more, up to what the request holds.
std::string conferirJustificativa(std::string_view utf8, std::size_t maximo);

} // namespace zel::aplicativo
