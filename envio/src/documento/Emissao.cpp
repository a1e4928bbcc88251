// SPDX-License-Identifier: MIT
#include "documento/Emissao.h"

#include "assinatura/Assinatura.h"
#include "qrcode/QrCode.h"

#include <utility>

namespace zel::envio {

namespace {

// What is signed in a message of each kind, and whose it is: the first place with the CNPJ.
struct Assinado {
    Tipo tipo;
    std::string_view elemento;
    std::string_view cnpj;
};
constexpr Assinado kAssinados[] = {
    {Tipo::kNfce, "infNFe", "infNFe/emit/CNPJ"},
    {Tipo::kCancelamento, "infEvento", "evento/infEvento/CNPJ"},
    {Tipo::kInutilizacao, "infInut", "infInut/CNPJ"},
};

const Assinado *assinadoDe(Tipo tipo) {
    for (const auto &este : kAssinados)
        if (este.tipo == tipo) return &este;
    return nullptr; // a consultation is sent as it is
}

} // namespace

void Emissao::configurar(Configuracao config) {
    config_ = std::move(config);
    certificado_.reset();
    esquemas_.reset();
}

void Emissao::ler(Lido lido) {
    lido_ = std::move(lido);
    contexto_ = {};
    nota_ = {};
    mensagem_ = {};
}

const Documento &Emissao::mensagem() const {
    return mensagem_ ? mensagem_ : lido_.documento;
}

std::shared_ptr<const Certificado> Emissao::certificado(Recusas &recusas) {
    if (!certificado_) certificado_ = Certificado::abrir(config_.certificado, recusas);
    return certificado_;
}

Passo Emissao::esquemas(std::shared_ptr<Esquemas> &abertos, Recusas &recusas) {
    if (!esquemas_ && !config_.esquemas.empty()) {
        esquemas_ = Esquemas::abrir(config_.esquemas, recusas);
        if (!esquemas_) return Passo::kConfiguracao;
    }
    abertos = esquemas_;
    return Passo::kFeito;
}

Passo Emissao::julgar(const Documento &mensagem, bool semAssinatura, Recusas &recusas) {
    std::shared_ptr<Esquemas> abertos;
    const Passo passo = esquemas(abertos, recusas);
    if (passo != Passo::kFeito || !abertos) return passo;
    return abertos->julgar(mensagem, semAssinatura, recusas) ? Passo::kFeito : Passo::kEsquema;
}

Passo Emissao::traduzida(Documento &mensagem, Recusas &recusas) {
    if (lido_.tipo == Tipo::kNenhum) return Passo::kOrdem;
    std::optional<Documento> feita;
    if (!lido_.doCaixa) {
        // What stands around an NFe, an answer for instance, is none of the message.
        const No principal = lido_.principal();
        if (principal == lido_.documento.raiz()) {
            feita = lido_.documento.copia();
        } else {
            feita = Documento::novo("NFe", kEspacoNfe);
            for (const No &filho : principal.filhos())
                feita->raiz().acrescentarCopia(filho);
        }
    } else if (lido_.tipo == Tipo::kNfce) {
        feita = traduzirNfce(lido_.principal(), config_, recusas, nota_);
    } else {
        feita = traduzirPedido(lido_.documento.raiz(), config_, contexto_, recusas);
    }
    if (!feita) return Passo::kTraducao;
    mensagem = std::move(*feita);
    return Passo::kFeito;
}

Passo Emissao::traduzir(Recusas &recusas) {
    Documento mensagem;
    Passo passo = traduzida(mensagem, recusas);
    if (passo == Passo::kFeito) passo = julgar(mensagem, !lido_.assinado(), recusas);
    if (passo == Passo::kFeito) mensagem_ = std::move(mensagem);
    return passo;
}

// The digest is over infNFe alone: infNFeSupl, which carries it offline, comes in between.
Passo Emissao::assinarNfce(Documento &mensagem, const Certificado &certificado, Recusas &recusas) {
    const auto digest = digestDe(mensagem, "infNFe", recusas);
    if (!digest) return Passo::kAssinatura;
    const No nfe = mensagem.raiz();
    const auto suplemento = suplementoDe(nfe, *digest, config_, &certificado, recusas);
    if (!suplemento) return Passo::kConfiguracao;
    No supl = mensagem.raiz().acrescentar("infNFeSupl");
    supl.acrescentar("qrCode", suplemento->qrCode);
    supl.acrescentar("urlChave", suplemento->urlChave);
    return Passo::kFeito;
}

Passo Emissao::assinar(std::int64_t agora, Recusas &recusas) {
    Documento mensagem;
    Passo passo = traduzida(mensagem, recusas);
    if (passo != Passo::kFeito) return passo;
    if (const Assinado *assinado = assinadoDe(lido_.tipo); assinado != nullptr) {
        if (lido_.assinado())
            return recusas.juntar("Signature", "", "o documento já está assinado"),
                   Passo::kAssinatura;
        const auto chave = certificado(recusas);
        if (!chave) return Passo::kCertificado;
        if (!chave->conferir(mensagem.raiz().texto(assinado->cnpj), agora, recusas))
            return Passo::kCertificado;
        if (lido_.tipo == Tipo::kNfce) passo = assinarNfce(mensagem, *chave, recusas);
        if (passo != Passo::kFeito) return passo;
        if (!zel::envio::assinar(mensagem, assinado->elemento, *chave, recusas))
            return Passo::kAssinatura;
    }
    passo = julgar(mensagem, false, recusas);
    if (passo == Passo::kFeito) mensagem_ = std::move(mensagem);
    return passo;
}

} // namespace zel::envio
