// SPDX-License-Identifier: MIT
// Totalization: closes the list of items, spreads an adjustment of the whole receipt over them and
// stores the totals group that payment and closing compare against.
#pragma once

#include "emcurso/Persistencia.h"
#include "secao/Tag.h"

#include <string_view>

namespace zel {

// Type: "D%", "D$", "A%", "A$"; value: decimal text, not above zero for none. From state 2 to 3.
// ZEL_OK; ZEL_NENHUM_CUPOM, ZEL_TOTALIZACAO_FORA_DE_ORDEM the state; ZEL_ARQUIVO_INDISPONIVEL no
// document in progress; ZEL_AJUSTE_EXCESSIVO the adjustment cannot be spread; ZEL_TAG_NAO_CONFORME
// a total beyond its length; ZEL_CONFIG_ILEGIVEL.
int fnCFTotalizar_ZEL_Felbor(ST_PersitenceXML_ZEL &documento, std::string_view tipo,
                             std::string_view valor);

// Checks and stores the group `total`, and state 3, without a look at the state. Items that changed
// in memory are saved with it.
enum class Itens { kComoEstavam, kMudados };
int fnCFeTotalizarTAG_ZEL(ST_PersitenceXML_ZEL &documento, ST_tagZEL total, Itens itens);

} // namespace zel
