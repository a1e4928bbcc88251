// SPDX-License-Identifier: MIT
// Selling: an item's product group, its taxes and its place in the document in progress.
#pragma once

#include "emcurso/Persistencia.h"
#include "imposto/Presets.h"

#include <string_view>

namespace zel {

// An item as the application gives it. Texts longer than their field are cut; a comma counts as the
// decimal point in the numbers (at most 15 characters each).
struct DadosVenda {
    std::string_view aliquota;   // tax code, 15: "T1800", "S0500", "F", "I", "1800"
    std::string_view quantidade; // rounded to 4 decimals; empty sells zero
    std::string_view
        valorUnitario;            // digits and one point or comma; stands in the document as given
    std::string_view tipoAjuste;  // "D%", "D$", "A%" or "A$"
    std::string_view valorAjuste; // empty or zero: no adjustment
    std::string_view codigo;      // 60
    std::string_view ncm;         // 9; empty: "PROD\NCM"
    std::string_view cfop;        // 6; empty: "PROD\CFOP"
    std::string_view unidade;     // 6
    std::string_view descricao;   // 120
};

// Sells an item in states 1 and 2 and leaves state 2; the tax presets are used up. ZEL_OK;
// ZEL_ARGUMENTO_INVALIDO a quantity, price or adjustment below zero, or a price or amount that is
// no plain decimal; ZEL_AJUSTE_EXCESSIVO the adjustment reaches the item's gross value;
// ZEL_RECUSADO no tax group, or 999 items sold; ZEL_NENHUM_CUPOM, ZEL_VENDA_FORA_DE_ORDEM the
// state; ZEL_ARQUIVO_INDISPONIVEL no document in progress; ZEL_TAG_NAO_CONFORME to
// ZEL_TAG_OBRIGATORIA a value out of its length; ZEL_CONFIG_ILEGIVEL.
int fnCFVender_ZEL_Felbor(ST_PersitenceXML_ZEL &documento, ST_tagImpostoConfTemp &presets,
                          const DadosVenda &dados);

// The same with the item given whole as tag text; the presets stay.
int fnCFVenderXml_ZEL_Felbor(ST_PersitenceXML_ZEL &documento, std::string_view texto);

// Stores an item given as tag text.
int fnCFeVenderTAG_ZEL(ST_PersitenceXML_ZEL &documento, std::string_view texto);

} // namespace zel
