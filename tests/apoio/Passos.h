// SPDX-License-Identifier: MIT
// The plainest steps of a receipt, for a test that is about something else: no consumer, items of
// 10.00, all of it paid in cash.
#pragma once

#include "apoio/Funcoes.h"

inline int abrir(const Funcoes &f, const char *documento = "") {
    return f.aCFAbrir_ZEL(documento, "", "", "", "", "", "", "", "");
}
inline int vender(const Funcoes &f, const char *preco = "10.00",
                  const char *descricao = "Produto") {
    return f.aCFVender_ZEL("T1800", "1", preco, "", "", "1", "UN", descricao);
}
inline int totalizar(const Funcoes &f, const char *tipo = "", const char *valor = "") {
    return f.aCFTotalizar_ZEL(tipo, valor);
}
inline int pagar(const Funcoes &f, const char *forma = "dinheiro", const char *valor = "") {
    return f.aCFEfetuarPagamento_ZEL(forma, valor);
}
inline int encerrar(const Funcoes &f, const char *texto = "") {
    return f.tCFEncerrar_ZEL(texto);
}

// The receipt that was sold, to its document. The code of the last step, or of the one that failed.
inline int fechar(const Funcoes &f, const char *texto = "") {
    const int total = totalizar(f);
    const int pago = total == ZEL_OK ? pagar(f) : total;
    return pago == ZEL_OK ? encerrar(f, texto) : pago;
}

// From a state, 0 for no receipt, to a later one, 1 opened to 5 closed, by the calls that lead
// there. The state after the last one that succeeded.
inline int avancar(const Funcoes &f, int estado, int feitos = 0) {
    int (*const passos[])(const Funcoes &) = {
        [](const Funcoes &g) { return abrir(g); },     [](const Funcoes &g) { return vender(g); },
        [](const Funcoes &g) { return totalizar(g); }, [](const Funcoes &g) { return pagar(g); },
        [](const Funcoes &g) { return encerrar(g); },
    };
    while (feitos < estado && passos[feitos](f) == ZEL_OK)
        ++feitos;
    return feitos;
}
