// SPDX-License-Identifier: MIT
// The service: one worker for each till, which finds its documents and takes them to their end,
// until it is told to stop.
#pragma once

#include "config/Configuracao.h"
#include "fluxo/Fluxo.h"
#include "fluxo/Vigia.h"

#include <atomic>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

namespace zel::envio {

// How a worker reaches the authority: each has a connection of its own.
using FazTransporte = std::function<std::unique_ptr<Transporte>()>;

class ServicoDeEnvio {
public:
    // Everything that is named lives longer than the service.
    ServicoDeEnvio(const Configuracao &config, Oficina &oficina, Linha &linha,
                   const Relogio &relogio, FazTransporte transporte, Ouvinte &ouvinte);
    ~ServicoDeEnvio();
    ServicoDeEnvio(const ServicoDeEnvio &) = delete;
    ServicoDeEnvio &operator=(const ServicoDeEnvio &) = delete;

    // False when the queue cannot be opened or there is no till (`recusas`).
    bool comecar(Recusas &recusas);
    // Ends what is going on, at the latest after one request, and waits for it.
    void parar();

private:
    struct Trabalhador;
    void trabalhar(Trabalhador &este);
    // The connection is made anew with a certificate that was opened anew: because its files were
    // changed, or because somebody said that a stopped queue goes on. Whether it was.
    bool renovarRede(Trabalhador &este, Recusas &avisos);
    void tratar(Trabalhador &este, Fluxo &fluxo, Recusas &avisos, Momento &espera);

    const Configuracao &config_;
    Oficina &oficina_;
    Linha &linha_;
    const Relogio &relogio_;
    FazTransporte transporte_;
    Ouvinte &ouvinte_;
    std::atomic<bool> parar_{false};
    std::vector<std::unique_ptr<Trabalhador>> trabalhadores_;
};

} // namespace zel::envio
