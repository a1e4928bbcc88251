// SPDX-License-Identifier: MIT
// Where documents are translated and signed: a few places for all tills of a process, since each
// holds the schemas in memory and keeps a processor busy. Whoever comes waits for a free one.
#pragma once

#include "assinatura/Certificado.h"
#include "base/Recusa.h"
#include "config/Configuracao.h"
#include "documento/Emissao.h"
#include "fila/Fila.h"

#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace zel::envio {

struct Feito {
    Passo passo = Passo::kFeito;
    std::string mensagem; // the signed bytes; of a consultation, the message
    std::string chave;    // 44 digits; of an inutilization its Id
    Recusas recusas;
};

class Oficina {
public:
    explicit Oficina(const Configuracao &config, std::size_t lugares = 2);

    // Of a till's file or a document of layout 4.00. Several threads may call this.
    Feito fazer(const std::string &original, const ContextoPedido &contexto,
                const ContextoNota &nota, Momento agora);
    // The one that signs; null when it cannot be opened.
    std::shared_ptr<const Certificado> certificado(Recusas &recusas);
    // Opens certificate and schemas anew at the next use.
    void renovar();

private:
    struct Banca {
        std::unique_ptr<Emissao> emissao;
        int geracao = 0; // of the files that it has open
    };
    // A bench, given back when it goes.
    class Lugar {
    public:
        explicit Lugar(Oficina &oficina);
        ~Lugar();
        Lugar(const Lugar &) = delete;
        Lugar &operator=(const Lugar &) = delete;
        Emissao *operator->() { return banca_.emissao.get(); }

    private:
        Oficina &oficina_;
        Banca banca_;
    };

    const Configuracao &config_;
    std::mutex porta_;
    std::condition_variable livre_;
    std::vector<Banca> bancas_; // the free ones
    int geracao_ = 1;
};

} // namespace zel::envio
