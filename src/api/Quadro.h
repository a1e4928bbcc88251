// SPDX-License-Identifier: MIT
// The frames in which an exported function runs its operation: what is made ready before it, whose
// turn it is, what becomes of an exception and of the answer. The one place that knows the document
// in progress and the presets of the next item as the process's own.
#pragma once

#include "api/Chamada.h"
#include "diario/Gravacao.h"
#include "disco/Trava.h"
#include "emcurso/Carga.h"
#include "emcurso/Persistencia.h"
#include "imposto/Presets.h"
#include "recusa/Recusa.h"

namespace zel {

// Exceptions end here; only exhausted memory raises one. What every call answers passes through
// here, and with it the log; `nome` is that of the function that asks.
template <typename Funcao>
int semExcecao(Funcao funcao, const char *nome = __builtin_FUNCTION()) noexcept {
    Chamada chamada(nome);
    const EsperaDaChamada espera;
    try {
        return chamada.responder(funcao());
    } catch (...) {
        return chamada.responder(recusar(Motivo::kSemMemoria));
    }
}

// Reads: whatever another process does, they go on.
template <typename Funcao>
int quadro(Funcao funcao, const char *nome = __builtin_FUNCTION()) noexcept {
    return semExcecao(
        [&] {
            fnInicializarVariaveis_ZEL(G_stXML_Persistencia);
            return funcao();
        },
        nome);
}

// Reads of the receipt, as whoever changed it last left it.
template <typename Funcao>
int quadroDoEstado(Funcao funcao, const char *nome = __builtin_FUNCTION()) noexcept {
    return quadro(
        [&] {
            verDocumento(G_stXML_Persistencia);
            return funcao();
        },
        nome);
}

// Functions without the frame do without the document in progress, not without their files.
template <typename Funcao>
int semQuadro(Funcao funcao, const char *nome = __builtin_FUNCTION()) noexcept {
    return semExcecao(
        [&] {
            prepararArquivos();
            return funcao();
        },
        nome);
}

// Changes of files other than the receipt: one process after the other.
template <typename Funcao>
int naVez(Funcao funcao) {
    const Vez vez;
    if (!vez) return vez.recusa();
    const int codigo = acompanharDiario();
    return codigo == ZEL_OK ? funcao() : codigo;
}

// Presets of the next item, which `funcao` gets: nothing of them reaches a file.
template <typename Funcao>
int quadroDosPresets(Funcao funcao, const char *nome = __builtin_FUNCTION()) noexcept {
    return quadroDoEstado([&] { return funcao(G_stTagImpostoConfTemp); }, nome);
}

template <typename Funcao>
int quadroDeMudanca(Funcao funcao, const char *nome = __builtin_FUNCTION()) noexcept {
    return semExcecao(
        [&] {
            return naVez([&] {
                fnInicializarVariaveis_ZEL(G_stXML_Persistencia);
                return funcao();
            });
        },
        nome);
}

template <typename Funcao>
int mudancaSemQuadro(Funcao funcao, const char *nome = __builtin_FUNCTION()) noexcept {
    return semExcecao(
        [&] {
            return naVez([&] {
                prepararArquivos();
                return funcao();
            });
        },
        nome);
}

// Changes of the receipt, which `funcao` gets: the process that made the first of them, to the end
// of the receipt.
template <typename Funcao>
int quadroDoCupom(Funcao funcao, const char *nome = __builtin_FUNCTION()) noexcept {
    ST_PersitenceXML_ZEL &cupom = G_stXML_Persistencia;
    const auto comPosse = [&] { return comPosseDoCupom(cupom, [&] { return funcao(cupom); }); };
    return semExcecao([&] { return naVez(comPosse); }, nome);
}

} // namespace zel
