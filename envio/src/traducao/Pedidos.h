// SPDX-License-Identifier: MIT
// The till's requests become messages of the services: cancellation and cancellation by
// substitution (envEvento 1.00), inutilization (inutNFe 4.00), consultation by key
// (consSitNFe 4.00). A consultation by number or date has no service and is refused by name.
#pragma once

#include "base/Recusa.h"
#include "base/Xml.h"
#include "config/Configuracao.h"

#include <optional>
#include <string>

namespace zel::envio {

// What a request does not say and its sender knows; empty members are not known.
struct ContextoPedido {
    std::string protocolo;  // nProt of the document to be cancelled
    std::string substituta; // key of the document that replaced it: makes a 110112 of the request
    std::string data;       // "AAAA-MM-DD" of an inutilization: when the request was written
    std::string idLote = "1";
};

// `pedido`: the element EnvioEvento, Inutilizacao or Consulta as the till wrote it. Events and
// inutilizations come unsigned.
std::optional<Documento> traduzirPedido(const No &pedido, const Configuracao &config,
                                        const ContextoPedido &contexto, Recusas &recusas);

} // namespace zel::envio
