// SPDX-License-Identifier: MIT
// What kind of file it is: the till's, plain or scrambled, or a document of layout 4.00; told by
// what it holds, not by its name.
#pragma once

#include "base/Recusa.h"
#include "base/Xml.h"

#include <optional>
#include <string>
#include <string_view>

namespace zel::envio {

enum class Tipo { kNenhum, kNfce, kCancelamento, kInutilizacao, kConsulta };

struct Lido {
    Documento documento;
    Tipo tipo = Tipo::kNenhum;
    bool doCaixa = false; // as the till wrote it: to be translated

    // NFe of an NFC-e, in whatever stands around it; the root otherwise.
    No principal() const;
    bool assinado() const;
};

std::optional<Lido> lerArquivoDoCaixa(std::string_view bytes, Recusas &recusas);

// The text of a scrambled file (.ctg, .ctgCanc), without its NUL; applied to plain text it gives
// something that is none.
std::string desembaralhar(std::string_view bytes);

} // namespace zel::envio
