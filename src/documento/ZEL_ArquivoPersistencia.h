// The file of the document in progress, ArqPersist.bin, so that a receipt survives the process. One
// record a line, each ended by CR LF, in this order:
//   01|opening   02|item number|item (one per item)   03|totals   04|carrier
//   05|sequence|payment (one per payment)   06|closing
// with the section's children as plain XML. Owns the file, its forms on the way to disk and the
// commit of a document together with configuration values.
#pragma once

#include "config/Registro.h"
#include "documento/Secao.h"
#include "documento/ZEL_ArquivoPendente.h"

#include <span>
#include <string_view>

namespace zel {

// Whether what is in memory is the whole document: false while its file could not be read. Until
// then nothing is written over it.
bool fnEstruturaLida_ZEL();

// Empties the memory, as in a new process: nothing is written until the file has been read again.
void fnEsquecerEstrutura_ZEL();

// Writes the document whole in the place of the file. 1, or -52 with the old file whole. A file
// that was found damaged is first kept beside as ArqPersist.bin.danificado.
int fnPersistEstrutura_ZEL();

// Writes the record last added to a list, by appending it where it is the last of the file, so that
// item 999 costs what the first one did; otherwise the whole document. 1 or -52.
int fnPersistUltimo_ZEL(Secao secao);

// Commits the document together with a change of the receipt state, and with `outros` files that
// belong to it: the complete new records wait in ArqPersist.tmp while the configuration is saved,
// then take the file's place. A process that dies in between leaves both files; the next one
// completes the change when the configuration holds the state that belongs to the waiting records
// and the file in place lacks them, and drops them otherwise. `alteracoes` must change the state.
// 1; -40 or -52 with files and configuration as before.
int fnPersistComConfig_ZEL(std::span<const Alteracao> alteracoes,
                           std::span<const Espera> outros = {});

// Reads the document back into G_stXML_Persistencia, from ArqPersist.bin or, when there is none,
// ArqPersist.tmp (unless the state is 0: nothing was opened), after settling a commit that a dead
// process left; while another process has the receipt that is left to it. A torn last record is
// dropped.
// 1; -52 there is no document or it cannot be read (`passageira` tells which); -1 a record is
// malformed: what was read before it is kept.
int fnCarregaEstrutura_ZEL(bool *passageira = nullptr);

} // namespace zel
