// SPDX-License-Identifier: MIT
// The till's requests become messages of the services: cancellation and cancellation by
// substitution (envEvento 1.00), inutilization (inutNFe 4.00), consultation by key
// (consSitNFe 4.00). A consultation by number or date has no service and is refused by name.
#pragma once

#include "base/Recusa.h"
#include "base/Xml.h"
#include "comum/ChaveAcesso.h"
#include "config/Configuracao.h"

#include <optional>
#include <string>
#include <string_view>

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

// Refuses, as `campo`, a key that cannot be that of the document in the place of another: it is an
// offline one of the same issuer, what it replaces an online one.
void conferirSubstituta(const ChaveAcesso &chave, const std::string &substituta,
                        std::string_view campo, Recusas &recusas);

// Refuses a range of numbers whose end comes before its beginning, or that is longer than one
// inutilization may be. Texts that are no numbers are somebody else's to refuse.
void conferirFaixa(const std::string &nNFIni, const std::string &nNFFin, std::string_view campo,
                   Recusas &recusas);

} // namespace zel::envio
