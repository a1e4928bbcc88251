// SPDX-License-Identifier: MIT
// What the sending component leaves when the document of this key was authorized.
#pragma once

#include <string>

inline std::string retornoAutorizado(const std::string &chave) {
    return "<Retorno><SitCodigo>100</SitCodigo><DocChaAcesso>" + chave +
           "</DocChaAcesso><DocProtocolo>143260000000001</DocProtocolo><DocDhAut>"
           "2026-11-24T10:20:30-03:00</DocDhAut><DocDigestValue>abc=</DocDigestValue></Retorno>";
}
