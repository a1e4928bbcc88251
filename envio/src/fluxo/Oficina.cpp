// SPDX-License-Identifier: MIT
#include "fluxo/Oficina.h"

#include "assinatura/Credenciais.h"
#include "base/Xml.h"
#include "documento/Leitura.h"

#include <algorithm>
#include <sys/stat.h>
#include <utility>

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

// Files that a certificate is read from, each by what changes when it is written or replaced.
std::string marcaDe(const ConfigCertificado &config) {
    if (!config.modulo.empty()) return {};
    Recusas ignoradas;
    std::string marca;
    for (const auto &arquivo : {arquivoDoCertificado(config, ignoradas).value_or(""),
                                config.arquivoSenha, config.cadeia}) {
        struct stat dados {};
        if (!arquivo.empty() && stat(arquivo.c_str(), &dados) == 0)
            for (const auto parte :
                 {std::int64_t(dados.st_ino), std::int64_t(dados.st_size),
                  std::int64_t(dados.st_mtim.tv_sec), std::int64_t(dados.st_mtim.tv_nsec)})
                marca += std::to_string(parte) + ' ';
        marca += '|';
    }
    return marca;
}

Culpa culpaDe(Passo passo, const Certificado *certificado, Momento agora) {
    switch (passo) {
    case Passo::kCertificado: {
        Recusas ignoradas;
        if (certificado == nullptr) return Culpa::kProcesso;
        return certificado->serve(agora / 1000, ignoradas) ? Culpa::kTitular : Culpa::kCertificado;
    }
    case Passo::kConfiguracao:
    case Passo::kAssinatura:
        return Culpa::kProcesso;
    default:
        return Culpa::kDocumento;
    }
}

} // namespace

Oficina::Oficina(const Configuracao &config, std::size_t lugares)
    : config_(config), marca_(marcaDe(config.certificado)) {
    prepararXml();
    bancas_.resize(std::max<std::size_t>(lugares, 1));
}

int Oficina::geracao() const {
    const std::lock_guard trava(porta_);
    return geracao_;
}

void Oficina::renovar(int vista) {
    const std::lock_guard trava(porta_);
    if (vista == geracao_) ++geracao_;
}

void Oficina::acompanhar(Recusas &recusas) {
    const std::string marca = marcaDe(config_.certificado);
    const std::lock_guard trava(porta_);
    if (std::exchange(marca_, marca) == marca) return;
    // One that is being written still is looked at again when the rest of it is there.
    if (Certificado::abrir(config_.certificado, recusas)) ++geracao_;
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
    feito.culpa = culpaDe(feito.passo, lugar->aberto(), agora);
    if (feito.passo != Passo::kFeito) return feito;
    feito.mensagem = lugar->mensagem().texto();
    feito.chave = chaveDe(lugar->mensagem());
    return feito;
}

std::shared_ptr<const Certificado> Oficina::certificado(Recusas &recusas) {
    int qual = 0;
    {
        const std::lock_guard trava(porta_);
        qual = geracao_;
        if (falhou_ == qual) return recusas.juntar(falha_), nullptr;
    }
    Recusas minhas;
    std::shared_ptr<const Certificado> aberto;
    {
        Lugar lugar(*this);
        aberto = lugar->certificado(minhas);
    }
    if (aberto) return aberto;
    const std::lock_guard trava(porta_);
    falhou_ = qual;
    falha_ = minhas;
    return recusas.juntar(minhas), nullptr;
}

} // namespace zel::envio
