// SPDX-License-Identifier: MIT
#include "Formas.h"

namespace zel::cupom {

namespace {

Retangulo retangulo(int x, int y, int largura, int altura) {
    return {static_cast<double>(x), static_cast<double>(y), static_cast<double>(largura),
            static_cast<double>(altura)};
}

} // namespace

std::vector<Retangulo> retangulosDe(const QrPosto &qr, const Papel &papel) {
    std::vector<Retangulo> retangulos;
    const int lado = qr.simbolo.lado, modulo = qr.modulo, margem = papel.margem();
    for (int linha = 0; linha < lado; ++linha) {
        for (int coluna = 0; coluna < lado; ++coluna) {
            const int primeira = coluna;
            while (coluna < lado && qr.simbolo.escuro(linha, coluna))
                ++coluna;
            if (coluna > primeira)
                retangulos.push_back(retangulo(margem + qr.x + primeira * modulo,
                                               qr.y + linha * modulo, (coluna - primeira) * modulo,
                                               modulo));
        }
    }
    return retangulos;
}

std::vector<Retangulo> retangulosDe(const CortePosto &corte, const Papel &papel) {
    constexpr int kTraco = 12, kPasso = 20, kEspessura = 2;
    std::vector<Retangulo> tracos;
    // The first and the last dash are cut by the edges of the paper.
    for (int x = -kTraco / 2; x < papel.largura(); x += kPasso)
        tracos.push_back(retangulo(x, corte.y, kTraco, kEspessura));
    return tracos;
}

Retangulo sublinhadoDe(const TextoPosto &texto, const Papel &papel) {
    return {static_cast<double>(papel.margem() + texto.x), texto.base + 2.0,
            static_cast<double>(texto.texto.size()) * texto.celula.largura, 2.0};
}

} // namespace zel::cupom
