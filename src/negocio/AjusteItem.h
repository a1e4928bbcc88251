// SPDX-License-Identifier: MIT
// Changing an item already sold: discount, surcharge, cancelling it or part of its quantity. All of
// it asks for state 2; item 0 means the last one, except where an item is cancelled whole. The
// item's taxes are rebuilt after each change, from the new base.
#pragma once

#include "emcurso/Persistencia.h"
#include "imposto/ZEL_TrataImposto.h"
#include "secao/Mudancas.h"
#include "secao/Tag.h"

#include <string_view>

namespace zel {

// Type: second character "%" (of the gross value) or "$" (amount). Value: decimal text, a comma as
// the point. ZEL_OK; ZEL_ESTADO_INVALIDO the state; ZEL_ARQUIVO_INDISPONIVEL no document in
// progress; ZEL_ARGUMENTO_INVALIDO an empty argument, a negative item or value;
// ZEL_ITEM_INEXISTENTE no such item; ZEL_ITEM_JA_AJUSTADO it has an adjustment;
// ZEL_AJUSTE_EXCESSIVO the amount reaches the gross value.
int fnCFLancarDescontoItem_ZEL_Felbor(ST_PersitenceXML_ZEL &documento, int item,
                                      std::string_view tipo, std::string_view valor);
int fnCFLancarAcrescimoItem_ZEL_Felbor(ST_PersitenceXML_ZEL &documento, int item,
                                       std::string_view tipo, std::string_view valor);

// Takes the item out; those after it move up. ZEL_OK; ZEL_ESTADO_INVALIDO;
// ZEL_ARQUIVO_INDISPONIVEL; ZEL_ARGUMENTO_INVALIDO no such item, 0 included.
int fnCFCancelarItem_ZEL_Felbor(ST_PersitenceXML_ZEL &documento, int item);

// Lowers the quantity, to two decimals. ZEL_OK; ZEL_ESTADO_INVALIDO; ZEL_ARGUMENTO_INVALIDO;
// ZEL_ARQUIVO_INDISPONIVEL; ZEL_ITEM_INEXISTENTE; ZEL_CANCELAMENTO_EXCESSIVO not less than the item
// has.
int fnCFCancelarItemParcial_ZEL_Felbor(ST_PersitenceXML_ZEL &documento, int item,
                                       std::string_view quantidade);

// Takes the item's discount or surcharge away. ZEL_OK; ZEL_ESTADO_INVALIDO; ZEL_ARGUMENTO_INVALIDO;
// ZEL_ARQUIVO_INDISPONIVEL; ZEL_ITEM_INEXISTENTE; ZEL_NADA_A_REMOVER there is none.
int fnCFCancelarDescontoItem_ZEL_Felbor(ST_PersitenceXML_ZEL &documento, int item);
int fnCFCancelarAcrescimoItem_ZEL_Felbor(ST_PersitenceXML_ZEL &documento, int item);

// What an adjustment of the item with this product group must stay below: its quantity x unit
// price, rounded or cut as configured.
double valorBruto(const ST_tagZEL &prod);

// An item of the document: its number there, from 1, its tag and the product group within.
struct ItemVendido {
    int numero;
    ST_tagZEL &tag;
    ST_tagZEL &prod;
};

// The same changes in memory alone, for an operation that changes many items and saves once.
// Neither looks at the state; a refusal may come after a part of the change. Codes as above.
int lancarAjuste(const ItemVendido &item, Ajuste ajuste, std::string_view tipo,
                 std::string_view valor, Mudancas &mudancas);
int removerAjuste(const ItemVendido &item, Ajuste ajuste, Mudancas &mudancas);

} // namespace zel
