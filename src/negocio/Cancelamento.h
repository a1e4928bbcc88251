// SPDX-License-Identifier: MIT
// Cancelling: the receipt in progress, or an issued document through its cancellation event, which
// is sent or, without connection, kept scrambled in files. The event's form is Requisicao's.
#pragma once

#include "emcurso/Persistencia.h"

#include <ctime>
#include <optional>
#include <string>
#include <string_view>

namespace zel {

// The document to cancel. Longer texts are cut.
struct DadosCancelamento {
    std::string_view numero;        // 9
    std::string_view serie;         // 4
    std::string_view chave;         // access key, 44
    std::string_view protocolo;     // of its authorization, 15; empty: not written
    std::string_view justificativa; // 99
};

// With five empty texts cancels the receipt in progress (states 0 to 4, then 6) or, in state 5,
// sends the event of the last closed document by its stored values. Otherwise sends the event of
// the document that the texts name, in any state, which stays; an empty justification becomes
// "Cancelamento de NFCe". 1 the receipt in progress is cancelled; 2 the event is written;
// ZEL_CONFIG_ILEGIVEL; ZEL_ARGUMENTO_INVALIDO a null text; ZEL_RECUSADO state 6 and five empty
// texts, or a clock whose year has not four digits; ZEL_ARQUIVO_INDISPONIVEL.
int fnCFCancelar_ZEL_Felbor(ST_PersitenceXML_ZEL &documento, std::string_view numero,
                            std::string_view serie, std::string_view chave,
                            std::string_view protocolo, std::string_view justificativa);

// Writes the event, without protocol, scrambled as CNPJ_SERIENUMERO.ctgCanc, all three from the
// access key, into each of the directories ("dirA/|dirB/", at most three of 300 characters, each
// with its own "/" at the end). With four empty texts that of the last document; an empty
// justification becomes "Cancelamento de NFCe em Contingencia Offline". `diretorios` receives the
// path last tried, also of a write that failed; none stands for a null argument. Neither state nor
// documentosEnvio.xml change. ZEL_OK or ZEL_ARQUIVO_INDISPONIVEL, the result of the last file,
// whatever became of those before it; 0 no directory; ZEL_CONFIG_ILEGIVEL; ZEL_ARGUMENTO_INVALIDO a
// null argument; ZEL_RECUSADO a key that has not 44 digits, or such a clock.
int fnCFCancelarOffline_ZEL_Felbor(std::string_view numero, std::string_view serie,
                                   std::string_view chave, std::string_view justificativa,
                                   std::optional<std::string> &diretorios);

// Appends to `texto` the event of a cancellation at `momento`, which it puts five seconds later
// when "CONFIGURACAO\AjustarDhCanc" is 1. ZEL_OK; ZEL_RECUSADO its year has not four digits.
int fnCriarLayoutXmlCanc_ZEL_Felbor(const DadosCancelamento &cancelado, std::time_t momento,
                                    std::string &texto);

} // namespace zel
