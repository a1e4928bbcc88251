// SPDX-License-Identifier: MIT
#include "fluxo/Prazos.h"

#include "base/Texto.h"
#include "fluxo/Relogio.h"

#include <algorithm>
#include <iterator>

namespace zel::envio {

namespace {

// What is limited. A cancellation's time runs from the authorization of its note, a note's from
// its dhEmi.
enum class Qual { kOnline, kOffline, kCancelamento, kSubstituicao };

struct Prazo {
    Qual qual;
    Momento unidade;
    int quanto;
    std::string_view depois; // what the authority makes of what comes later
    int ConfigFila::*dito;   // where states differ: instead of `quanto`
};

// Sources: Manual de Orientação do Contribuinte 7.0, Anexo I, on 704 (five minutes, and five of
// tolerance of clocks); Ajuste SINIEF 19/2016, on contingency (the end of the first business day
// that follows; many states say 24 hours) and cancellation (30 minutes in most states, 501); Nota
// Técnica 2018.004, on 110112 (168 hours).
constexpr Prazo kPrazos[] = {
    {Qual::kOnline, kMinuto, 10, "a SEFAZ recusa (704): emita de novo", nullptr},
    {Qual::kOffline, kHora, 0,
     "vai assim mesmo, e é autorizada fora do prazo (150) ou recusada "
     "(704), como o estado tem",
     &ConfigFila::contingenciaHoras},
    {Qual::kCancelamento, kMinuto, 0, "a maioria dos estados recusa (501)",
     &ConfigFila::cancelamentoMinutos},
    {Qual::kSubstituicao, kHora, 168, "a SEFAZ recusa (501)", nullptr},
};

const Prazo *prazoDo(const Ficha &ficha) {
    if (ficha.tipo != Tipo::kNfce && ficha.tipo != Tipo::kCancelamento) return nullptr;
    const Qual qual = ficha.tipo == Tipo::kNfce
                          ? (ficha.tpEmis == 9 ? Qual::kOffline : Qual::kOnline)
                          : (ficha.substitui.empty() ? Qual::kCancelamento : Qual::kSubstituicao);
    return std::find_if(std::begin(kPrazos), std::end(kPrazos),
                        [qual](const Prazo &prazo) { return prazo.qual == qual; });
}

} // namespace

std::optional<Momento> prazoDe(Fila &fila, const Ficha &ficha, const ConfigFila &config) {
    const Prazo *prazo = prazoDo(ficha);
    if (prazo == nullptr || acabou(ficha.estado)) return {};
    std::string desde = ficha.dhEmi;
    if (ficha.tipo == Tipo::kCancelamento) {
        const auto nota = fila.porChave(ficha.chave, Tipo::kNfce);
        desde = nota ? nota->momentoResposta : "";
    }
    const auto segundos = segundosDoMomento(desde);
    if (!segundos) return {};
    const int quanto = prazo->dito == nullptr ? prazo->quanto : config.*prazo->dito;
    return *segundos * kSegundo + quanto * prazo->unidade;
}

std::string prazoDito(Fila &fila, const Ficha &ficha, const ConfigFila &config, Momento agora) {
    const auto prazo = prazoDe(fila, ficha, config);
    if (!prazo) return {};
    const std::string quando = momentoEscrito(*prazo, ficha.dhEmi);
    return agora <= *prazo
               ? "prazo: " + quando
               : "o prazo acabou em " + quando + ": " + std::string(prazoDo(ficha)->depois);
}

} // namespace zel::envio
