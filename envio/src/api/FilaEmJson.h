// SPDX-License-Identifier: MIT
// The queue as JSON, for whoever asks through the C functions: names are those of the rows'
// members, amounts are texts ("31.00"), moments are texts with their zone.
#pragma once

#include "assinatura/Certificado.h"
#include "config/Configuracao.h"
#include "documento/Leitura.h"
#include "fila/Fila.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace zel::envio {

using Json = nlohmann::ordered_json;

// "nfce", "cancelamento"...; empty for none.
std::string_view nomeDe(Tipo tipo);

Json fichaEmJson(Fila &fila, const Ficha &ficha, const ConfigFila &config, Momento agora);
// One that a person has to look at.
Json fichaDeAlguem(Fila &fila, const Ficha &ficha, const ConfigFila &config, Momento agora);
Json passosEmJson(Fila &fila, std::int64_t id);
Json servicoEmJson(const ServicoVisto &visto);

// `certificado`: the one that signs, or null and why in `doCertificado`.
Json estadoDaFila(const Configuracao &config, Fila &fila, const Certificado *certificado,
                  const Recusas &doCertificado, Momento agora);

// One line; bytes that are no UTF-8 are replaced.
std::string escrita(const Json &json);

} // namespace zel::envio
