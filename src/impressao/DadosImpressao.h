// SPDX-License-Identifier: MIT
// What printing learns from a document or from the point of sale and keeps in memory, for the
// process, never in the configuration file, which has its own TipoAmbiente.
#pragma once

#include "texto/Campo.h"
#include "texto/Numero.h"

namespace zel {

// Values of the environment as a number.
inline constexpr int kProducao = 1;
inline constexpr int kHomologacao = 2;
inline constexpr int kLinkPronto = 3;

struct DadosImpressao {
    // Of the document read last: "1" production, "2" homologation, "3" its return carried a
    // ready-made consultation link. Set by the reader of documents.
    Campo<1> TipoAmbiente;
    // The last payment is printed as the customer gave it, change included. Set by
    // fnAnalisarParametrosImpressao.
    bool IndicadorTroco = false;

    int ambiente() const { return static_cast<int>(lerInteiro(TipoAmbiente)); }
};

// Known to the exported functions alone, which hand it to printing.
extern DadosImpressao G_stDadosImpressao;

} // namespace zel
