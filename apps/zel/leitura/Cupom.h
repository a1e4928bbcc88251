// SPDX-License-Identifier: MIT
// The receipt in progress, read from ArqPersist.bin without the library: one record a line, its
// kind in two digits, "|", for items and payments a number and "|", and XML. Texts are UTF-8,
// numbers as the file has them.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zel::aplicativo {

struct ItemLido {
    std::string numero, codigo, descricao, quantidade, unidade, preco;
    std::string bruto, desconto, acrescimo; // the last two empty for none
};

struct PagamentoLido {
    std::string forma; // two-digit code
    std::string valor;
};

struct ConsumidorLido {
    std::string tipo; // "cpf", "cnpj" or "estrangeiro"; empty without a consumer
    std::string documento, nome, email;
};

struct Cupom {
    std::vector<ItemLido> itens;
    std::vector<PagamentoLido> pagamentos;
    ConsumidorLido consumidor;
    double total = 0; // vNF of the totals; before them what the items add up to
    double pago = 0;
    bool cortado = false; // the last record has no end: the library drops it
};

// What is in progress according to the bytes of the file. None when a record is malformed; `erro`
// then says which.
std::optional<Cupom> lerCupom(std::string_view bytes, std::string &erro);

// The name of a receipt state, 0 to 6.
std::string_view nomeDoEstado(int estado);
// "6 cancelado".
std::string digitoENome(int estado);

} // namespace zel::aplicativo
