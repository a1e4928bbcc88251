// SPDX-License-Identifier: MIT
// XML signatures of the authority's documents, by xmlsec: enveloped, C14N 1.0, SHA-1 and RSA-SHA1,
// the end certificate alone. Source: Manual de Orientação do Contribuinte 7.0, Anexo I, "Padrão de
// Assinatura Digital".
#pragma once

#include "assinatura/Certificado.h"
#include "base/Recusa.h"
#include "base/Xml.h"

#include <optional>
#include <string>
#include <string_view>

namespace zel::envio {

// Signs the element `nome` (infNFe, infEvento, infInut) by its Id, and adds the Signature at the
// end of its parent. Every such element of the document is signed; a Signature that is there
// already is refused. False when nothing was changed.
bool assinar(Documento &documento, std::string_view nome, const Certificado &certificado,
             Recusas &recusas);

// DigestValue of the element, in Base64, as the signature has it.
std::optional<std::string> digestDe(const Documento &documento, std::string_view nome,
                                    Recusas &recusas);

// Whether the signature below `pai` (NFe, evento, inutNFe) holds: digest, value with the
// certificate that it carries, algorithms and transforms as the layout fixes them, a reference to
// that element and no other. `certificadoPem` receives the certificate.
bool verificarAssinatura(const Documento &documento, const No &pai, std::string &certificadoPem,
                         Recusas &recusas);

} // namespace zel::envio
