// SPDX-License-Identifier: MIT
// The access key against its document. It cannot change, so what it says must be what stands there.
#pragma once

#include "base/Recusa.h"
#include "base/Xml.h"

#include <string_view>

namespace zel::envio {

// A numeric code that the authority refuses (rule 897, NT 2019.001): equal digits, a run such as
// 12345678, or the number of the document itself. Both may have zeros in front.
bool codigoRecusado(std::string_view cNF, std::string_view nNF);

// Refuses, by the names of `infNFe` (layout 3.10 or 4.00), a key whose check digit or parts are not
// those of the document, a numeric code that is refused, and a state that is not the issuer's.
// Returns the 44 digits, empty when there are none.
std::string conferirChave(const No &infNFe, Recusas &recusas);

} // namespace zel::envio
