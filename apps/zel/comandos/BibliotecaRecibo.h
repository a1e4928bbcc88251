// SPDX-License-Identifier: MIT
// The text of a receipt, as the library lays it out: the last one, or that of a document with its
// return. A receipt in a customer's hand promises that the sale is authorized: what the authority
// refused is not laid out, and what it has not answered is only for looking at.
#pragma once

#include <string>
#include <string_view>

namespace zel::aplicativo {

inline constexpr std::string_view kSemRetorno = "OFFLINE";

struct PedidoDeRecibo {
    std::string documento; // file
    std::string retorno;   // file or kSemRetorno; empty: the last receipt, whatever `documento` is
    int colunas = 0;       // 42 or 48; 0 for those that it has, 48 for a new one
    bool previa = false;   // one without the authority's answer will do
    bool offline = false;  // `retorno` is a file, but no answer: it has the QR code alone

    bool semResposta() const { return offline || retorno == kSemRetorno; }
};

struct Recibo {
    std::string texto; // ISO-8859-1 with mark-up; empty when there is none
    int colunas = 48;
    std::string aviso; // to be said beside it
    // When there is none: why, and the library's code where it was asked (0 otherwise).
    std::string erro;
    int codigo = 0;
};

Recibo obterRecibo(const std::string &diretorio, const PedidoDeRecibo &pedido);

// Whether the file is the document with that access key, a request about it, or one of their
// scrambled copies, which their names tell.
bool ehDocumentoDe(const std::string &documento, std::string_view chave);

} // namespace zel::aplicativo
