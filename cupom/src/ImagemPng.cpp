// SPDX-License-Identifier: MIT
#include "Imagem.h"

#include "Png.h"

namespace zel::cupom {

std::optional<std::string> gerarPng(const Pagina &pagina, const Recursos &recursos, int escala) {
    EscritorPng png(pagina.papel.largura() * escala, pagina.altura * escala,
                    kPontosPorMilimetro * 1000 * escala);
    const bool desenhada = desenhar(pagina, recursos, escala, [&](const Faixa &faixa) {
        for (int y = 0; y < faixa.altura(); ++y)
            png.escrever(faixa.linha(y));
    });
    if (!desenhada) return {};
    return png.terminar();
}

} // namespace zel::cupom
