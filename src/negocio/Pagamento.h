// SPDX-License-Identifier: MIT
// Payments: the lines that cover the receipt total, the change, and the correction of a line's
// form. Only what is due reaches the document; the change is kept in
// "CONFIGURACAO\TrocoUltimaNFCe".
#pragma once

#include "config/Registro.h"
#include "emcurso/Persistencia.h"
#include "secao/Tag.h"

#include <span>
#include <string_view>

namespace zel {

// Form: a name or two-digit code (49 characters). Value: decimal text (15 characters), empty or
// zero for what is still due. In states 3 and 4; state 4 when the total is covered. ZEL_OK;
// ZEL_NENHUM_CUPOM, ZEL_PAGAMENTO_FORA_DE_ORDEM the state; ZEL_ARQUIVO_INDISPONIVEL no document in
// progress; ZEL_ARGUMENTO_INVALIDO a negative value; ZEL_JA_PAGO paid already, with the change set
// to "0" all the same; ZEL_PAGAMENTO_INEXISTENTE a change that its key cannot hold;
// ZEL_TAG_NAO_CONFORME a value beyond its length; ZEL_CONFIG_ILEGIVEL.
int fnCFEfetuarPagamento_ZEL_Felbor(ST_PersitenceXML_ZEL &documento, std::string_view forma,
                                    std::string_view valor);

// Replaces the form of the first line with the given form and value, in state 4; the last line is
// looked for by the value as the customer gave it, before the change. ZEL_OK; ZEL_ESTADO_INVALIDO
// the state; ZEL_ARGUMENTO_INVALIDO an empty argument or a negative value;
// ZEL_ARQUIVO_INDISPONIVEL; ZEL_SEM_LISTA no payments; ZEL_PAGAMENTO_INEXISTENTE no such line.
int fnCFEstornarPagamento_ZEL_Felbor(ST_PersitenceXML_ZEL &documento, std::string_view forma,
                                     std::string_view novaForma, std::string_view valor);

// Checks and stores a payment line, the group `pag`, together with configuration values.
int fnCFeEfetuarPagamentoTAG_ZEL(ST_PersitenceXML_ZEL &documento, ST_tagZEL pag,
                                 std::span<const Alteracao> alteracoes = {});

} // namespace zel
