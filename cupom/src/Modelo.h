// SPDX-License-Identifier: MIT
// What a receipt says to the paper, in order, after its mark-up is read: plain values that every
// renderer (picture, printer bytes) walks from the first block to the last. Nothing here knows of
// dots, fonts or devices.
//
// All texts are ISO-8859-1 without control characters (QR contents excepted), so that a renderer
// may send them to a device as they stand.
#pragma once

#include <cstddef>
#include <string>
#include <variant>
#include <vector>

namespace zel::cupom {

// How letters are printed; any combination is possible.
struct Estilo {
    bool condensado = false;
    bool negrito = false;
    bool italico = false;
    bool sublinhado = false;
    bool larguraDupla = false;
    bool alturaDupla = false;

    bool operator==(const Estilo &) const = default;
};

enum class Alinhamento { kEsquerda, kCentro, kDireita };

// Letters of one style; never empty.
struct Trecho {
    std::string texto;
    Estilo estilo;

    bool operator==(const Trecho &) const = default;
};

// One line of text, which ends here. Without runs it is a blank line. It may be longer than the
// paper is wide: then it goes on in the next line of the paper, each of them aligned on its own.
struct Linha {
    std::vector<Trecho> trechos;
    Alinhamento alinhamento = Alinhamento::kEsquerda;

    bool operator==(const Linha &) const = default;
};

// A QR code, error correction M, byte mode. `conteudo` holds 1 to kMaiorQr bytes of any value,
// `modulo` is the side of one module in dots, kMenorModulo to kMaiorModulo. A renderer takes
// smaller modules when the symbol would be wider than the paper. Nothing stands beside it.
struct Qr {
    std::string conteudo;
    int modulo = 0;
    Alinhamento alinhamento = Alinhamento::kEsquerda;

    bool operator==(const Qr &) const = default;
};

// What version 40 holds at level M in byte mode (ISO/IEC 18004:2015, table 7).
constexpr std::size_t kMaiorQr = 2331;
constexpr int kMenorModulo = 1;
constexpr int kMaiorModulo = 16;
constexpr int kModuloPadrao = 3;

// That many blank lines, 1 to kMaiorAvanco.
struct Avanco {
    int linhas = 1;

    bool operator==(const Avanco &) const = default;
};

constexpr int kMaiorAvanco = 255;

// The paper is cut here; another receipt may follow.
struct Corte {
    bool operator==(const Corte &) const = default;
};

// The shop's logo, in the middle of the line; nothing where the renderer has none.
struct Logotipo {
    bool operator==(const Logotipo &) const = default;
};

using Bloco = std::variant<Linha, Qr, Avanco, Corte, Logotipo>;

struct Cupom {
    std::vector<Bloco> blocos;

    bool operator==(const Cupom &) const = default;
};

} // namespace zel::cupom
