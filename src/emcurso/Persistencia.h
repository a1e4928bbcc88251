// SPDX-License-Identifier: MIT
// The document in progress: six sections of tag trees in memory. Owns the holder's rules; the one
// of the process is the frames' (api/Quadro.h), its file ArquivoPersistencia's, what goes into a
// section the business rooms'.
#pragma once

#include "secao/Secao.h"
#include "secao/Tag.h"

#include <optional>
#include <string_view>
#include <vector>

namespace zel {

inline constexpr int kMaximoItens = 999;

// Each root is a node named after its section; an item's value is its number, a payment's its
// sequence number, as decimal text.
struct ST_PersitenceXML_ZEL {
    std::optional<ST_tagZEL> abertura;
    // None until a first section is stored; then with room for every item there can be, so that a
    // sale does not move those before it.
    std::optional<std::vector<ST_tagZEL>> vendas;
    std::optional<ST_tagZEL> totalizacao;
    std::optional<std::vector<ST_tagZEL>> pagamentos; // none until a first section is stored
    std::optional<ST_tagZEL> encerramento;
    std::optional<ST_tagZEL> transporte;

    // Stores a section root: items and payments are appended, the others replaced. Always 1.
    int fnAdicionarTagZEL(Secao secao, ST_tagZEL raiz);

    // Takes out the item at the number, counted from 1 (0 is the last one), and lowers the numbers
    // of those after it. ZEL_OK; ZEL_SEM_LISTA no item list; ZEL_ARGUMENTO_INVALIDO no such item.
    int removerItem(int numero);

    void fnLimpar();

    // The item at the number, counted from 1; null when there is none.
    ST_tagZEL *item(int numero);
    int quantidadeItens() const { return vendas ? static_cast<int>(vendas->size()) : 0; }
    bool temListaDeVendas() const { return vendas.has_value(); }
};

// Runs an operation; when it does not answer 1, or memory runs out in it, runs `desfazer`.
template <class Acao, class Desfazer>
int ouDesfaz(Acao acao, Desfazer desfazer) {
    int resultado = 0;
    try {
        resultado = acao();
    } catch (...) {
        desfazer();
        throw;
    }
    if (resultado != 1) desfazer();
    return resultado;
}

// Runs an operation that changes `alvo` and saves it; on failure `alvo` is put back as it was.
template <class Alvo, class Acao>
int desfazendoNaFalha(Alvo &alvo, Acao acao) {
    Alvo antes = alvo;
    return ouDesfaz(acao, [&] { alvo = std::move(antes); });
}

} // namespace zel
