// SPDX-License-Identifier: MIT
// The page of the service on 127.0.0.1: for the shop's browser and for whoever watches it. It is
// read alone: GET and HEAD, no script, no cookie, and no answer to whom another site's name led
// here.
#pragma once

#include "Html.h"
#include "Quadro.h"
#include "Relato.h"
#include "config/Configuracao.h"
#include "fluxo/Relogio.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct MHD_Daemon;

namespace zel::envio {

// An answer.
struct Folha {
    unsigned status;
    std::string tipo, corpo;
};

// Where an argument of the address is looked up; empty when it is not there.
using Argumentos = std::function<std::string(const char *)>;

class Servidor {
public:
    // What is named lives longer. `dias`: of the certificate, none where there is none. The queue
    // is this object's alone.
    Servidor(std::unique_ptr<Fila> fila, const ConfigFila &config, const Relogio &relogio,
             const Relato &relato, std::function<std::optional<int>()> dias);
    ~Servidor();
    Servidor(const Servidor &) = delete;
    Servidor &operator=(const Servidor &) = delete;

    // Answers from a thread of its own from now on; port 0 is any. False when the port cannot be
    // had.
    bool comecar(int porta, Recusas &recusas);
    int porta() const;

    Folha responder(std::string_view caminho, const Argumentos &argumentos);

private:
    struct Parar {
        void operator()(MHD_Daemon *servidor) const;
    };
    Folha hoje();
    Folha procurar(const Argumentos &argumentos);
    Folha documento(std::string_view id);
    Folha pagina(unsigned status, std::string_view titulo, const Html &corpo, bool renovar = false);
    Quadro quadro();

    std::unique_ptr<Fila> fila_;
    LeitorDoQuadro leitor_;
    const Relogio &relogio_;
    const Relato &relato_;
    std::function<std::optional<int>()> dias_;
    std::string zona_; // a moment of the last document, in the shop's zone
    std::unique_ptr<MHD_Daemon, Parar> servidor_;
};

// Whether the Host header names this machine alone.
bool ehDaqui(std::string_view host);

} // namespace zel::envio
