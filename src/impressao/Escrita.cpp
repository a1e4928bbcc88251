// SPDX-License-Identifier: MIT
#include "impressao/Escrita.h"

#include "comum/Marcas.h"
#include "texto/Marcacao.h"

namespace zel {

namespace {

// Does a mark begin at the text's "<"?
bool comecaMarca(std::string_view texto) {
    const std::string_view dentro = texto.substr(1, marcas::kMaior + 2); // with "/" and ">"
    const std::size_t fim = dentro.find('>');
    return fim != dentro.npos && ehMarca(dentro.substr(0, fim));
}

} // namespace

std::string inofensivo(std::string_view valor) {
    std::string texto;
    std::size_t cresceu = 0, copiado = 0;
    for (std::size_t i = valor.find('<'); i != valor.npos; i = valor.find('<', i + 1)) {
        if (!comecaMarca(valor.substr(i))) continue;
        const bool cabe = cresceu < kMaiorCrescimento;
        texto.append(valor.substr(copiado, i - copiado)).append(cabe ? "< " : " ");
        cresceu += cabe ? 1 : 0;
        copiado = i + 1;
    }
    return texto.append(valor.substr(copiado));
}

} // namespace zel
