// SPDX-License-Identifier: MIT
// What the keys say together: the issuer and its state, the environment with token and addresses,
// numbers, and the tax groups in use. Values that are wrong by themselves are Regras' and are not
// judged again here.
#pragma once

#include "conferencia/Achado.h"
#include "conferencia/ArquivoConfig.h"

#include <string_view>

namespace zel::aplicativo {

// Each value by its own rule, then, when the library reads the file to its end, the following.
void conferirConfig(const ArquivoConfig &config, Relatorio &relatorio);

// State, codes of state and municipality, IE, access environment, number and emission type.
void conferirEmitente(const ArquivoConfig &config, Relatorio &relatorio);
void conferirAmbiente(const ArquivoConfig &config, Relatorio &relatorio);

// The first filled ICMS, PIS and COFINS group, as a sale chooses them.
void conferirImpostos(const ArquivoConfig &config, Relatorio &relatorio);

// Whether the regime (CRT) goes with a group that has a CSOSN, or a CST.
inline bool regimeServe(std::string_view crt, bool comCsosn) {
    return (crt == "1" || crt == "4") == comCsosn;
}

} // namespace zel::aplicativo
