// SPDX-License-Identifier: MIT
// What the tables do not look at, for they ask for elements by name: that a document of the till
// has nothing between and beside its elements that would be lost in silence.
#pragma once

#include "base/Recusa.h"
#include "base/Xml.h"

namespace zel::envio {

// Refuses what stands in `nfe` beside its one infNFe (an old Signature and infNFeSupl apart, which
// are made anew), attributes that the layout has not, elements of another namespace, and text
// beside elements.
void conferirForma(const No &nfe, Recusas &recusas);

} // namespace zel::envio
