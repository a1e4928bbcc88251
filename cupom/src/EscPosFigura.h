// SPDX-License-Identifier: MIT
// The picture of a receipt as printer bytes: every dot of it, by the printer's raster command, for
// printers whose letters, code pages or widths cannot be relied on.
#pragma once

#include "Desenho.h"
#include "Perfil.h"

#include <optional>
#include <string>

namespace zel::cupom {

// Whether a printer can print pictures of that paper: it takes dots, and has as many to a line.
bool imprimeFigura(const Perfil &perfil, const Papel &papel);

// Where imprimeFigura holds. The logo of `recursos` is in black and white. None when the drawing
// library fails.
std::optional<std::string> gerarEscPosFigura(const Pagina &pagina, const Recursos &recursos,
                                             const Perfil &perfil, bool abrirGaveta);

} // namespace zel::cupom
