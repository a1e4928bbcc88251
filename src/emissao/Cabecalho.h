// SPDX-License-Identifier: MIT
// The head of an NFC-e: its number and numeric code, the 44-digit access key, and the groups `ide`
// and `emit`, all from the configuration. Changes nothing: the numbering it decided on is handed
// back for the writer of the document to commit.
// Elements: Manual de Orientação do Contribuinte 6.0 (September 2015), Anexo I, groups B (ide) and
// C (emit), NF-e layout 3.10; the access key is comum/ChaveAcesso.h.
#pragma once

#include "config/Registro.h"

#include <ctime>
#include <string>
#include <vector>

namespace zel {

// Kinds of document; any other number builds nothing.
enum Tipo {
    kNormal = 1,
    kRecusado = 2,
    kSubstituicao = 3,   // replaces a document; parametrosEnvio.xml goes with it
    kContingencia = 4,   // scrambled files in the directories given
    kMesmaNumeracao = 5, // neither number nor numeric code advance
};

struct Cabecalho {
    std::string chave;                // 44 digits
    std::string texto;                // from the start tag of NFe to the end of `emit`
    std::vector<Alteracao> numeracao; // number and numeric code as advanced
};

// The offset that documents and events carry, "-03:00": the configured hours of the server's time
// zone when TIMEZONESERVIDOR\Utilizar is 1 (below zero counts as zero), otherwise the system's
// whole hours west of UTC, daylight saving taken into account, "-00:00" east of UTC: documents
// write it with a leading "-" whatever it is.
std::string fusoHorario(const std::tm &local);

// Builds the head of a document issued at `momento`. ZEL_OK; 0 an unknown kind; ZEL_RECUSADO kind
// 2, a number that would pass 999999999, a year without four digits, or configuration values that
// give no key of 44 digits.
int cabecalhoZEL(int tipo, std::time_t momento, Cabecalho &cabecalho);

} // namespace zel
