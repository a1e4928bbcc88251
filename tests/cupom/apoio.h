// SPDX-License-Identifier: MIT
// What the tests of the pictures share: a receipt drawn, a picture read, a QR code found in it.
#pragma once

#include "Desenho.h"
#include "Fonte.h"
#include "Leitor.h"
#include "Logotipo.h"
#include "Pagina.h"
#include "apoio/Trecho.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zel::cupom {

// The fonts of the system, opened once; a test without them fails.
Fontes &fontesDoTeste();

std::string lerDado(const std::string &caminho);

// A logo that tells its corners apart: black frame, a grey wedge, a black square at the upper left.
ImagemCinza logotipoDoTeste(int largura, int altura);

// Every receipt that the fiscal library prints in its own tests, and one that shows all of the
// mark-up, in words that name their letters, for each paper.
struct Recibo {
    std::string nome;
    std::string texto;
    const Papel *papel;
    bool comLogotipo = false;
};

std::vector<Recibo> recibos();

struct Desenhado {
    Pagina pagina;
    ImagemCinza imagem; // the whole paper
};

Desenhado desenharTexto(std::string_view texto, const Papel &papel,
                        const ImagemCinza *logotipo = nullptr, int escala = 1);
Desenhado desenharCupom(const Cupom &cupom, const Papel &papel,
                        const ImagemCinza *logotipo = nullptr, int escala = 1);

ImagemCinza desenharPagina(const Pagina &pagina, const ImagemCinza *logotipo, int escala);

std::string pngDaImagem(const ImagemCinza &imagem);

// What each QR code in the picture says, from the top.
std::vector<std::string> qrsDe(const ImagemCinza &imagem);

// What each QR code of the model says.
std::vector<std::string> qrsDe(const Cupom &cupom);

// Where two pictures differ by more than another version of the same font explains; empty when they
// do not. Of each field of 48 x 28 dots (four letters, one line) the ink must be the same but for a
// sixth, which bold letters exceed; at most one pixel in eight may be black here and paper there,
// which keeps whatever is made of dots (QR codes, logo, cut) in its place.
std::string diferenca(const ImagemCinza &uma, const ImagemCinza &outra);

// Whether they do not; what differs is left in the directory of the build under that name.
testing::AssertionResult igual(const ImagemCinza &esperada, const ImagemCinza &imagem,
                               const std::string &nome);

} // namespace zel::cupom
