// SPDX-License-Identifier: MIT
// The receipt state: one digit under "CONFIGURACAO\estadoCFe", and the rule that says which
// operation may run in which state. Owns the cached state and the last adjustment type.
#pragma once

#include "comum/EstadoDoCupom.h"
#include "config/Registro.h"
#include "recusa/Recusa.h"
#include "texto/Campo.h"

#include <string_view>

namespace zel {

// Operation numbers of the permission rule; 4 is refused in every state.
enum class Operacao { kAbrir, kVender, kTotalizar, kPagar, kReservada, kEncerrar, kExistente };

// The state as last read (0 to 6).
extern int G_EstadoCFe;

// The discount or surcharge type of the last item sold, at most 2 characters.
extern Campo<2> ZEL_TIPO_DESC_ACREC;

// May the operation run in the stored state? ZEL_OK, or ZEL_CUPOM_EM_ANDAMENTO to
// ZEL_ENCERRAMENTO_FORA_DE_ORDEM.
int fnVerificarSePosso_ZEL(Operacao operacao);

// The code of a reason that speaks of the state as last read.
int recusarNoEstado(Motivo motivo);

// Stores the state; answers 1 whatever the write gave, so an operation that must know asks
// fnCFVerificarStatus_ZEL afterwards.
int fnDefinirEstadoCFe_ZEL(int estado);

// The stored state, 0 to 6; anything else stored reads as 0.
int fnCFVerificarStatus_ZEL();

// Whether a receipt is opened and neither closed nor cancelled, by the state in memory.
bool cupomEmAndamento();

// The application knows the state in memory: it was told, or made it so. `seNenhum`: only when it
// knows none yet.
void lembrarEstado(bool seNenhum = false);
// Whether what the application knows still holds: the state, and that no other process has given
// out a number since. Where several processes serve one receipt, each of them moves it on: what
// counts there of the state is whether it is closed.
bool estadoAindaVale();
// The same of the last closed document alone.
bool documentoAindaVale();

// Whether a configuration path names the state.
bool ehCaminhoDoEstado(std::string_view caminho);

// The configuration change that sets the state, for a commit together with the document.
Alteracao alteracaoEstado(int estado);

} // namespace zel
