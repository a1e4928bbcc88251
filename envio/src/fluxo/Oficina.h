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

// Whose fault it is that a document was not made.
enum class Culpa {
    kDocumento,   // its own
    kTitular,     // its issuer is another company than the certificate's
    kCertificado, // this may sign nothing now
    kProcesso,    // what this process has to open or to use: certificate, schemas, configuration
};

struct Feito {
    Passo passo = Passo::kFeito;
    Culpa culpa = Culpa::kDocumento; // where it is not kFeito
    std::string mensagem;            // the signed bytes; of a consultation, the message
    std::string chave;               // 44 digits; of an inutilization its Id
    Recusas recusas;
};

class Oficina {
public:
    explicit Oficina(const Configuracao &config, std::size_t lugares = 2);

    // Of a till's file or a document of layout 4.00. Several threads may call this.
    Feito fazer(const std::string &original, const ContextoPedido &contexto,
                const ContextoNota &nota, Momento agora);
    // The one that signs; null when it cannot be opened, which is not tried again before renovar().
    std::shared_ptr<const Certificado> certificado(Recusas &recusas);
    // Which opening of certificate and schemas holds; those who keep something of it compare.
    int geracao() const;
    // Opens them anew at the next use, if `vista` holds still: of several who ask, once.
    void renovar(int vista);
    // Does so by itself when the certificate's files were changed since and can be opened; why not
    // is said once (`recusas`). A token has no files.
    void acompanhar(Recusas &recusas);

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
        Emissao *operator->() const { return banca_.emissao.get(); }

    private:
        Oficina &oficina_;
        Banca banca_;
    };

    const Configuracao &config_;
    mutable std::mutex porta_;
    std::condition_variable livre_;
    std::vector<Banca> bancas_;    // the free ones
    int geracao_ = 1, falhou_ = 0; // the one whose certificate could not be opened
    Recusas falha_;
    std::string marca_; // of the certificate's files, as they were last seen
};

} // namespace zel::envio
