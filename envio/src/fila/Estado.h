// SPDX-License-Identifier: MIT
// The states of a document on its way, and which follows which: one table. A change that it does
// not have is a fault of this program, and is not made.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace zel::envio {

enum class Estado {
    kAchado,     // its bytes are in the queue as the till wrote them
    kTraduzido,  // the message of layout 4.00, unsigned
    kAssinado,   // the signed bytes: every sending is these
    kEnviado,    // going out, or gone: until an answer is known it may be there
    kPerguntar,  // no answer came: asked for by its key, never sold a second time
    kRespondido, // the authority's answer is in the queue
    kEntregue,   // kept as the law asks, and the return is written for the till: the end
    // The translation or the authority refuses it, and a person has to look: the end, unless it was
    // never signed, or its certificate was exchanged since, and is sent again.
    kRecusado,
    // Its till took it back before a byte went out, or another replaces it: the end, unless the
    // till sends it again after all, or the authority turns out to have it.
    kRetirado,
};

struct NomeEstado {
    Estado estado;
    std::string_view nome;   // as files and --json have it
    std::string_view pessoa; // as the page says it
};

inline constexpr std::array<NomeEstado, 9> kEstados{{
    {Estado::kAchado, "achado", "esperando a sua vez"},
    {Estado::kTraduzido, "traduzido", "esperando a assinatura"},
    {Estado::kAssinado, "assinado", "esperando o envio"},
    {Estado::kEnviado, "enviado", "enviado, sem resposta ainda"},
    {Estado::kPerguntar, "perguntar", "sem resposta: perguntando à SEFAZ"},
    {Estado::kRespondido, "respondido", "respondido, sendo guardado"},
    {Estado::kEntregue, "entregue", "resolvido"},
    {Estado::kRecusado, "recusado", "recusado: precisa de alguém"},
    {Estado::kRetirado, "retirado", "retirado pelo caixa, não enviado"},
}};

struct Passagem {
    Estado de, para;
};

inline constexpr std::array<Passagem, 24> kPassagens{{
    {Estado::kAchado, Estado::kTraduzido},
    {Estado::kAchado, Estado::kRecusado},
    {Estado::kAchado, Estado::kRetirado},
    {Estado::kAchado, Estado::kRespondido}, // asked before anything was signed: it is done already
    {Estado::kTraduzido, Estado::kAssinado},
    {Estado::kTraduzido, Estado::kRecusado},
    {Estado::kTraduzido, Estado::kRetirado},
    {Estado::kAssinado, Estado::kEnviado},
    {Estado::kAssinado, Estado::kRecusado},
    {Estado::kAssinado, Estado::kRetirado},
    {Estado::kAssinado, Estado::kPerguntar}, // went out before, and another has its place since
    {Estado::kEnviado, Estado::kAssinado},   // certainly nothing went out
    {Estado::kEnviado, Estado::kPerguntar},
    {Estado::kEnviado, Estado::kRespondido},
    {Estado::kPerguntar, Estado::kAssinado}, // asked, and the authority does not have it
    {Estado::kPerguntar, Estado::kRespondido},
    {Estado::kPerguntar, Estado::kRecusado}, // found late, never sent, and no question is answered
    {Estado::kPerguntar, Estado::kRetirado}, // asked, unknown, and another replaces it
    {Estado::kRespondido, Estado::kEntregue},
    {Estado::kRespondido, Estado::kRecusado},
    // Never signed, and its till sends it again; or its signature alone was refused.
    {Estado::kRecusado, Estado::kAchado},
    {Estado::kRetirado, Estado::kAchado}, // sent again by its till: unsigned, or the signed bytes
    {Estado::kRetirado, Estado::kAssinado},
    {Estado::kRetirado, Estado::kPerguntar}, // the authority names it
}};

constexpr bool passa(Estado de, Estado para) {
    return std::any_of(kPassagens.begin(), kPassagens.end(),
                       [&](const Passagem &p) { return p.de == de && p.para == para; });
}

constexpr std::string_view nomeDe(Estado estado) {
    return kEstados[static_cast<std::size_t>(estado)].nome;
}

constexpr bool acabou(Estado estado) {
    return estado == Estado::kEntregue || estado == Estado::kRecusado ||
           estado == Estado::kRetirado;
}

} // namespace zel::envio
