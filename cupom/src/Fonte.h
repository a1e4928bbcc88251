// SPDX-License-Identifier: MIT
// The two monospaced fonts of a picture, normal and bold, from font files, and which of their
// glyphs shows which ISO-8859-1 character. Fonts are opened directly and not through the system's
// font selection, which follows the locale and the user's settings.
#pragma once

#include "Modelo.h"

#include <array>
#include <cairo.h>
#include <ft2build.h>
#include FT_FREETYPE_H
#include <memory>
#include <optional>
#include <string>

namespace zel::cupom {

struct SoltarFonte {
    void operator()(cairo_font_face_t *fonte) const { cairo_font_face_destroy(fonte); }
};

struct Fonte {
    std::unique_ptr<cairo_font_face_t, SoltarFonte> face;
    std::array<unsigned long, 256> glifos{}; // by character
    double avanco = 0;                       // width of a letter where the size of the font is 1
    FT_Face ft = nullptr;                    // as long as `face`
};

// The outline of a glyph as the path data of SVG, in units of the font, upwards from the base line.
std::string contornoDe(const Fonte &fonte, unsigned long glifo);

struct Fontes {
    Fonte normal;
    std::optional<Fonte> negrito; // where there is none, bold letters are drawn twice

    const Fonte &para(const Estilo &estilo) const {
        return estilo.negrito && negrito ? *negrito : normal;
    }
};

// Slant of italic letters, for which no font is opened: to the right for one upwards.
constexpr double kInclinacao = 0.2;

// How much higher than wide, by its own proportions, a letter is drawn.
constexpr double proporcaoDe(const Estilo &estilo) {
    return (estilo.alturaDupla ? 2.0 : 1.0) / (estilo.larguraDupla ? 2.0 : 1.0);
}

// Opens the fonts of two files, the second of which may be empty. None when a file is no font of a
// fixed width that can be scaled.
std::optional<Fontes> abrirFontes(const std::string &normal, const std::string &negrito);

// Opens DejaVu Sans Mono, or Liberation Mono when it is not installed. None without both.
std::optional<Fontes> acharFontes();

} // namespace zel::cupom
