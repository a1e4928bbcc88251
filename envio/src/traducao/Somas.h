// SPDX-License-Identifier: MIT
// The totals: sums of what the items of the new document show, and whether they come to what the
// till charged.
#pragma once

#include "base/Decimal.h"
#include "base/Xml.h"
#include "traducao/Linha.h"

#include <optional>
#include <string>
#include <string_view>

namespace zel::envio {

// The money at the end of a path below `no`, "*" in it is any one element; 0 where it leads
// nowhere.
Centavos valorEm(const No &no, std::string_view caminho);

// Over the items of `infNFe`, layout 4.00: valorEm each of them. Goods are all items without
// ISSQN.
Centavos somar(const No &infNFe, std::string_view caminho, Quais quais);

// vNF from the totals that stand already (rule 610).
std::optional<std::string> valorDaNota(const Lugar &icmsTot);

// Refuses a vNF that is not what the till charged: vNF of its total, or where its total has none
// (services) what was paid.
void conferirCobrado(const Lugar &total);

} // namespace zel::envio
