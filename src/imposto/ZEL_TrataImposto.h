// SPDX-License-Identifier: MIT
// The `imposto` group of an item: its tax base, its first build when the item is sold, and its
// rebuild when the item's value changes. The groups of each tax are GruposICMS' and
// GruposContribuicao's; the item's `prod` and saving the document are the business rooms'.
#pragma once

#include "imposto/Presets.h"
#include "secao/Mudancas.h"
#include "secao/Tag.h"

#include <optional>
#include <string>
#include <string_view>

namespace zel {

// The two adjustments that an item may carry, and how their value counts.
enum class Ajuste { kDesconto, kAcrescimo };
enum class FormaAjuste { kPercentual, kQuantia };

// The two characters of an adjustment, "D" or "A" and "%" or "$", read apart from each other: none
// for another character. What stands after them does not count.
struct TipoAjuste {
    std::optional<Ajuste> ajuste;
    std::optional<FormaAjuste> forma;
};
TipoAjuste lerTipoAjuste(std::string_view tipo);
std::string_view escreverTipoAjuste(Ajuste ajuste, FormaAjuste forma);

// The tax base with two decimals: quantity (rounded to four decimals) x unit price, rounded or cut
// as configured, less or plus the adjustment. `tipo` is "D%", "D$", "A%" or "A$"; a `valor` that is
// empty or zero adjusts nothing. Another type with a value gives an empty text, which reads as
// zero. At most 16 characters of each number count; a comma counts as a point.
std::string fnCalcularValorBC(std::string_view quantidade, std::string_view valorUnitario,
                              std::string_view tipo, std::string_view valor);

// Fills the new `imposto` of an item from the presets or the configuration. `aliquota`: the sale's
// rate text, hundredths after an optional letter ("T1800" is 18.00; "F" and "I" are 0.00; "S"
// makes the item a service with `ISSQN` alone); `base`: from fnCalcularValorBC; `quantidade`: the
// sold quantity. ZEL_OK; ZEL_RECUSADO when ICMS has no group in force or a group lacks a required
// value; `imposto` is then unusable.
int fnTratarImposto(const ST_tagImpostoConfTemp &presets, std::string_view aliquota,
                    std::string_view base, std::string_view quantidade, ST_tagZEL &imposto);

// Rebuilds, in place, the `imposto` of a stored item. `quantidade`: the new one, empty or zero for
// the item's own; `tipo` and `valor` as for fnCalcularValorBC. An item without `imposto` stays as
// it is. ZEL_OK; ZEL_RECUSADO a stored group that does not exist: some of the changes were made,
// and the caller takes them back.
int fnAtualizar_TagImposto(ST_tagZEL &item, std::string_view quantidade, std::string_view tipo,
                           std::string_view valor, Mudancas &mudancas);

} // namespace zel
