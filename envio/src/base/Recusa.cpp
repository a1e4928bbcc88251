// SPDX-License-Identifier: MIT
#include "base/Recusa.h"

#include <cstddef>

namespace zel::envio {

namespace {

constexpr std::size_t kMaiorValor = 120;

// Cut before the character that would not fit whole.
std::string_view cortar(std::string_view utf8) {
    if (utf8.size() <= kMaiorValor) return utf8;
    std::size_t fim = kMaiorValor;
    while (fim > 0 && (static_cast<unsigned char>(utf8[fim]) & 0xC0) == 0x80)
        --fim;
    return utf8.substr(0, fim);
}

// Control characters, those of two bytes (C2 80 to C2 9F) too, become blanks: a line stays a line,
// and a terminal that shows it is told nothing.
std::string semControles(std::string_view utf8) {
    std::string texto(utf8);
    for (std::size_t i = 0; i < texto.size(); ++i) {
        const auto byte = static_cast<unsigned char>(texto[i]);
        const auto seguinte =
            static_cast<unsigned char>(i + 1 < texto.size() ? texto[i + 1] : '\0');
        if (byte < 0x20 || byte == 0x7F)
            texto[i] = ' ';
        else if (byte == 0xC2 && seguinte >= 0x80 && seguinte < 0xA0)
            texto.replace(i, 2, " ");
    }
    return texto;
}

} // namespace

bool Recusas::juntar(std::string_view campo, std::string_view valor, std::string_view motivo) {
    lista_.push_back({semControles(campo), semControles(cortar(valor)), semControles(motivo)});
    return false;
}

void Recusas::juntar(const Recusas &outras) {
    lista_.insert(lista_.end(), outras.lista_.begin(), outras.lista_.end());
}

std::string Recusas::texto() const {
    std::string texto;
    for (const auto &recusa : lista_) {
        if (!texto.empty()) texto += '\n';
        texto += recusa.campo;
        if (!recusa.valor.empty()) texto += ": \"" + recusa.valor + '"';
        texto += (recusa.valor.empty() ? ": " : "; ") + recusa.motivo;
    }
    return texto;
}

} // namespace zel::envio
