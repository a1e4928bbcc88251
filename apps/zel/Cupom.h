// SPDX-License-Identifier: MIT
// The receipt in progress, read from ArqPersist.bin without the library: one record a line, its
// kind in two digits, "|", for items and payments a number and "|", and XML. Names no person.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace zel::aplicativo {

struct Cupom {
    std::size_t itens = 0;
    std::size_t pagamentos = 0;
    double total = 0; // vNF of the totals; before them what the items add up to
    double pago = 0;
    bool cortado = false; // the last record has no end: the library drops it
};

// What is in progress according to the bytes of the file. None when a record is malformed; `erro`
// then says which.
std::optional<Cupom> lerCupom(std::string_view bytes, std::string &erro);

// The name of a receipt state, 0 to 6.
std::string_view nomeDoEstado(int estado);

} // namespace zel::aplicativo
