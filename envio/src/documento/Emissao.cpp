// SPDX-License-Identifier: MIT
#include "documento/Emissao.h"

#include "assinatura/Assinatura.h"
#include "documento/Conferencia.h"
#include "qrcode/QrCode.h"

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

namespace zel::envio {

namespace {

// What is signed in a message of each kind, and whose it is.
struct Assinado {
    Tipo tipo;
    std::string_view elemento;
    std::string_view cnpj; // below it
};
constexpr Assinado kAssinados[] = {
    {Tipo::kNfce, "infNFe", "emit/CNPJ"},
    {Tipo::kCancelamento, "infEvento", "CNPJ"},
    {Tipo::kInutilizacao, "infInut", "CNPJ"},
};

const Assinado *assinadoDe(Tipo tipo) {
    for (const auto &este : kAssinados)
        if (este.tipo == tipo) return &este;
    return nullptr; // a consultation is sent as it is
}

// Every element of a message that is to be signed: a lot may hold several events.
std::vector<No> todos(const No &raiz, const Assinado &assinado) {
    if (assinado.tipo != Tipo::kCancelamento || raiz.nome() == "evento")
        return {raiz.procurar(assinado.elemento)};
    std::vector<No> achados;
    for (const No &evento : raiz.filhos("evento"))
        for (const No &infEvento : evento.filhos(assinado.elemento))
            achados.push_back(infEvento);
    return achados;
}

// The certificate signs for each of those that the message names, and for nobody else.
bool conferirTitulares(const Documento &mensagem, const Assinado &assinado,
                       const Certificado &certificado, std::int64_t agora, Recusas &recusas) {
    std::set<std::string> ditos;
    for (const No &elemento : todos(mensagem.raiz(), assinado))
        ditos.insert(elemento.texto(assinado.cnpj));
    if (ditos.empty()) ditos.insert("");
    return std::all_of(ditos.begin(), ditos.end(), [&](const std::string &cnpj) {
        return certificado.conferir(cnpj, agora, recusas);
    });
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
    if (lido_.tipo == Tipo::kNfce && lido_.documento.raiz().filhos("NFe").size() > 1)
        return recusas.juntar("NFe[2]", "", "há mais de um documento: trate um de cada vez"),
               Passo::kTraducao;
    if (!lido_.doCaixa) {
        const No principal = lido_.principal();
        if (principal.espaco() != kEspacoNfe)
            return recusas.juntar(principal.nome(), principal.espaco(),
                                  "não é do espaço de nomes " + std::string(kEspacoNfe)),
                   Passo::kTraducao;
        // What stands around an NFe, an answer for instance, is none of the message.
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
    if (passo == Passo::kFeito)
        passo = julgar(mensagem, lido_.doCaixa || !lido_.assinado(), recusas);
    if (passo == Passo::kFeito) mensagem_ = std::move(mensagem);
    return passo;
}

// The digest is over infNFe alone: infNFeSupl, which carries it offline, comes in between.
Passo Emissao::assinarNfce(Documento &mensagem, const Certificado &certificado, Recusas &recusas) {
    for (No antigo : mensagem.raiz().filhos("infNFeSupl"))
        antigo.remover();
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
        // What the till's document was signed with does not hold for the translated one.
        if (!lido_.doCaixa && lido_.assinado())
            return recusas.juntar("Signature", "", "o documento já está assinado"),
                   Passo::kAssinatura;
        // Somebody else's message: what is wrong in it would be ours once signed.
        if (!lido_.doCaixa && !conferirParaAssinar(mensagem, config_, recusas))
            return Passo::kReprovado;
        const auto chave = certificado(recusas);
        if (!chave) return Passo::kCertificado;
        if (!conferirTitulares(mensagem, *assinado, *chave, agora, recusas))
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
