// SPDX-License-Identifier: MIT
// What a model of printers is like, as data: a text of lines "key = value" with the keys of the
// public printer-profile databases, and beside them the commands themselves. The file is described
// in CONTRIBUTING.md; the profiles of cupom/perfis are part of the library.
#pragma once

#include "Comando.h"
#include "Estado.h"
#include "Modelo.h"
#include "PaginaDeCodigo.h"
#include "Qr.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zel::cupom {

// The commands of a profile, in the order of their table in Perfil.cpp.
enum class Ordem : std::size_t {
    kIniciar,
    kPagina,
    kEsquerda,
    kCentro,
    kDireita,
    kModo,    // font and all styles in one byte, as ESC !
    kTamanho, // width and height in one byte, as GS !
    kNegrito, // a style's command is followed by the one that ends it
    kNegritoFim,
    kItalico,
    kItalicoFim,
    kSublinhado,
    kSublinhadoFim,
    kLarguraDupla,
    kLarguraDuplaFim,
    kAlturaDupla,
    kAlturaDuplaFim,
    kAvanco,
    kCorteTotal,
    kCorteParcial,
    kQr,
    kImagem,
    kLogotipo,
    kGaveta,
    kQuantas
};

enum class ModoLogotipo { kNenhum, kImagem, kGuardado };

struct FonteDoPerfil {
    int colunas = 0;
    Comando comando;
};

constexpr std::size_t kMaiorPerfil = 65536; // bytes
constexpr int kMaisFontes = 4;
constexpr int kMaisPontos = 1024;
constexpr int kMaisLinhasAntesDoCorte = 20;

struct Perfil {
    std::string nome;
    int milimetros = 0;
    int pontos = 0;                    // to a line
    std::vector<FonteDoPerfil> fontes; // by number, never empty
    const PaginaDeCodigo *pagina = nullptr;
    int numeroDaPagina = 0;
    ModoLogotipo logotipo = ModoLogotipo::kImagem;
    int linhasAntesDoCorte = 0;     // between what was printed last and the cut, or the tear bar
    int maiorModulo = 0;            // of a QR code by command
    int maiorAvanco = kMaiorAvanco; // lines that one command feeds
    int dpi = 203;
    const FamiliaDeEstado *estado = nullptr; // how it is asked for its state; null: not at all
    std::array<Comando, static_cast<std::size_t>(Ordem::kQuantas)> comandos;

    // Dots of a QR code's side, 25 mm; never fewer than on the pictures, which are of 203 dpi.
    int menorLadoDoQr() const { return std::max(kMenorLadoDoQr, (dpi * 250 + 253) / 254); }

    // The command; one that the model does not have, or whose feature is false, does not exist.
    const Comando &comando(Ordem ordem) const { return comandos[static_cast<std::size_t>(ordem)]; }
};

// The profile that a text describes; none when it is longer than kMaiorPerfil or not a profile,
// with the first reason in `motivo` (in Portuguese, without accents).
std::optional<Perfil> lerPerfil(std::string_view texto, std::string &motivo);

struct PerfilEmbutido {
    std::string_view nome;
    std::string_view texto;
};

// The files of cupom/perfis, by name.
std::span<const PerfilEmbutido> perfisEmbutidos();

// The text of one of them; none when there is no such profile.
std::optional<std::string_view> textoDoPerfil(std::string_view nome);

// The name of the profile for a paper of that width when none is chosen.
std::string_view perfilPadrao(int milimetros);

} // namespace zel::cupom
