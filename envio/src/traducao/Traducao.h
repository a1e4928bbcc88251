// SPDX-License-Identifier: MIT
// A document of the till, NFC-e of layout 3.10, becomes the document of layout 4.00: element by
// element after tables in the schema's order. The key never changes, what the till says is kept to
// the letter where the authority takes it, sums are made anew and must come to what was charged.
#pragma once

#include "base/Decimal.h"
#include "base/Recusa.h"
#include "base/Xml.h"
#include "config/Configuracao.h"

#include <optional>

namespace zel::envio {

// What the till's document does not say and its sender may know.
struct ContextoNota {
    // The change of the last payment, which the till cuts to what completes the total:
    // TrocoUltimaNFCe of ZEL_Framework.xml right after the receipt. With it the payment is declared
    // in full, and vTroco; without it as the till cut it.
    Centavos troco = 0;
};

// `nfe`: the element NFe with infNFe of version 3.10. The result has NFe with infNFe, neither
// infNFeSupl nor Signature. None when something cannot be translated: `recusas` then names each
// such thing.
std::optional<Documento> traduzirNfce(const No &nfe, const Configuracao &config, Recusas &recusas,
                                      const ContextoNota &nota = {});

} // namespace zel::envio
