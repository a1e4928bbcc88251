// SPDX-License-Identifier: MIT
// What the items of a document add up to: products, adjustments and taxes, and the receipt total.
// Reads tag trees, changes nothing.
#pragma once

#include "emcurso/Persistencia.h"

#include <span>
#include <string>

namespace zel {

// Sums in the order in which the items stand. Goods taxes come from items with ICMS, service taxes
// from items with ISSQN alone.
struct Somas {
    double produtos = 0, descontos = 0, outros = 0;
    double baseICMS = 0, valorICMS = 0, baseST = 0, valorST = 0;
    double pis = 0, cofins = 0;
    double baseServico = 0, issqn = 0, pisServico = 0, cofinsServico = 0;
    // What the last item that has taxes is taxed by; it decides the form of the totals.
    enum class Forma { kICMS, kISSQN, kNenhuma } forma = Forma::kNenhuma;

    // The tax-substitution amount is subtracted.
    double total() const { return produtos + outros - (descontos + valorST); }
};

// Of the document in progress; of any elements, of which those that hold "prod" or "imposto" count.
Somas somarItens(const ST_PersitenceXML_ZEL &documento);
Somas somarItens(std::span<const ST_tagZEL> itens);

// The receipt total as two-decimal text: vNF of the totals, or the items' total where the totals
// have a form without it (services). Empty when the receipt is not totalized.
std::string totalDoCupom(const ST_PersitenceXML_ZEL &documento);

// The sum of the payments stored, in document order.
double totalPago(const ST_PersitenceXML_ZEL &documento);

} // namespace zel
