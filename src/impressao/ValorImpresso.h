// SPDX-License-Identifier: MIT
// Configuration values as receipts and QR codes show them. In the file they are XML text, in which
// any tool may have written references; as an application stored them they may be plain.
#pragma once

#include "config/Registro.h"
#include "texto/Texto.h"
#include "texto/TextoXml.h"

#include <string>
#include <string_view>

namespace zel {

// The characters that a value stands for, its line ends as "\n".
inline std::string textoImpresso(std::string_view valor) {
    return textoSimples(valor, FimDeLinha::kMantido);
}

inline std::string valorImpresso(Chave chave) {
    return textoImpresso(valorConfig(chave));
}

// A text whose lines end in "\n" as lines of the receipt, which end in CR LF.
inline std::string emLinhas(std::string_view texto) {
    return substituirAll(texto, "\n", "\r\n");
}

// A value as it prints on a receipt.
inline std::string linhasConfiguradas(Chave chave) {
    return emLinhas(valorImpresso(chave));
}

} // namespace zel
