// SPDX-License-Identifier: MIT
// How the sources that are built with libzel-envio call it.
#pragma once

#include "comandos/Envio.h"

#include "zel_envio.h"

#include <memory>
#include <string>

namespace zel::aplicativo {

struct Liberar {
    void operator()(zel_envio *envio) const { zel_envio_liberar(envio); }
    void operator()(char *bytes) const { zel_envio_liberar_bytes(bytes); }
};
using Alca = std::unique_ptr<zel_envio, Liberar>;

// A fact of zel_envio_valor.
std::string valorDe(const Alca &envio, const char *nome);

// What the last call, which gave `codigo`, found wrong.
RespostaDoEnvio resposta(const Alca &envio, int codigo);

// Calls a function that gives bytes, and keeps them.
template <class Chamada>
int receber(std::string &bytes, Chamada chamada) {
    char *dados = nullptr;
    std::size_t tamanho = 0;
    const int codigo = chamada(&dados, &tamanho);
    const std::unique_ptr<char, Liberar> dono(dados);
    if (codigo > 0) bytes.assign(dados, tamanho);
    return codigo;
}

// A document and a return as the fiscal library reads them, of the message in the handle and the
// authority's answer (null: none).
int receberImpressao(const Alca &envio, const std::string *resposta, std::string &documento,
                     std::string &retorno);

} // namespace zel::aplicativo
