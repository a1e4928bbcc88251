// SPDX-License-Identifier: MIT
// The picture of a page as a whole file.
#pragma once

#include "Desenho.h"
#include "Pagina.h"

#include <optional>
#include <string>

namespace zel::cupom {

// PNG, `escala` pixels to the dot. None when the drawing library fails.
std::optional<std::string> gerarPng(const Pagina &pagina, const Recursos &recursos, int escala);

// SVG 1.1, letters as outlines, with the paper's size in millimetres.
std::string gerarSvg(const Pagina &pagina, const Recursos &recursos);

} // namespace zel::cupom
