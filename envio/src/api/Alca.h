// SPDX-License-Identifier: MIT
// What a handle of the C functions is, and what stands between a step and the C border.
#pragma once

#include "zel_envio.h"

#include "base/Recusa.h"
#include "documento/Emissao.h"
#include "fluxo/Transmissao.h"

#include <cstdlib>
#include <cstring>
#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

struct zel_envio {
    zel::envio::Emissao emissao;
    std::string lido; // the bytes of what was read
    std::optional<zel::envio::Centavos> troco;
    zel::envio::Transmitido transmitido;
    std::string detalhe, valor;
    zel::envio::Recusas recusas; // what `detalhe` says, one by one
};

namespace zel::envio {

// What is between a step and the C border: the reasons become the detail, and no exception passes
// (all that the rooms throw is that memory, or something else of the system, is short).
template <class Chamada>
int responder(zel_envio *envio, Chamada chamada) noexcept {
    if (envio == nullptr) return ZEL_ENVIO_ARGUMENTO;
    try {
        envio->detalhe.clear();
        envio->recusas = {};
        Recusas recusas;
        const int codigo = chamada(recusas);
        if (codigo == ZEL_ENVIO_OK) return codigo;
        envio->detalhe = recusas.texto();
        envio->recusas = std::move(recusas);
        return codigo;
    } catch (const std::exception &) {
        return ZEL_ENVIO_MEMORIA;
    }
}

inline std::string_view vista(const char *texto) {
    return texto == nullptr ? std::string_view() : texto;
}

// Bytes for the caller, with a 0 behind them.
inline int entregar(std::string_view texto, char **bytes, std::size_t *tamanho) {
    auto *copia = static_cast<char *>(std::malloc(texto.size() + 1));
    if (copia == nullptr) return ZEL_ENVIO_MEMORIA;
    std::memcpy(copia, texto.data(), texto.size());
    copia[texto.size()] = '\0';
    *bytes = copia;
    *tamanho = texto.size();
    return ZEL_ENVIO_OK;
}

} // namespace zel::envio
