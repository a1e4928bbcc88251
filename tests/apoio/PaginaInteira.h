// SPDX-License-Identifier: MIT
// What every page has to be, whatever the receipt: everything stands on the paper, in order and
// beside what stands on the same line, and every letter is there (a line that is too long gives up
// blanks).
#pragma once

#include "Pagina.h"

#include <string>
#include <string_view>

namespace zel::cupom {

// What is wrong with a page of those letters; empty when nothing is.
inline std::string_view faltaNa(const Pagina &pagina, std::string letras) {
    std::string postas;
    int topo = -1, fim = 0;
    int direita = 0;
    for (const Elemento &elemento : pagina.elementos) {
        const bool mesmaLinha = elemento.topo == topo;
        if (!mesmaLinha && elemento.topo < fim) return "overlaps";
        if (elemento.fim <= elemento.topo || elemento.fim > pagina.altura) return "height";
        topo = elemento.topo;
        fim = elemento.fim;
        if (const auto *texto = std::get_if<TextoPosto>(&elemento.desenho)) {
            const int alto = texto->base - texto->celula.base;
            if (texto->x < 0 || (mesmaLinha && texto->x != direita)) return "place of a letter";
            direita = texto->x + static_cast<int>(texto->texto.size()) * texto->celula.largura;
            if (direita > pagina.papel.larguraUtil) return "wider than the paper";
            if (alto < topo || alto + texto->celula.altura > fim) return "higher than its line";
            postas += texto->texto;
        } else if (const auto *qr = std::get_if<QrPosto>(&elemento.desenho)) {
            const int zona = kZonaQuieta * qr->modulo, lado = qr->simbolo.lado * qr->modulo;
            if (qr->x < zona || qr->x + lado + zona > pagina.papel.larguraUtil) return "QR, beside";
            if (qr->y != topo + zona || qr->y + lado + zona != fim) return "QR, above or below";
        }
    }
    std::erase(postas, ' ');
    std::erase(letras, ' ');
    return postas == letras ? "" : "letters are lost";
}

} // namespace zel::cupom
