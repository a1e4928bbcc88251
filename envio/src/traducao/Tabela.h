// SPDX-License-Identifier: MIT
// The table of layout 4.00: every element that an NFC-e of the till becomes.
#pragma once

#include "traducao/Linha.h"

#include <span>

namespace zel::envio {

// The rows of infNFe.
std::span<const Linha> tabelaInfNFe();

} // namespace zel::envio
