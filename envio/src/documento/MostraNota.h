// SPDX-License-Identifier: MIT
// An NFC-e, of layout 4.00 or 3.10, and a request or event, on a page.
#pragma once

#include "base/Xml.h"
#include "documento/Pagina.h"

namespace zel::envio {

void mostrarNota(const No &nfe, Pagina &pagina);

// Whether the element is one that a request, an event or an answer is known by: then it is shown.
bool mostrarPedido(const No &no, Pagina &pagina);

// "produção", or what the other environment means.
std::string ambienteLido(std::string_view tpAmb);

} // namespace zel::envio
