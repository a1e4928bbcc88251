// SPDX-License-Identifier: MIT
// A whole sale as it is written on the command line or in a file: items, payments, adjustments. All
// is read and checked before the library is asked for anything. Pure functions; what is read is
// UTF-8, what they fill is ISO-8859-1, as the library takes it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zel::aplicativo {

// "-10%", "+1,50": the library's adjustment type ("D%", "A$") and value; both empty for none.
struct Ajuste {
    std::string tipo, valor;
};

struct ItemVenda {
    std::string codigo, descricao, quantidade, preco;
    std::string unidade = "UN", aliquota = "N";
    Ajuste ajuste;
    std::string ncm, cfop; // empty: those of the configuration
};

struct PagamentoVenda {
    std::string forma; // the two-digit code
    std::string valor; // empty: what is still due
};

struct Venda {
    std::vector<ItemVenda> itens;
    std::vector<PagamentoVenda> pagamentos;
    Ajuste ajuste;
    std::string consumidor; // digits of its document, or empty
    std::string mensagem;
};

// Each reads one text, and answers what is wrong with it; empty when nothing is.

// Texts and decimals that the library would cut are faults, unless they are to be cut.
enum class Excesso { kErro, kCorta };

// CÓDIGO;DESCRIÇÃO;QUANTIDADE;PREÇO[;UNIDADE[;ALÍQUOTA[;AJUSTE[;NCM[;CFOP]]]]]; blanks around a
// field do not count, an empty field has its default.
std::string lerItem(std::string_view texto, ItemVenda &item, Excesso excesso = Excesso::kErro);
// FORMA or FORMA=VALOR; accents and case of the form do not matter, its two-digit code will do.
std::string lerPagamento(std::string_view texto, PagamentoVenda &pagamento,
                         Excesso excesso = Excesso::kErro);
std::string lerAjuste(std::string_view texto, Ajuste &ajuste, Excesso excesso = Excesso::kErro);
// The consumer's document, with or without its punctuation: a CPF or CNPJ with the right check
// digits; a CNPJ alone; a foreign one, of digits that the library does not take for one of those.
std::string lerConsumidor(std::string_view texto, std::string &digitos);
std::string lerCnpj(std::string_view texto, std::string &digitos);
std::string lerEstrangeiro(std::string_view texto, std::string &digitos);

// The name of a payment form, by its code; the code when there is no such form.
std::string_view nomeDaForma(std::string_view codigo);

// The lines of a file, an item each, in UTF-8 or ISO-8859-1; empty lines and those that begin with
// "#" are none. Items are added; the answer names the line.
std::string lerItens(std::string_view bytes, std::vector<ItemVenda> &itens,
                     Excesso excesso = Excesso::kErro);

} // namespace zel::aplicativo
