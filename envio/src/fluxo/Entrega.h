// SPDX-License-Identifier: MIT
// What the till is told: files in its directory of returns, each written whole, in the form that
// the fiscal library reads.
#pragma once

#include "config/Configuracao.h"
#include "fila/Fila.h"

#include <string>
#include <string_view>

namespace zel::envio {

// Of an authorized document `CHAVE.retorno.xml`, with the ready QR content, and
// `CHAVE.documento.xml`, in the form in which it is printed; of a cancellation
// `CHAVE-cancelamento.retorno.xml`, of an inutilization `ID....retorno.xml`, of a consultation
// `CHAVE-consulta.retorno.xml`: the authority's own record. A refusal is a return alone, with
// SitCodigo (0: nothing was sent) and SitDescricao. False when it could not be written.
bool escreverRetorno(const Configuracao &config, const Ficha &ficha, std::string_view mensagem,
                     std::string_view elemento, Recusas &recusas);

// Name of the return of a row.
std::string nomeDoRetorno(const Ficha &ficha);
// The directory of the returns of a till, with its "/".
std::string retornosDe(const Configuracao &config, const std::string &caixa);

} // namespace zel::envio
