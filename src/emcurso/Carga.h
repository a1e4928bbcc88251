// SPDX-License-Identifier: MIT
// What every exported function finds ready: templates built, configuration loaded, changes that a
// dead process left settled, document in progress in memory. Cheap when all of it stands.
#pragma once

#include "disco/Trava.h"
#include "emcurso/Persistencia.h"
#include "zel_felbor/codigos.h"

namespace zel {

// All of it, with the document as its file has it. A step that fails for a passing reason is tried
// again by the next call.
void fnInicializarVariaveis_ZEL(ST_PersitenceXML_ZEL &documento);

// Configuration and output files alone, for functions that do without the document in progress: the
// first call of a process, whichever it is, sees the file. A failure is tried again as above.
void prepararArquivos();

// For reads: configuration and document as other processes left them, where the files are not those
// that memory has. Where that cannot be had, memory stays.
void verConfig();
void verDocumento(ST_PersitenceXML_ZEL &documento);
// The document again, for functions that do without it where it was never loaded.
void verDocumentoCarregado(ST_PersitenceXML_ZEL &documento);

// The two ends of a change of the document: false while another process has the receipt in
// progress; and what becomes of it after a change, or a refused one.
bool obterCupom(PosseDoCupom &posse, ST_PersitenceXML_ZEL &documento);
void depoisDoCupom(PosseDoCupom &posse, bool mudou);

// The application itself changed the state, within a turn: a receipt that it reset belongs to no
// process.
void aceitarEstado();

// Runs a change of the document, within a turn: ZEL_ARQUIVO_INDISPONIVEL while another process has
// the receipt. The first change that succeeds keeps it for this process, to the receipt's end.
template <class Funcao>
int comPosseDoCupom(ST_PersitenceXML_ZEL &documento, Funcao funcao) {
    PosseDoCupom posse;
    if (!obterCupom(posse, documento)) return posse.recusa();
    const int resultado = funcao();
    depoisDoCupom(posse, resultado > 0);
    return resultado;
}

// aCFInicializar_ZEL: templates, defaults, configuration file, the document in progress. ZEL_OK;
// ZEL_ARQUIVO_INDISPONIVEL the file can be neither read nor written.
int fnCFInicializar_ZEL_Felbor(ST_PersitenceXML_ZEL &documento);

// Frees the templates; the next fnInicializarVariaveis_ZEL starts anew, as in a new process. No
// exported function reaches it.
void fnFinalizarVariaveis_ZEL();

// The same. Always 1. Prescribed; no exported function reaches it.
int fnCFFinalizar_ZEL_Felbor();

} // namespace zel
