// SPDX-License-Identifier: MIT
// The published schemas, read once from their folder, and their judgement of a message: each
// violation by path and rule, in Portuguese.
#pragma once

#include "base/Recusa.h"
#include "base/Xml.h"

#include <memory>
#include <string>

namespace zel::envio {

class Esquemas {
public:
    // `pasta`: what is published as the layout's package. A folder that lacks a file is refused by
    // the name of the file. One object may be used by one thread at a time.
    static std::shared_ptr<Esquemas> abrir(const std::string &pasta, Recusas &recusas);
    ~Esquemas();

    // By the root element, and for events by their kind: NFe, enviNFe, nfeProc, envEvento,
    // procEventoNFe, inutNFe, procInutNFe, consSitNFe, consStatServ, consReciNFe and the answers.
    // `semAssinatura`: the missing Signature of a document that is to be signed is no complaint.
    bool julgar(const Documento &documento, bool semAssinatura, Recusas &recusas);

private:
    struct Dentro;
    explicit Esquemas(std::unique_ptr<Dentro> dentro);
    std::unique_ptr<Dentro> dentro_;
};

} // namespace zel::envio
