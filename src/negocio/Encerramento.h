// SPDX-License-Identifier: MIT
// Closing: the last section, the complete document and its way out.
#pragma once

#include "emcurso/Persistencia.h"
#include "secao/Tag.h"

#include <string_view>

namespace zel {

// Closes a paid receipt (state 4 to 5) with the information for the consumer (5000 characters are
// kept; line ends stay for the printed receipt, printer marks in angle brackets are allowed). Above
// "CONFIGURACAO\ValorMaxIdeCliente" the consumer must be identified by CPF, foreign id or CNPJ.
// ZEL_OK; ZEL_NENHUM_CUPOM, ZEL_ENCERRAMENTO_FORA_DE_ORDEM the state; ZEL_ARQUIVO_INDISPONIVEL no
// document in progress; ZEL_CONSUMIDOR_OBRIGATORIO; ZEL_RECUSADO a section is missing, or the
// number cannot be built; ZEL_TAG_NAO_CONFORME a text beyond its length; ZEL_CONFIG_ILEGIVEL.
int fnCFEncerrar_ZEL_Felbor(ST_PersitenceXML_ZEL &documento, std::string_view infoConsumidor);

// The same with information for the tax authority (2000 characters) as well: written only when both
// texts are there, and above the limit only a CPF identifies the consumer.
int fnCFEncerrarConfigMsg_ZEL_Felbor(ST_PersitenceXML_ZEL &documento,
                                     std::string_view infoConsumidor, std::string_view infoFisco);

// Checks and stores a closing section, which may be empty, has the document written and sets state
// 5, all in one step. When the document cannot be written nothing
// has changed, and closing can be repeated. ZEL_RECUSADO where there is no document in progress.
int fnCFeEncerrarTAG_ZEL(ST_PersitenceXML_ZEL &documento, ST_tagZEL encerramento);

} // namespace zel
