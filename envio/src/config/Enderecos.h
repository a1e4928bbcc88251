// SPDX-License-Identifier: MIT
// Addresses of the authority, by state, environment and purpose: a table in the library
// (dados/servicos-4.00.tsv), in force unless the configuration says another.
#pragma once

#include "config/Configuracao.h"

#include <string_view>

namespace zel::envio {

enum class Servico {
    kAutorizacao,
    kRetAutorizacao,
    kInutilizacao,
    kConsultaProtocolo,
    kStatusServico,
    kRecepcaoEvento,
    kQrCode,
    kConsultaChave,
};

// `uf` in two letters, `tpAmb` 1 or 2. Empty when the table has none. States without services of
// their own are led to the one that serves them.
std::string_view enderecoDe(std::string_view uf, int tpAmb, Servico servico);

// What is configured for a service: one of config.servicos, nomes or metodos. Empty for what is
// none.
std::string_view ditoDe(const ConfigServicos &dito, Servico servico);

// The same, where the configuration has the first word: what everybody asks who has one.
std::string_view enderecoDe(const Configuracao &config, std::string_view uf, int tpAmb,
                            Servico servico);

} // namespace zel::envio
