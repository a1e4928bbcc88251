// SPDX-License-Identifier: MIT
#include "fluxo/Linha.h"

#include "fluxo/Relogio.h"

#include <algorithm>
#include <charconv>
#include <iterator>

namespace zel::envio {

namespace {

// Seconds. The first ones are short: most lines are back at once.
constexpr Momento kPausas[] = {5, 10, 20, 30, 60, 120};

// A failure tells of the line for so long.
constexpr Momento kFalhaVale = 10 * kMinuto;

// After so long a silence a line is asked for, though nothing waits: well within what authorities
// allow of status questions, one in three minutes.
constexpr Momento kSilencio = kHora, kSilencioCaida = 5 * kMinuto;

// How many turns may be saved up while nobody sends.
constexpr Momento kSalto = 5;

} // namespace

Momento pausaDepoisDe(int falhas) {
    const auto indice = static_cast<std::size_t>(std::max(falhas, 1) - 1);
    return kPausas[std::min(indice, std::size(kPausas) - 1)] * kSegundo;
}

std::string falhaEscrita(Momento quando, const std::string &motivo) {
    return std::to_string(quando) + ' ' + motivo;
}

Linha::Situacao falhaLida(const std::string &texto, Momento agora) {
    Momento quando = 0;
    const auto [fim, erro] = std::from_chars(texto.data(), texto.data() + texto.size(), quando);
    if (erro != std::errc() || quando > agora || agora - quando > kFalhaVale) return {};
    const auto lido = static_cast<std::size_t>(fim - texto.data());
    return {1, quando, quando, texto.substr(std::min(lido + 1, texto.size()))};
}

Linha::Situacao Linha::situacao(const std::string &qual) const {
    const std::lock_guard trava(porta_);
    const auto esta = situacoes_.find(qual);
    return esta == situacoes_.end() ? Situacao{} : esta->second;
}

void Linha::respondeu(const std::string &qual, Momento agora) {
    const std::lock_guard trava(porta_);
    situacoes_.erase(qual);
    ouvidas_[qual] = agora;
}

void Linha::falhou(const std::string &qual, Momento agora, const std::string &motivo) {
    const std::lock_guard trava(porta_);
    Situacao &esta = situacoes_[qual];
    ouvidas_[qual] = agora;
    if (esta.falhas == 0) esta.desde = agora;
    // Several tills fail on the same outage: within one pause that counts once.
    if (agora < esta.proxima && esta.proxima - agora <= pausaDepoisDe(esta.falhas)) return;
    esta.proxima = agora + pausaDepoisDe(++esta.falhas);
    esta.motivo = motivo;
}

void Linha::naoPerguntar(const std::string &qual, Momento quando) {
    const std::lock_guard trava(porta_);
    semPerguntas_[qual] = quando;
}

bool Linha::podePerguntar(const std::string &qual, Momento agora) const {
    const std::lock_guard trava(porta_);
    const auto ate = semPerguntas_.find(qual);
    return ate == semPerguntas_.end() || !cedoDemais(ate->second, agora);
}

bool Linha::calada(const std::string &qual, Momento agora) {
    const std::lock_guard trava(porta_);
    const Momento silencio = situacoes_.contains(qual) ? kSilencioCaida : kSilencio;
    const auto ouvida = ouvidas_.find(qual);
    if (ouvida != ouvidas_.end() && agora >= ouvida->second && agora - ouvida->second < silencio)
        return false;
    ouvidas_[qual] = agora;
    return true;
}

Momento Linha::vez(Momento agora) {
    if (porMinuto_ <= 0) return 0;
    const std::lock_guard trava(porta_);
    const Momento passo = kMinuto / porMinuto_;
    // A clock that was set back would make everybody wait for it.
    if (livre_ > agora + kMinuto) livre_ = agora;
    livre_ = std::max(livre_, agora - kSalto * passo);
    if (livre_ > agora) return livre_;
    livre_ += passo;
    return 0;
}

} // namespace zel::envio
