// SPDX-License-Identifier: MIT
#include "fluxo/Oficina.h"

#include "base/Xml.h"
#include "documento/Leitura.h"

#include <algorithm>

namespace zel::envio {

namespace {

// What a message is known by: where its key stands, and how much of the text is in front of it.
struct LugarDaChave {
    std::string_view elemento, filho; // empty: the Id
    std::size_t frente;
};
constexpr LugarDaChave kChaves[] = {
    {"infNFe", {}, 3}, {"infEvento", "chNFe", 0}, {"infInut", {}, 0}, {"consSitNFe", "chNFe", 0}};

std::string chaveDe(const Documento &mensagem) {
    for (const auto &[elemento, filho, frente] : kChaves)
        if (const No no = mensagem.raiz().procurar(elemento)) {
            const std::string valor = filho.empty() ? no.atributo("Id") : no.texto(filho);
            return valor.substr(std::min(frente, valor.size()));
        }
    return {};
}

} // namespace

Oficina::Oficina(const Configuracao &config, std::size_t lugares) : config_(config) {
    prepararXml();
    bancas_.resize(std::max<std::size_t>(lugares, 1));
}

void Oficina::renovar() {
    const std::lock_guard trava(porta_);
    ++geracao_;
}

Oficina::Lugar::Lugar(Oficina &oficina) : oficina_(oficina) {
    std::unique_lock trava(oficina_.porta_);
    oficina_.livre_.wait(trava, [&] { return !oficina_.bancas_.empty(); });
    banca_ = std::move(oficina_.bancas_.back());
    oficina_.bancas_.pop_back();
    if (banca_.geracao == oficina_.geracao_) return;
    if (!banca_.emissao) banca_.emissao = std::make_unique<Emissao>();
    banca_.emissao->configurar(oficina_.config_);
    banca_.geracao = oficina_.geracao_;
}

Oficina::Lugar::~Lugar() {
    {
        const std::lock_guard trava(oficina_.porta_);
        oficina_.bancas_.push_back(std::move(banca_));
    }
    oficina_.livre_.notify_one();
}

Feito Oficina::fazer(const std::string &original, const ContextoPedido &contexto,
                     const ContextoNota &nota, Momento agora) {
    Feito feito;
    auto lido = lerArquivoDoCaixa(original, feito.recusas);
    if (!lido) {
        feito.passo = Passo::kTraducao;
        return feito;
    }
    const bool pronta = !lido->doCaixa && lido->assinado();
    Lugar lugar(*this);
    lugar->ler(std::move(*lido));
    lugar->completar(contexto, nota);
    if (!pronta) feito.passo = lugar->assinar(agora / 1000, feito.recusas);
    if (feito.passo != Passo::kFeito) return feito;
    feito.mensagem = lugar->mensagem().texto();
    feito.chave = chaveDe(lugar->mensagem());
    return feito;
}

std::shared_ptr<const Certificado> Oficina::certificado(Recusas &recusas) {
    Lugar lugar(*this);
    return lugar->certificado(recusas);
}

} // namespace zel::envio
