// SPDX-License-Identifier: MIT
// A refusal to be provoked, and the ways in which tills are brought to where they refuse.
#pragma once

#include "apoio/Passos.h"
#include "blackbox/Caixa.h"
#include "util/Motivo.h"

#include <gtest/gtest.h>

#include <functional>

using zel::Motivo;

struct Provocacao {
    Motivo motivo;
    std::string_view funcao;
    std::function<int(Caixa &)> fazer;
    std::string_view trecho; // of the line
};

// Files, configuration, arguments, states, tag text.
std::vector<Provocacao> provocacoesGerais();
// Items, payments, issuing, cancellation, printing.
std::vector<Provocacao> provocacoesDaVenda();

inline int abrir(Caixa &c, const char *documento = "") {
    return c->aCFAbrir_ZEL(documento, "", "", "", "", "", "", "", "");
}
inline int abrirCom(Caixa &c, const char *numero, const char *municipio, const char *uf) {
    return c->aCFAbrir_ZEL("12345678909", "Maria", "Rua A", numero, "Centro", municipio, "Recife",
                           uf, "50030230");
}
inline int vender(Caixa &c, const char *preco = "10.00", const char *quantidade = "1",
                  const char *descricao = "Produto") {
    return c->aCFVender_ZEL("T1800", quantidade, preco, "", "", "1", "UN", descricao);
}

inline void levarAoEstado(Caixa &c, int estado) {
    ASSERT_EQ(avancar(c.funcoes(), estado), estado);
}
