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

// The longest paper in dots that a PDF page holds, 200 inches (ISO 32000-1:2008, annex C.2).
constexpr int kMaiorAlturaDoPdf = 200 * 254 * kPontosPorMilimetro / 10;

// PDF of one page of the paper's size, letters as text, of a page that is no longer than that. None
// when the drawing library fails.
std::optional<std::string> gerarPdf(const Pagina &pagina, const Recursos &recursos);

} // namespace zel::cupom
