// SPDX-License-Identifier: MIT
// The data files that the library carries within itself.
#pragma once

#include <string_view>

namespace zel::envio {

// envio/dados/servicos-4.00.tsv: columns uf, autorizador, tpAmb, servico, endereco, one head line.
extern const std::string_view kTabelaServicos;

} // namespace zel::envio
