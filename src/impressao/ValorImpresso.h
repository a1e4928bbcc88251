// SPDX-License-Identifier: MIT
// Configuration values as receipts and QR codes show them. In the file they are XML text, in which
// any tool may have written references; as an application stored them they may be plain.
#pragma once

#include "config/Registro.h"
#include "util/TextoXml.h"

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

} // namespace zel
