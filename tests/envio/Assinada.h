// SPDX-License-Identifier: MIT
// Messages of the tests, signed by their certificate.
#pragma once

#include "Certificados.h"
#include "Mensagens.h"

#include "assinatura/Assinatura.h"

namespace zel::envio::ensaio {

// The elements of that name are signed, each where the layout has it.
inline std::string assinada(const std::string &xml, std::string_view nome) {
    Documento documento = lido(xml);
    Recusas recusas;
    EXPECT_TRUE(assinar(documento, nome, *certificado(), recusas)) << recusas.texto();
    return documento.texto();
}

} // namespace zel::envio::ensaio
