// SPDX-License-Identifier: MIT
// Draws a page as dots, in bands from the top to the bottom of the paper: for a picture and for a
// printer that takes raster graphics.
#pragma once

#include "Fonte.h"
#include "Logotipo.h"
#include "Pagina.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

namespace zel::cupom {

// What a page is drawn with. The logo, null or of the size with which the page was laid out, is in
// its final shades.
struct Recursos {
    const Fontes &fontes;
    const ImagemCinza *logotipo = nullptr;
};

// Rows of a drawing, each the whole width of the paper at `escala` pixels to the dot; what can be
// printed begins after the paper's margin. 0 black to 255 paper.
class Faixa {
public:
    Faixa(const std::uint8_t *pixels, int largura, int altura, int passo)
        : pixels_(pixels), largura_(largura), altura_(altura), passo_(passo) {}

    int altura() const { return altura_; }
    std::span<const std::uint8_t> linha(int y) const {
        return {pixels_ + static_cast<std::ptrdiff_t>(y) * passo_,
                static_cast<std::size_t>(largura_)};
    }

private:
    const std::uint8_t *pixels_;
    int largura_, altura_, passo_;
};

// Hands the bands of a page to `receber`, one after the other; a band is gone when it returns.
// `escala` 1 and up. False when cairo fails; memory that is short throws std::bad_alloc.
bool desenhar(const Pagina &pagina, const Recursos &recursos, int escala,
              const std::function<void(const Faixa &)> &receber);

// All of a page at once, with the user space of `pincel` in dots of the paper; failures are its
// status.
void desenharInteira(cairo_t *pincel, const Pagina &pagina, const Recursos &recursos);

} // namespace zel::cupom
