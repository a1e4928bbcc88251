// SPDX-License-Identifier: MIT
// What follows from a kind of document and an answer: where it goes, whether that is its end,
// whether it is kept; and what is known of documents that take each other's place.
#pragma once

#include "config/Configuracao.h"
#include "config/Enderecos.h"
#include "fila/Fila.h"
#include "fluxo/Relogio.h"

#include <optional>
#include <string>
#include <string_view>

namespace zel::envio {

// While this annotation of the queue says something, nothing is signed or sent.
inline constexpr std::string_view kAnotacaoParada = "parada";

// What is said of a document that waits for its end.
std::string textoDaParada(const std::string &motivo);
// Ends it: what waited for that is due at once.
void continuar(Fila &fila);

// Says which document may have taken the place of one, where nothing is certain.
std::string anotacaoDaDuvida(const std::string &chave);
// Asks for what a person has to look at: by now, and of what waits, after so many hours.
void procurarParaAlguem(Procura &procura, int horas, Momento agora);

// What a person does of one that its till withdrew and did not issue again; empty of any other.
std::string remedioDaRetirada(const Ficha &ficha);

// What a person is asked about it; none when there is no doubt, or it was answered since.
std::optional<std::string> duvidaDe(Fila &fila, const Ficha &ficha);

// Directories, with their "/".
std::string filaDe(const Configuracao &config);
std::string guardadosDe(const Configuracao &config);

Servico servicoDe(Tipo tipo);
// State's code and environment of a row: "43/2".
std::string linhaDaFicha(const Configuracao &config, const Ficha &ficha);

// Whether an answer ends the document's way as it was meant to end: what is left is a person's.
bool encerra(Tipo tipo, Desfecho desfecho);
// Whether the law wants the document kept with its answer.
bool guardaSe(const Ficha &ficha);

// Whether it went out before without an answer: what the authority does not have yet may arrive.
bool jaSaiu(Fila &fila, const Ficha &ficha);
// Whether nothing of it was ever sent from here.
bool nuncaSaiu(Fila &fila, const Ficha &ficha);
// Whether an NFC-e was found after its time, as on a till that somebody else sent for before, and
// was never asked for: it may be there.
bool podeJaEstar(Fila &fila, const Ficha &ficha, const ConfigFila &config);
// The document that was issued in the place of this one: it says so, or has its number offline.
std::optional<Ficha> substituta(Fila &fila, const Ficha &ficha);
// Whether it is authorized by now, and all is done.
bool autorizada(Fila &fila, const Ficha &ficha);

// A till's request to cancel `velha` because `nova` was issued for it; the same two give the same
// bytes.
Achado pedidoDeSubstituicao(const Ficha &velha, const Ficha &nova);

// Asks for that, once, when both are authorized by now; a replaced one that is asked for is due.
void cancelarSubstituida(Fila &fila, const Ficha &ficha, Momento agora, Recusas &recusas);
// The same when it was learned late what a document replaces, of one that is authorized by then.
void seguirSubstituicao(Fila &fila, std::int64_t id, Momento agora, Recusas &recusas);

// The answer to a consultation of a document, as the one to the event that cancelled it.
Resposta eventoDe(const Resposta &consulta);

} // namespace zel::envio
