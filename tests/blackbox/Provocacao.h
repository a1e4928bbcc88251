// SPDX-License-Identifier: MIT
// A refusal to be provoked, and the ways in which tills are brought to where they refuse.
#pragma once

#include "apoio/Chamadas.h"
#include "apoio/Passos.h"
#include "blackbox/Caixa.h"
#include "recusa/Motivo.h"

#include <functional>

using zel::Motivo;

using Preparo = std::function<void(Caixa &)>;

// A till in that state, 0 to 5, and then prepared, makes the call. File names are relative to its
// directory.
struct Provocacao {
    Motivo motivo;
    int codigo;
    int estado;
    Pedido pedido;
    std::string_view trecho; // of the line
    Preparo preparar = nullptr;
    int (*fazer)(Caixa &) = nullptr; // in place of the call, where somebody else has something
};

// Files, configuration, arguments, states, tag text.
std::vector<Provocacao> provocacoesGerais();
// Items, payments, issuing, cancellation, printing.
std::vector<Provocacao> provocacoesDaVenda();

inline Preparo configurado(const char *chave, const char *valor) {
    return [=](Caixa &c) { c.config(chave, valor); };
}
inline Preparo comArquivo(const char *nome, const std::string &conteudo) {
    return [=](Caixa &c) { c.escreverArquivo(nome, conteudo); };
}
inline Preparo comPasta(const std::string &nome) {
    return [=](Caixa &c) { std::filesystem::create_directory(c.diretorio() + nome); };
}
// A call that succeeds.
Preparo depoisDe(const Pedido &pedido);
