// SPDX-License-Identifier: MIT
// The way of one document: read, translated, signed, given its QR code, judged. Owns the
// configuration with what it names (certificate, schemas), which is opened when it is first needed.
#pragma once

#include "assinatura/Certificado.h"
#include "base/Recusa.h"
#include "base/Xml.h"
#include "config/Configuracao.h"
#include "documento/Leitura.h"
#include "esquema/Esquema.h"
#include "traducao/Pedidos.h"
#include "traducao/Traducao.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace zel::envio {

// Where a step came to its end; the values are those of the C API's codes.
enum class Passo {
    kFeito = 1,
    kConfiguracao = -3,
    kTraducao = -5,
    kCertificado = -6,
    kAssinatura = -7,
    kEsquema = -8,
    kReprovado = -9,
    kOrdem = -10,
};

class Emissao {
public:
    void configurar(Configuracao config);
    void ler(Lido lido);
    void completar(ContextoPedido contexto, ContextoNota nota) {
        contexto_ = std::move(contexto);
        nota_ = nota;
    }

    // Each step leaves what was made before as it was when it fails. `agora`: Unix seconds.
    Passo traduzir(Recusas &recusas);
    Passo assinar(std::int64_t agora, Recusas &recusas);

    const Configuracao &config() const { return config_; }
    const Lido &lido() const { return lido_; }
    // What was made; of a document of layout 4.00 that was only read, that.
    const Documento &mensagem() const;
    bool temMensagem() const { return bool(mensagem_); }

    // The configured ones; null when there is none, or it cannot be opened (`recusas`).
    std::shared_ptr<const Certificado> certificado(Recusas &recusas);
    // The same as it stands: null before it was opened.
    const Certificado *aberto() const { return certificado_.get(); }
    Passo esquemas(std::shared_ptr<Esquemas> &abertos, Recusas &recusas);

private:
    Passo traduzida(Documento &mensagem, Recusas &recusas);
    Passo julgar(const Documento &mensagem, bool semAssinatura, Recusas &recusas);
    Passo assinarNfce(Documento &mensagem, const Certificado &certificado, Recusas &recusas);

    Configuracao config_;
    Lido lido_;
    ContextoPedido contexto_;
    ContextoNota nota_;
    Documento mensagem_;
    std::shared_ptr<const Certificado> certificado_;
    std::shared_ptr<Esquemas> esquemas_;
};

} // namespace zel::envio
