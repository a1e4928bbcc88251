// SPDX-License-Identifier: MIT
// Decimal texts: always a finite number, the same one as C's reading where that is defined, and
// what was written reads as what was written.
#include "Alvo.h"

#include "texto/Numero.h"

#include <cmath>

using namespace zel;

void jogar(std::string_view entrada) {
    const std::string texto(entrada);
    const double valor = lerDecimal(texto);
    exigir(std::isfinite(valor));
    if (ehDecimalPuro(texto)) {
        const double deC = std::strtod(texto.c_str(), nullptr);
        exigir(std::isinf(deC) ? valor > 1e308 : valor == deC);
        exigir(lerDecimal(fnRetirarZerosLeft(texto)) == valor);
    }
    for (const int casas : {0, 2, 4}) {
        const std::string escrito = formatarDecimal(valor, casas);
        exigir(!escrito.empty() && formatarDecimal(lerDecimal(escrito), casas) == escrito);
    }
    // Times 100, a value just below a cent may become that cent.
    if (std::abs(valor) < 1e9)
        exigir(std::abs(arredondarOuTruncar(valor, true)) <= std::abs(valor) + 1e-6);
    const long long inteiro = lerInteiro(texto);
    exigir(lerInteiro(formatarInteiro(inteiro, 12)) == inteiro);
}
