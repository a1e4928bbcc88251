// SPDX-License-Identifier: MIT
// The engine: walks a table of rows beside the till's document and writes layout 4.00. It knows no
// element by name; what it cannot write it refuses, and goes on.
#pragma once

#include "base/Decimal.h"
#include "base/Recusa.h"
#include "base/Xml.h"
#include "config/Configuracao.h"
#include "traducao/IbsCbs.h"
#include "traducao/Linha.h"
#include "traducao/Traducao.h"

#include <span>
#include <string>
#include <string_view>

namespace zel::envio {

// One translation: what every rule may look at.
struct Contexto {
    No antiga; // infNFe of layout 3.10
    No nova;   // infNFe of layout 4.00
    No ultimoPagamento;
    const Configuracao &config;
    const ContextoNota &nota;
    Recusas &recusas;
    std::string_view chave;
    RegimeIbsCbs regime;
    bool somasIncertas = false; // an item was refused: its sums say nothing
};

// The item that is being written.
struct Item {
    No antigo, novo; // det
    ConfigProduto produto;
    bool servico = false;
    int numero = 0;
    ValoresIbsCbs ibsCbs;
};

// Where the engine stands: a group, there and here.
struct Lugar {
    Contexto &contexto;
    const Lugar *acima = nullptr;
    const Linha *linha = nullptr; // of this group
    No antigo;                    // null when the till has no such group
    No novo;
    Item *item = nullptr;
};

// The place as the till's document has it, from infNFe on: "det[2]/prod/NCM".
std::string caminhoDe(const Lugar &lugar, std::string_view nome = {});

// Refuses an element of this group; always none.
std::nullopt_t recusar(const Lugar &lugar, std::string_view nome, std::string_view valor,
                       std::string_view motivo);

// What the till says: of the names ("a|b") the first that there is.
No acharFilho(const No &no, std::string_view nomes);

// A number that stands in the new document already, in hundredths; 0 where there is none.
Centavos centavosDe(const No &no);

// Refuses the elements of the till's group that no row knows, which would be lost in silence, and
// the second of two where there is to be one.
void recusarAlheios(const Lugar &lugar, std::span<const Linha> linhas);

// Writes the rows of a group, in their order.
void escrever(const Lugar &lugar, std::span<const Linha> linhas);

} // namespace zel::envio
