// SPDX-License-Identifier: MIT
// Prorating: a discount or surcharge on the whole receipt, spread over its items by their gross
// values, so that the document carries every adjustment on its items.
#pragma once

#include "emcurso/Persistencia.h"
#include "secao/Mudancas.h"

#include <string_view>

namespace zel {

// Type: first character "D" or "A", second "%" or "$". A value that is not above zero means none.
// Changes the items in memory alone; saving, and taking the changes back when it or this fails, is
// the caller's.
// Each share is cut to two decimals; what that leaves goes to the first item with the largest one.
// ZEL_OK; ZEL_AJUSTE_EXCESSIVO an item would be used up or cannot take its share, or there is
// nothing to spread over.
int fnRatearDescAcresTotalizacao(ST_PersitenceXML_ZEL &documento, std::string_view tipo,
                                 std::string_view valor, Mudancas &mudancas);

} // namespace zel
