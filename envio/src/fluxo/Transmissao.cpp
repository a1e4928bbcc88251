// SPDX-License-Identifier: MIT
#include "fluxo/Transmissao.h"

#include "fluxo/Destinos.h"

#include <algorithm>
#include <thread>

namespace zel::envio {

namespace {

using Cronometro = std::chrono::steady_clock;

// So often it is looked whether the service has gone on with it.
constexpr Milissegundos kOlhada{15};

bool naoSaiu(Estado estado) {
    return estado == Estado::kAchado || estado == Estado::kTraduzido || estado == Estado::kAssinado;
}

// Whether more waiting is of use: a document that is to be tried later, for a reason, is not sent
// while somebody stands there.
bool vaiDemorar(const Ficha &ficha, Momento agora) {
    return cedoDemais(ficha.proximo, agora) && naoSaiu(ficha.estado) && !ficha.motivo.empty();
}

Espera fimDe(const Ficha &ficha) {
    if (ficha.estado == Estado::kRetirado) return Espera::kNaoEnviado;
    // Of one that was cancelled since no receipt is printed.
    if (ficha.tipo == Tipo::kNfce && ficha.desfecho != Desfecho::kAutorizado)
        return Espera::kRecusado;
    return encerra(ficha.tipo, ficha.desfecho) ||
                   (ficha.tipo == Tipo::kConsulta && ficha.estado == Estado::kEntregue)
               ? Espera::kFeito
               : Espera::kRecusado;
}

Transmitido resultado(Fila &fila, const Ficha &ficha, Espera espera) {
    return {espera, ficha, fila.mensagem(ficha.id), fila.elemento(ficha.id)};
}

// In one piece: what is said late of one that is delivered already has its consequence.
std::optional<std::int64_t> acharUma(const Meios &meios, Achado achado, Recusas &recusas) {
    const Momento agora = meios.relogio.agora();
    // A question is asked each time.
    if (achado.tipo == Tipo::kConsulta) achado.vez = std::to_string(agora);
    Fila::Transacao transacao(meios.fila);
    const auto id = meios.fila.achar(achado, agora, recusas);
    if (id && !achado.substitui.empty()) seguirSubstituicao(meios.fila, *id, agora, recusas);
    return id && transacao.confirmar(recusas) ? id : std::nullopt;
}

} // namespace

Transmitido transmitir(const Meios &meios, const Achado &achado, Milissegundos prazo,
                       Recusas &recusas) {
    const auto fim = Cronometro::now() + prazo;
    const auto resta = [&] {
        return std::chrono::duration_cast<Milissegundos>(fim - Cronometro::now());
    };
    const auto id = acharUma(meios, achado, recusas);
    if (!id) return {};
    Fluxo fluxo(meios);
    fluxo.comAlguemEsperando(fim);
    if (const auto motivo = fluxo.reenviar(*id)) {
        auto retirada = meios.fila.ficha(*id);
        if (!retirada) return {};
        retirada->motivo = *motivo;
        return resultado(meios.fila, *retirada, Espera::kRecusado);
    }
    const Milissegundos maximo = std::chrono::seconds(meios.config.rede.tempoMaximo);
    std::optional<Ficha> ficha;
    // Nobody waits for the authority, but a receipt is printed from the signed bytes.
    const bool semEspera = prazo <= Milissegundos::zero();
    if (semEspera) fluxo.assinar(*id);
    for (;;) {
        ficha = meios.fila.ficha(*id);
        if (!ficha) return {};
        if (acabou(ficha->estado) || ficha->estado == Estado::kRespondido)
            if (acabou(ficha->estado) || cedoDemais(ficha->proximo, meios.relogio.agora()))
                return resultado(meios.fila, *ficha, fimDe(*ficha));
        const Momento agora = meios.relogio.agora();
        if (resta() <= Milissegundos::zero() || vaiDemorar(*ficha, agora)) break;
        if (!cedoDemais(ficha->proximo, agora))
            fluxo.tratar(*id, std::min(resta(), maximo));
        else
            std::this_thread::sleep_for(std::min(resta(), kOlhada));
    }
    const bool fica = ficha->tipo != Tipo::kNfce || ficha->tpEmis != 1 || semEspera;
    const bool nada = fica ? naoSaiu(ficha->estado)
                           : fluxo.retirar(*id, "o caixa não esperou mais: " + ficha->motivo);
    ficha = meios.fila.ficha(*id);
    if (!ficha) return {};
    // It may have been answered in this very moment.
    if (acabou(ficha->estado) && ficha->estado != Estado::kRetirado)
        return resultado(meios.fila, *ficha, fimDe(*ficha));
    return resultado(meios.fila, *ficha, nada ? Espera::kNaoEnviado : Espera::kSemResposta);
}

} // namespace zel::envio
