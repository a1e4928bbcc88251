// SPDX-License-Identifier: MIT
// IBS and CBS (NT 2025.002): from when on, at which rates, on what base, for which class.
#pragma once

#include "base/Decimal.h"
#include "base/Recusa.h"
#include "config/Configuracao.h"

#include <optional>
#include <string>
#include <string_view>

namespace zel::envio {

struct Lugar;

// What holds for a whole document.
struct RegimeIbsCbs {
    bool exigido = false;
    TaxasIbsCbs taxas;
};

// What one item shows. Without values the class stands alone.
struct ValoresIbsCbs {
    const ClasseTributaria *classe = nullptr;
    bool comValores = false;
    Centavos vBC = 0, vIBSUF = 0, vIBSMun = 0, vCBS = 0;
    std::string pIBSUF, pIBSMun, pCBS;              // of the year
    std::string pRedAliq, efIBSUF, efIBSMun, efCBS; // empty without a reduction
};

// Whether a document must have the groups; `dia` "AAAA-MM-DD" of the issue.
bool exigeIbsCbs(const Configuracao &config, std::string_view CRT, std::string_view tpAmb,
                 std::string_view dia);
// The same with the rates. Refuses a day of which no rates are known.
RegimeIbsCbs regimeIbsCbs(const Configuracao &config, std::string_view CRT, std::string_view tpAmb,
                          std::string_view dia, Recusas &recusas);

// Class, base and taxes of the item, whose other groups stand in the new document already; false
// where the document has no such groups.
bool calcularIbsCbs(const Lugar &imposto);

// Of the totals: whether the document has the groups, and whether any item shows values.
bool comIbsCbs(const Lugar &total);
bool algumValorIbsCbs(const Lugar &total);

} // namespace zel::envio
