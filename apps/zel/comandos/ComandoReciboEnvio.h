// SPDX-License-Identifier: MIT
// The receipt of a signed document of layout 4.00: what the library reads of it, in files that go
// with the object.
#pragma once

#include "comandos/PastaPassageira.h"

#include <string>

namespace zel::aplicativo {

class ReciboDoEnvio {
public:
    // Whether the file is such a document, signed and with its QR code: the till's own are not.
    static bool serve(const std::string &documento);

    // `retorno`: the authority's answer, a file, or OFFLINE.
    ReciboDoEnvio(const std::string &documento, const std::string &retorno);

    // False, and said, when there is none to print.
    bool pronto() const { return pronto_; }
    std::string documento() const { return pasta_.caminho() + "documento.xml"; }
    std::string retorno() const { return pasta_.caminho() + "retorno.xml"; }

private:
    PastaPassageira pasta_;
    bool pronto_ = false;
};

} // namespace zel::aplicativo
