// SPDX-License-Identifier: MIT
#include "fluxo/Servico.h"

#include "fluxo/Achados.h"
#include "fluxo/Destinos.h"

#include <algorithm>
#include <exception>
#include <optional>
#include <utility>

namespace zel::envio {

namespace {

// The net beneath the notices of the file system: so often a till is looked at anyway.
constexpr Momento kRonda = 30 * kSegundo;
// So many documents between two looks at what the till wrote: a new sale does not wait for a whole
// backlog.
constexpr std::size_t kPorVez = 4;

// What is due but cannot be changed (a full disk) is not tried without a pause.
constexpr Momento kEmVao = kSegundo;

} // namespace

struct ServicoDeEnvio::Trabalhador {
    Trabalhador(const ConfigCaixa &config, std::unique_ptr<Fila> aberta)
        : caixa(config), vigia(caixa.pastas()), fila(std::move(aberta)) {}

    Caixa caixa;
    Vigia vigia;
    std::unique_ptr<Fila> fila;
    std::unique_ptr<Transporte> rede{};
    int geracao = 0;     // of the certificate that `rede` has
    bool parada = false; // as the queue was last seen
    std::thread linha{};
};

ServicoDeEnvio::ServicoDeEnvio(const Configuracao &config, Oficina &oficina, Linha &linha,
                               const Relogio &relogio, FazTransporte transporte, Ouvinte &ouvinte)
    : config_(config), oficina_(oficina), linha_(linha), relogio_(relogio),
      transporte_(std::move(transporte)), ouvinte_(ouvinte) {}

ServicoDeEnvio::~ServicoDeEnvio() {
    parar();
}

bool ServicoDeEnvio::comecar(Recusas &recusas) {
    if (config_.caixas.empty())
        return recusas.juntar("[[caixas]]", "", "nenhum caixa: diga o diretorio de cada um");
    for (const auto &caixa : config_.caixas) {
        auto fila = Fila::abrir(filaDe(config_), recusas);
        if (!fila) return false;
        auto &este =
            *trabalhadores_.emplace_back(std::make_unique<Trabalhador>(caixa, std::move(fila)));
        este.geracao = oficina_.geracao();
        este.rede = transporte_();
    }
    for (auto &este : trabalhadores_)
        este->linha = std::thread([this, &este = *este] { trabalhar(este); });
    return true;
}

void ServicoDeEnvio::parar() {
    parar_ = true;
    for (auto &este : trabalhadores_)
        este->vigia.acordar();
    for (auto &este : trabalhadores_)
        if (este->linha.joinable()) este->linha.join();
    trabalhadores_.clear();
}

bool ServicoDeEnvio::renovarRede(Trabalhador &este, Recusas &avisos) {
    const bool parada = !este.fila->anotado(kAnotacaoParada).empty();
    if (std::exchange(este.parada, parada) && !parada) oficina_.renovar(este.geracao);
    oficina_.acompanhar(avisos);
    const int geracao = oficina_.geracao();
    if (std::exchange(este.geracao, geracao) == geracao) return false;
    este.rede = transporte_();
    return true;
}

void ServicoDeEnvio::tratar(Trabalhador &este, Fluxo &fluxo, Recusas &avisos, Momento &espera) {
    const std::string &nome = este.caixa.config().diretorio;
    const Milissegundos limite = std::chrono::seconds(config_.rede.tempoMaximo);
    este.caixa.varrer(*este.fila, relogio_.agora(), avisos);
    int mudancas = 0;
    for (std::size_t i = 0; i < kPorVez && !parar_; ++i)
        mudancas += fluxo.tratarProntas(nome, limite, 1);
    if (mudancas == 0 && !este.parada) fluxo.sondar(nome, limite);
    avisos.juntar(fluxo.queixas());
    if (const auto proximo = este.fila->proximo(nome, relogio_.agora()))
        espera = std::clamp(*proximo - relogio_.agora(), mudancas > 0 ? 0 : kEmVao, kRonda);
}

void ServicoDeEnvio::trabalhar(Trabalhador &este) {
    const auto fazer = [&] {
        return Fluxo({config_, oficina_, linha_, relogio_, *este.fila, *este.rede, &ouvinte_});
    };
    std::optional<Fluxo> fluxo(fazer());
    std::string dito;
    while (!parar_) {
        Momento espera = kRonda;
        try {
            Recusas avisos;
            if (renovarRede(este, avisos)) fluxo.emplace(fazer());
            tratar(este, *fluxo, avisos, espera);
            const std::string texto = avisos.texto();
            if (texto != dito && !texto.empty()) ouvinte_.disse(texto);
            dito = texto;
        } catch (const std::exception &) {
            ouvinte_.disse(este.caixa.config().diretorio + ": falta memória");
        }
        if (!parar_) este.vigia.esperar(Milissegundos(espera));
    }
}

} // namespace zel::envio
