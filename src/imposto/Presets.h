// SPDX-License-Identifier: MIT
// What the application fixes of taxes, in memory only: the tax situation of the next item, at most
// one group for each of ICMS, PIS and COFINS, and the total of taxes that the receipt prints. A
// preset lasts until another of its tax is made or an item is sold; cancelling, opening and
// initialising leave it alone. Which group an item gets, and how it is written, is Grupo's.
#pragma once

#include "texto/Campo.h"

#include <array>
#include <string_view>

namespace zel {

// One preset: the group, named as a row is named, in any case (empty: no preset), and the texts
// given for its elements, as plain characters.
struct Preset {
    struct Valor {
        std::string_view elemento;
        Campo<15> texto;
    };
    std::string_view grupo;
    std::array<Valor, 4> valores;

    // The text given for the element; empty when the preset has none.
    std::string_view valor(std::string_view elemento) const;
};

struct ST_tagImpostoConfTemp {
    Preset icms;
    Preset pis;
    Preset cofins;
};

// Every operation below answers ZEL_ESTADO_INVALIDO in a receipt state other than 1 to 3 and
// changes nothing; otherwise it erases the preset of its tax, then answers ZEL_ARGUMENTO_INVALIDO
// when an argument is out of bounds, or stores the preset and answers 1. Lengths count characters,
// an XML reference as one. The meaning of the codes is not checked.

// Origin (1 character), CST (2), base mode (1), rate (2 to 5): the rate's digits are hundredths, so
// "18,00", "18.00" and "1800" are 18.00 and "18" is 0.18.
int fnCFConfICMS00_ZEL_Felbor(ST_tagImpostoConfTemp &presets, std::string_view origem,
                              std::string_view cst, std::string_view modBC,
                              std::string_view aliquota);

// Origin (1), CST (2), relieved ICMS value and relief reason (any).
int fnCFConfICMS40_ZEL_Felbor(ST_tagImpostoConfTemp &presets, std::string_view origem,
                              std::string_view cst, std::string_view vICMSDeson,
                              std::string_view motDesICMS);

// Origin (1), CST (2), base and value of the ICMS withheld before (any).
int fnCFConfICMS60_ZEL_Felbor(ST_tagImpostoConfTemp &presets, std::string_view origem,
                              std::string_view cst, std::string_view vBCSTRet,
                              std::string_view vICMSSTRet);

// CST (2), rate in percent (1 to 6), an ordinary decimal number.
int fnCFConfPisAliq_ZEL_Felbor(ST_tagImpostoConfTemp &presets, std::string_view cst,
                               std::string_view aliquota);
int fnCFConfCofinsAliq_ZEL_Felbor(ST_tagImpostoConfTemp &presets, std::string_view cst,
                                  std::string_view aliquota);

// CST (2), value per unit (1 to 14).
int fnCFConfPisQtde_ZEL_Felbor(ST_tagImpostoConfTemp &presets, std::string_view cst,
                               std::string_view valorUnidade);
int fnCFConfCofinsQtde_ZEL_Felbor(ST_tagImpostoConfTemp &presets, std::string_view cst,
                                  std::string_view valorUnidade);

// CST (2).
int fnCFConfPisNT_ZEL_Felbor(ST_tagImpostoConfTemp &presets, std::string_view cst);
int fnCFConfCofinsNT_ZEL_Felbor(ST_tagImpostoConfTemp &presets, std::string_view cst);

// CST (2), rate in percent, value per unit: a rate of 1 to 6 characters is enough, otherwise the
// value per unit must have 1 to 14. Both are stored with two decimals, an empty one as 0.00.
int fnCFConfPisOutr_ZEL_Felbor(ST_tagImpostoConfTemp &presets, std::string_view cst,
                               std::string_view aliquota, std::string_view valorUnidade);
int fnCFConfCofinsOutr_ZEL_Felbor(ST_tagImpostoConfTemp &presets, std::string_view cst,
                                  std::string_view aliquota, std::string_view valorUnidade);

// The approximate total of taxes that the law wants on the receipt: a text that the application
// gives before the close, kept until the receipt's layout has printed and emptied it.
using TotalImposto = Campo<19>;

// Keeps the text without its outer blanks, cut to 19 characters. ZEL_OK, or ZEL_ARGUMENTO_INVALIDO
// when it is null, empty or blank.
int fnCFValorLeiImposto_ZEL_Felbor(TotalImposto &total, std::string_view texto);

// Erase the preset of one tax. Always 1.
int fnZerarConfTempICMS(ST_tagImpostoConfTemp &presets);
int fnZerarConfTempPIS(ST_tagImpostoConfTemp &presets);
int fnZerarConfTempCONFINS(ST_tagImpostoConfTemp &presets); // COFINS, spelt so

} // namespace zel
