// SPDX-License-Identifier: MIT
#include "Quebra.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <span>

namespace zel::cupom {

namespace {

// Lines beyond it are no columns of a receipt: they are broken, not narrowed.
constexpr std::size_t kMaiorLinhaEncurtada = 256;

struct Letra {
    char c;
    const Estilo *estilo;
    int largura;
};
using Letras = std::vector<Letra>;
using Parte = std::span<const Letra>;

// Blanks from `inicio` on, up to `fim`.
struct Vao {
    std::size_t inicio = 0;
    std::size_t fim = 0;

    std::size_t brancos() const { return fim - inicio; }
};

bool branco(const Letra &letra) {
    return letra.c == ' ';
}

// The gap at `inicio` or the next one after it; empty, at the end, when there is none.
Vao vaoDesde(Parte letras, std::size_t inicio) {
    const auto primeira = letras.begin() + static_cast<std::ptrdiff_t>(inicio);
    const auto de = std::find_if(primeira, letras.end(), branco);
    const auto ate = std::find_if_not(de, letras.end(), branco);
    return {static_cast<std::size_t>(de - letras.begin()),
            static_cast<std::size_t>(ate - letras.begin())};
}

Letras letrasDe(const Linha &linha, const Medida &medida) {
    Letras letras;
    for (const Trecho &trecho : linha.trechos)
        for (const char c : trecho.texto)
            letras.push_back({c, &trecho.estilo, medida.de(trecho.estilo)});
    return letras;
}

// How many letters a line holds, from the first one on.
std::size_t quantasCabem(Parte letras, int largura) {
    std::size_t n = 0;
    while (n < letras.size() && (largura -= letras[n].largura) >= 0)
        ++n;
    return n;
}

bool cabe(Parte letras, const Medida &medida) {
    return quantasCabem(letras, medida.linha) == letras.size();
}

// Takes a blank from the widest gap; the one at the beginning separates nothing and may go wholly.
bool estreitar(Letras &letras) {
    Vao maior;
    for (Vao vao = vaoDesde(letras, 0); vao.brancos() > 0; vao = vaoDesde(letras, vao.fim))
        if ((vao.brancos() > 1 || vao.inicio == 0) && vao.brancos() > maior.brancos()) maior = vao;
    if (maior.brancos() > 0)
        letras.erase(letras.begin() + static_cast<std::ptrdiff_t>(maior.inicio));
    return maior.brancos() > 0;
}

// The letters with as few blanks less as make them fit; none when that is not enough.
std::optional<Letras> encurtar(Parte longa, const Medida &medida) {
    if (longa.size() > kMaiorLinhaEncurtada) return {};
    Letras letras(longa.begin(), longa.end());
    while (!cabe(letras, medida))
        if (!estreitar(letras)) return {};
    return letras;
}

// Where a line of the paper ends, of letters that do not fit and neither begin nor end with a
// blank.
Vao fimDaLinha(Parte letras, const Medida &medida) {
    const std::size_t cheia = std::max<std::size_t>(1, quantasCabem(letras, medida.linha));
    Vao fim{cheia, cheia};
    for (std::size_t i = 0; i <= cheia; ++i) {
        if (!branco(letras[i])) continue;
        const Vao vao = vaoDesde(letras, i);
        if (vao.brancos() >= fim.brancos()) fim = vao;
        i = vao.fim;
    }
    return fim;
}

Linha linhaDe(Parte letras, Alinhamento alinhamento) {
    Linha linha{{}, alinhamento};
    for (const Letra &letra : letras) {
        if (linha.trechos.empty() || linha.trechos.back().estilo != *letra.estilo)
            linha.trechos.push_back({{}, *letra.estilo});
        linha.trechos.back().texto += letra.c;
    }
    return linha;
}

} // namespace

std::vector<Linha> quebrar(const Linha &linha, const Medida &medida) {
    Letras letras = letrasDe(linha, medida);
    if (cabe(letras, medida)) return {linha};
    int largura = 0;
    for (const Letra &letra : letras)
        largura += letra.largura;
    for (; largura > medida.linha && branco(letras.back()); letras.pop_back())
        largura -= letras.back().largura;

    std::vector<Linha> linhas;
    for (Parte resto = letras; !resto.empty();) {
        if (const auto curta = encurtar(resto, medida)) {
            linhas.push_back(linhaDe(*curta, linha.alinhamento));
            break;
        }
        if (branco(resto.front())) {
            resto = resto.subspan(vaoDesde(resto, 0).fim);
            continue;
        }
        const Vao fim = fimDaLinha(resto, medida);
        linhas.push_back(linhaDe(resto.first(fim.inicio), linha.alinhamento));
        resto = resto.subspan(fim.fim);
    }
    return linhas;
}

} // namespace zel::cupom
