// SPDX-License-Identifier: MIT
// What the authority answered, and what is to be done about it: one table, by code.
#pragma once

#include "base/Recusa.h"
#include "config/Enderecos.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zel::envio {

// What an answer means for its document.
enum class Desfecho {
    kNenhum,        // no answer yet
    kAutorizado,    // 100, 150
    kCancelado,     // 101, 135, 136, 151, 155
    kInutilizado,   // 102
    kEmProcesso,    // 103, 105: to be asked for by the receipt number, or by the key
    kJaEsta,        // 204, 573...: it was done before; the consultation by its key tells
    kOutraChave,    // 539, 562: the number is there with the key that the answer names
    kJaInutilizado, // 206, 256, 563
    kJaCancelado,   // 218, 420
    kDenegado,      // 110, 205, 301, 302, 303: the number is used up
    kNaoConsta,     // 217, 494: the authority does not have it
    kEsperar,       // 108, 109, 999: down; the same again later
    kExcesso,       // 656: nothing about the same within the hour
    kTarde,         // 703, 704; 220, 501, 770 of a cancellation
    kCertificado,   // 203, 213, 280 to 286...: no second try before a person has looked
    kRecusado,      // every other: a person has to mend something
};

struct LinhaResposta {
    int cStat;
    Desfecho desfecho;
    std::string_view remedio; // what to do, in Portuguese, to a person in the shop
};

// The row of a code; one that the table does not have is a refusal.
const LinhaResposta &linhaDe(int cStat);
// "autorizado", "recusado"...
std::string_view nomeDe(Desfecho desfecho);

struct Resposta {
    // The document's own; the lot's where there is none within. 107 of a status: kNenhum.
    int cStat = 0;
    std::string xMotivo;
    Desfecho desfecho = Desfecho::kNenhum;
    bool doDocumento = false; // it says something of the document, and not of the request alone
    std::string chave;        // chNFe, or the other key that 539 and 562 name
    std::string protocolo;    // nProt
    std::string momento;      // dhRecbto, dhRegEvento
    std::string digest;       // digVal
    std::string recibo;       // nRec, of 103 and 105; 106 does not know it: the key is asked for
    int espera = 0;           // seconds, tMed of a status or a 103
    // The element that is kept by law and printed from: protNFe, retEvento or retInutNFe, bytes in
    // UTF-8 with its namespace declared. Empty when the answer has none, or one without a protocol:
    // what was refused is not kept.
    std::string elemento;
    // Of a consultation, of which chave, protocolo, momento and digest are protNFe's: whether an
    // authorized document was cancelled since, and that event's procEventoNFe.
    std::string evento;
};

// `corpo`: the element within nfeResultMsg. `id`: the key (or, of an inutilization, "ID..." of its
// infInut) that is asked about: an answer about another one is none. What a schema would complain
// of is taken all the same. None when it is no answer of that service.
std::optional<Resposta> lerResposta(Servico servico, std::string_view corpo, std::string_view id,
                                    Recusas &recusas);

// The key that an xMotivo names, "[chNFe:3526...]": empty when it names none that holds together.
std::string chaveCitada(std::string_view xMotivo);

// nfeProc, procEventoNFe or ProcInutNFe (so the schema spells it): the signed element as it was
// sent and the answer's, byte for byte. `mensagem`: NFe, envEvento or inutNFe. Empty when the two
// are not of one kind.
std::string guardadoDe(std::string_view mensagem, std::string_view elemento);

// An nfeProc taken apart again: the signed NFe, byte for byte, and what the authority answered.
struct NotaGuardada {
    std::string assinada;
    Resposta resposta;
};
// None when `guardado` is not of the document with the key `chave`, or its protocol is of other
// content (digVal).
std::optional<NotaGuardada> notaDe(std::string_view guardado, std::string_view chave);

} // namespace zel::envio
