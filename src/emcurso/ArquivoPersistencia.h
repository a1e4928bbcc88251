// SPDX-License-Identifier: MIT
// The file of the document in progress, ArqPersist.bin, so that a receipt survives the process. One
// record a line, each ended by CR LF, in this order:
//   01|opening   02|item number|item (one per item)   03|totals   04|carrier
//   05|sequence|payment (one per payment)   06|closing
// with the section's children as plain XML. Owns the file and what of it a change writes.
#pragma once

#include "config/Registro.h"
#include "diario/Gravacao.h"
#include "emcurso/Persistencia.h"
#include "secao/Secao.h"

#include <span>
#include <string_view>

namespace zel {

// Whether what is in memory is the whole document: false while its file could not be read. Until
// then nothing is written over it.
bool estruturaLida();

// Whether the file is not the one that memory was last read from or saved to, or may be so: a
// process that has not the receipt may find another one's there.
bool estruturaAlterada();

// -52 for an operation that needs the document in progress, where there is none or it was not read.
int recusarSemDocumento();

// Empties the memory, as in a new process: nothing is written until the file has been read again.
void esquecerEstrutura(ST_PersitenceXML_ZEL &documento);

// Writes the document whole, in one commit with changes of the configuration. ZEL_OK; ZEL_RECUSADO,
// ZEL_CONFIG_ILEGIVEL or ZEL_ARQUIVO_INDISPONIVEL with files and configuration as before. A file
// that was found damaged is first kept beside as ArqPersist.bin.danificado.
int fnPersistEstrutura_ZEL(const ST_PersitenceXML_ZEL &documento,
                           std::span<const Alteracao> alteracoes = {},
                           std::span<const MudancaArquivo> outros = {});

// The same of the record last added to a section: only that is written, where it is the last of the
// file or stands in front of the carrier's, so that item 999 costs what the first one did;
// otherwise the whole document.
int persistirUltimo(const ST_PersitenceXML_ZEL &documento, Secao secao,
                    std::span<const Alteracao> alteracoes = {});

// Reads the document back from its file. A torn last record is dropped. ZEL_OK;
// ZEL_ARQUIVO_INDISPONIVEL there is no document or it cannot be read (`passageira` says which);
// ZEL_RECUSADO a record is malformed: what was read before it is kept.
int fnCarregaEstrutura_ZEL(ST_PersitenceXML_ZEL &documento, bool *passageira = nullptr);

} // namespace zel
