// SPDX-License-Identifier: MIT
// Opening a receipt and recording its consumer: the group `dest` of the opening section.
#pragma once

#include "config/Registro.h"
#include "emcurso/Persistencia.h"
#include "secao/Tag.h"

#include <span>
#include <string_view>

namespace zel {

// The consumer as the application gives him. A text longer than its field is left out, not cut.
struct DadosConsumidor {
    std::string_view documento;       // CPF, CNPJ or foreign id, 20 characters; only digits count
    std::string_view nome;            // 1 to 60
    std::string_view logradouro;      // 2 to 60; asks for number, district, municipality and state
    std::string_view numero;          // 1 to 60
    std::string_view bairro;          // 1 to 60
    std::string_view codigoMunicipio; // exactly 7
    std::string_view municipio;       // 1 to 60
    std::string_view uf;              // exactly 2
    std::string_view cep;             // 1 to 8, optional
};

// Starts a new receipt, discarding what the last one left. 11 digits make a CPF, 14 a CNPJ, 5 to 20
// others a foreign id; without an identification no `dest` is written. ZEL_OK; ZEL_RECUSADO a
// street without the rest of its address; ZEL_CUPOM_EM_ANDAMENTO a receipt is in progress;
// ZEL_TAG_NAO_CONFORME to ZEL_TAG_OBRIGATORIA a value out of its length; ZEL_CONFIG_ILEGIVEL,
// ZEL_ARQUIVO_INDISPONIVEL.
int fnCFAbrir_ZEL_Felbor(ST_PersitenceXML_ZEL &documento, const DadosConsumidor &consumidor);

// The same with receipt number and series written to the configuration first; they keep their new
// values even if the opening then fails.
int fnCFAbrirNumSerie_ZEL_Felbor(ST_PersitenceXML_ZEL &documento, int numero, int serie,
                                 const DadosConsumidor &consumidor);

// Replaces the opening section, in any state: up to 11 digits make a CPF, 13 or more a CNPJ, there
// are no foreign ids. `email` has 1 to 59 characters. ZEL_OK; ZEL_RECUSADO as above;
// ZEL_ARQUIVO_INDISPONIVEL no document in progress.
int fnCFIdentificarConsumidor_ZEL_Felbor(ST_PersitenceXML_ZEL &documento,
                                         const DadosConsumidor &consumidor, std::string_view email);

// Check and store an opening section, which may be empty; the opening goes together with changes of
// the configuration.
int fnCFeAbrirTAG_ZEL(ST_PersitenceXML_ZEL &documento, ST_tagZEL abertura,
                      std::span<const Alteracao> alteracoes = {});
int fnCFIdentificarConsumidorTAG_ZEL(ST_PersitenceXML_ZEL &documento, ST_tagZEL abertura);

} // namespace zel
