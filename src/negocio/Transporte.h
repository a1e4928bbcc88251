// SPDX-License-Identifier: MIT
// The carrier of a delivery: the group `transp` of the transport section.
#pragma once

#include "emcurso/Persistencia.h"
#include "secao/Tag.h"

#include <string_view>

namespace zel {

// A text longer than its field is left out, not cut.
struct DadosTransportadora {
    std::string_view documento; // CPF or CNPJ, 14 characters: up to 11 make a CPF, 13 a CNPJ
    std::string_view nome;      // 1 to 60
    std::string_view inscricaoEstadual; // exactly 2
    std::string_view endereco;          // 1 to 60
    std::string_view municipio;         // 1 to 60
    std::string_view uf;                // exactly 2
};

// Stores the carrier, in states 0 to 4, of a document whose "IDE\indPres" is 4 (delivery). The
// state does not change. ZEL_OK; ZEL_ESTADO_INVALIDO another state;
// ZEL_TRANSPORTADORA_NAO_PERMITIDA no delivery; ZEL_ARQUIVO_INDISPONIVEL no document in progress;
// ZEL_TAG_NAO_CONFORME to ZEL_TAG_OBRIGATORIA a value out of its length; ZEL_CONFIG_ILEGIVEL.
int fnCFIdentificarTransportadora_ZEL_Felbor(ST_PersitenceXML_ZEL &documento,
                                             const DadosTransportadora &transportadora);

// Checks and stores the group `transp`.
int fnCFIdentificarTransportadoraTAG_ZEL(ST_PersitenceXML_ZEL &documento, ST_tagZEL transp);

// Checks the group and puts it into the document in memory; saving is the caller's.
int adicionarTransporte(ST_PersitenceXML_ZEL &documento, ST_tagZEL transp);

// The group of a document without a carrier.
ST_tagZEL semTransporte();

} // namespace zel
