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
    Momento quanto;
    std::string_view depois; // what the authority makes of what comes later
};

// Sources: Manual de Orientação do Contribuinte 7.0, Anexo I, on 704 (five minutes, and five of
// tolerance of clocks); Ajuste SINIEF 19/2016, on contingency (the end of the first business day
// that follows; many states say 24 hours) and cancellation (30 minutes in most states, 501); Nota
// Técnica 2018.004, on 110112 (168 hours).
constexpr Prazo kPrazos[] = {
    {Qual::kOnline, 10 * kMinuto, "a SEFAZ recusa (704): emita de novo"},
    {Qual::kOffline, 24 * kHora,
     "vai assim mesmo, e é autorizada fora do prazo (150) ou recusada "
     "(704), como o estado tem"},
    {Qual::kCancelamento, 30 * kMinuto, "a maioria dos estados recusa (501)"},
    {Qual::kSubstituicao, 168 * kHora, "a SEFAZ recusa (501)"},
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

std::optional<Momento> prazoDe(Fila &fila, const Ficha &ficha) {
    const Prazo *prazo = prazoDo(ficha);
    if (prazo == nullptr || acabou(ficha.estado)) return {};
    std::string desde = ficha.dhEmi;
    if (ficha.tipo == Tipo::kCancelamento) {
        const auto nota = fila.porChave(ficha.chave, Tipo::kNfce);
        desde = nota ? nota->momentoResposta : "";
    }
    const auto segundos = segundosDoMomento(desde);
    if (!segundos) return {};
    return *segundos * kSegundo + prazo->quanto;
}

std::string prazoDito(Fila &fila, const Ficha &ficha, Momento agora) {
    const auto prazo = prazoDe(fila, ficha);
    if (!prazo) return {};
    const std::string quando = momentoEscrito(*prazo, ficha.dhEmi);
    return agora <= *prazo
               ? "prazo: " + quando
               : "o prazo acabou em " + quando + ": " + std::string(prazoDo(ficha)->depois);
}

} // namespace zel::envio
