// SPDX-License-Identifier: MIT
// The queue of a handle's configuration, and all that sends, for as long as one call lasts.
#pragma once

#include "api/Alca.h"
#include "fluxo/Destinos.h"
#include "fluxo/Fluxo.h"
#include "rede/Rede.h"

#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace zel::envio {

// Everybody's own, so that nothing is shared between handles.
class Balcao {
public:
    Balcao(const Configuracao &config, Fila &fila)
        : config_(config), fila_(fila), oficina_(config, 1),
          rede_(std::make_shared<Confianca>(config.rede.autoridades),
                oficina_.certificado(doCertificado_)) {}

    Meios meios() { return {config_, oficina_, linha_, relogio_, fila_, rede_}; }

private:
    const Configuracao &config_;
    Fila &fila_;
    Oficina oficina_;
    Linha linha_;
    Relogio relogio_;
    Recusas doCertificado_; // said by whoever comes to need it
    Rede rede_;
};

// A till's directory as the configuration names it, whatever way leads there, so that the service
// and a call mean one till; the only one of the configuration when none is given.
std::string caixaDe(const Configuracao &config, std::string_view dada);

// `chamada(Fila &, Recusas &)` with the queue open. A handle without a configuration has none.
template <class Chamada>
int naFila(zel_envio *envio, Chamada chamada) noexcept {
    return responder(envio, [&](Recusas &recusas) {
        const Configuracao &config = envio->emissao.config();
        if (config.diretorio.empty() && config.fila.diretorio.empty()) {
            recusas.juntar("configuracao", "", "falta: a fila é de uma zel-envio.toml");
            return int{ZEL_ENVIO_ORDEM};
        }
        const auto fila = Fila::abrir(filaDe(config), recusas);
        return fila ? chamada(*fila, recusas) : int{ZEL_ENVIO_FILA};
    });
}

} // namespace zel::envio
