// SPDX-License-Identifier: MIT
#include "emcurso/Carga.h"

#include "comum/ArquivosDoCaixa.h"
#include "config/Registro.h"
#include "diario/Gravacao.h"
#include "disco/Arquivo.h"
#include "disco/Diretorio.h"
#include "disco/Trava.h"
#include "emcurso/ArquivoPersistencia.h"
#include "emcurso/Pendencias.h"
#include "emcurso/ZEL_Controle.h"
#include "secao/Moldes.h"
#include "zel_felbor/codigos.h"

#include <string_view>

namespace zel {

namespace {

bool arquivosProntos = false;
bool documentoCarregado = false;

// What a process that died left: no process reads it, and some of it holds personal data.
void removerSobras() {
    removerRascunhos(fnConfigurarPath(""), arquivos::ehTrocado);
    removerArquivo(fnConfigurarPath(arquivos::kDanfePassageiro));
}

// All of it anew, for a process that goes on where another one may have worked: what it had in
// memory must not be saved over that.
void recarregarVariaveis(ST_PersitenceXML_ZEL &documento) {
    esquecerEstrutura(documento);
    arquivosProntos = documentoCarregado = false;
    // A configuration that cannot be read is the operation's to answer.
    fnXML_CarregarXML_ZEL();
    fnInicializarVariaveis_ZEL(documento);
}

} // namespace

void prepararArquivos() {
    if (arquivosProntos) return;
    const Vez vez; // another process's change is seen whole or not at all
    const PosseDoCupom posse;
    // The files are put right first, and what waits is judged by the configuration. Without the
    // turn, or a journal that can be read, the files are read as they are.
    const bool certos = !vez || acompanharDiario() == ZEL_OK;
    const bool sozinho = vez && certos && posse;
    const bool prontos = garantirConfig() == ZEL_OK && certos && (!sozinho || resolverPendencias());
    lembrarEstado(true);
    if (sozinho) removerSobras();
    // Last, for whoever runs out of memory before it: the next call does it all.
    arquivosProntos = prontos;
}

void fnInicializarVariaveis_ZEL(ST_PersitenceXML_ZEL &documento) {
    if (documentoCarregado) return;
    const Vez vez;
    const PosseDoCupom posse;
    construirMoldes();
    prepararArquivos();
    bool passageira = false;
    fnCarregaEstrutura_ZEL(documento, &passageira);
    documentoCarregado = arquivosProntos && !passageira;
}

void verConfig() {
    if (!configAlterada()) return;
    // A configuration that cannot be read, or is being changed for long, leaves what is in memory.
    if (const Vez vez; vez && acompanharDiario() == ZEL_OK) fnXML_CarregarXML_ZEL();
}

void verDocumento(ST_PersitenceXML_ZEL &documento) {
    verConfig();
    if (PosseDoCupom::minha() || !estruturaAlterada()) return;
    if (const Vez vez; vez && acompanharDiario() == ZEL_OK) recarregarVariaveis(documento);
}

void verDocumentoCarregado(ST_PersitenceXML_ZEL &documento) {
    if (documentoCarregado) verDocumento(documento);
}

bool obterCupom(PosseDoCupom &posse, ST_PersitenceXML_ZEL &documento) {
    // A process that has it without a receipt in progress was left behind by a reset in another
    // process.
    const bool minha =
        posse || (fnXML_CarregarXML_ZEL() == ZEL_OK && !cupomEmAndamento() && posse.tomar());
    if (!minha) return false;
    if (posse.nova() && estruturaAlterada()) {
        recarregarVariaveis(documento);
    } else {
        // A configuration that cannot be read is the operation's to answer.
        if (posse.nova()) fnXML_CarregarXML_ZEL();
        fnInicializarVariaveis_ZEL(documento);
    }
    return true;
}

void depoisDoCupom(PosseDoCupom &posse, bool mudou) {
    if (PosseDoCupom::compartilhada() || !cupomEmAndamento())
        posse.largar();
    else if (mudou)
        posse.manter();
    if (mudou) lembrarEstado();
}

void aceitarEstado() {
    lembrarEstado();
    PosseDoCupom posse;
    if (!cupomEmAndamento()) posse.largar();
}

void fnFinalizarVariaveis_ZEL() {
    liberarMoldes();
    arquivosProntos = documentoCarregado = false;
}

int fnCFInicializar_ZEL_Felbor(ST_PersitenceXML_ZEL &documento) {
    const int resultado = inicializarConfig();
    // A document in progress is judged by the configuration, so it is looked at after it.
    fnInicializarVariaveis_ZEL(documento);
    return resultado;
}

int fnCFFinalizar_ZEL_Felbor() {
    fnFinalizarVariaveis_ZEL();
    return ZEL_OK;
}

} // namespace zel
