// SPDX-License-Identifier: MIT
// The extended information: one text about the receipt, chosen by an index and the receipt state.
// Reads the document in progress and the configuration, changes nothing.
#pragma once

#include "emcurso/Persistencia.h"

#include <string>
#include <string_view>

namespace zel {

// `indice` is a decimal text, 1 to 7. Below state 2 the answer is 1 with an empty text, whatever
// the index; a cell that is blank below, and a negative index, give an empty text too. At most 99
// characters come out. ZEL_OK; ZEL_ARGUMENTO_INVALIDO an index of 0 or above 7.
//
//   index  state 2                      states 3 and 4                          state 5
//   1      number of items              "+" or "-" (paid too little or not),    total
//                                       the total while nothing is paid
//   2      last adjustment type         what is missing, or over, as amount     number
//   3      gross value of the last item                                         access key
//   4                                                                           protocol (44)
//   5                                                                           series
//   6                                                                           authorization time
//   7                                                                           digest
int fnInfoEstendida_ZEL(const ST_PersitenceXML_ZEL &documento, std::string_view indice,
                        std::string &saida);

} // namespace zel
