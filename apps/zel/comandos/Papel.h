// SPDX-License-Identifier: MIT
// A receipt as a picture and on a printer, through libzel-cupom. Where the command is built without
// that library, everything answers so.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace zel::aplicativo {

// A text laid out by the library, ISO-8859-1 with mark-up, and its columns, 42 or 48.
struct TextoDeCupom {
    const std::string &texto;
    int colunas;
};

struct RespostaDoPapel {
    int codigo = 0;           // of libzel-cupom, 1 when it was done; 0 without that library
    std::string descricao;    // of a failure, in words
    std::size_t enviados = 0; // bytes that the printer took
    std::string estado;       // what a printer said of itself, in words
};

// Writes the picture into a file, SVG or PDF when its name ends so and PNG otherwise.
RespostaDoPapel gravarFigura(const TextoDeCupom &cupom, const std::string &arquivo);

// The same as PDF, whatever the name.
RespostaDoPapel gravarPdf(const TextoDeCupom &cupom, const std::string &arquivo);

struct Impressao {
    std::string destino;
    std::string perfil;  // empty: the one for the paper
    int espera = 0;      // milliseconds that it may take
    bool figura = false; // the picture, dot by dot, in the place of the printer's letters
};

RespostaDoPapel imprimirCupom(const TextoDeCupom &cupom, const Impressao &impressao);

// The names of the printer profiles.
std::vector<std::string> nomesDosPerfis();

} // namespace zel::aplicativo
