// SPDX-License-Identifier: MIT
// The frames in which an exported function runs its operation: what is made ready before it, whose
// turn it is, what becomes of an exception and of the answer. The one place that knows what the
// process keeps in memory from call to call; an operation gets of it what it is handed.
#pragma once

#include "api/Chamada.h"
#include "diario/Gravacao.h"
#include "disco/Trava.h"
#include "emcurso/Carga.h"
#include "emcurso/Persistencia.h"
#include "imposto/Presets.h"
#include "impressao/CupomFiscal.h"
#include "recusa/Recusa.h"

#include <string_view>
#include <type_traits>

namespace zel {

inline ST_PersitenceXML_ZEL G_stXML_Persistencia;
inline ST_tagImpostoConfTemp G_stTagImpostoConfTemp;
inline TotalImposto G_szTotalImposto;
inline DadosImpressao G_stDadosImpressao;

struct Memoria {
    ST_PersitenceXML_ZEL &cupom = G_stXML_Persistencia;
    ST_tagImpostoConfTemp &presets = G_stTagImpostoConfTemp;
    TotalImposto &total = G_szTotalImposto;
    DadosImpressao &impressao = G_stDadosImpressao;
};

// Every frame hands the memory to a function that takes it.
template <typename Funcao>
int chamar(Funcao &funcao) {
    if constexpr (std::is_invocable_v<Funcao &, const Memoria &>)
        return funcao(Memoria{});
    else
        return funcao();
}

// Exceptions end here; only exhausted memory raises one. What every call answers passes through
// here, and with it the log; `nome` is that of the function that asks.
template <typename Funcao>
int semExcecao(Funcao funcao, const char *nome = __builtin_FUNCTION()) noexcept {
    Chamada chamada(nome);
    const EsperaDaChamada espera;
    try {
        return chamada.responder(chamar(funcao));
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
            return chamar(funcao);
        },
        nome);
}

// Reads of the receipt, as the process that changed it last left it.
template <typename Funcao>
int quadroDoEstado(Funcao funcao, const char *nome = __builtin_FUNCTION()) noexcept {
    return quadro(
        [&] {
            verDocumento(G_stXML_Persistencia);
            return chamar(funcao);
        },
        nome);
}

// Functions without the frame do without the document in progress, not without their files.
template <typename Funcao>
int semQuadro(Funcao funcao, const char *nome = __builtin_FUNCTION()) noexcept {
    return semExcecao(
        [&] {
            prepararArquivos();
            return chamar(funcao);
        },
        nome);
}

// Changes of files other than the receipt: one process after the other.
template <typename Funcao>
int naVez(Funcao funcao) {
    const Vez vez;
    if (!vez) return vez.recusa();
    const int codigo = acompanharDiario();
    return codigo == ZEL_OK ? chamar(funcao) : codigo;
}

template <typename Funcao>
int quadroDeMudanca(Funcao funcao, const char *nome = __builtin_FUNCTION()) noexcept {
    return semExcecao(
        [&] {
            return naVez([&] {
                fnInicializarVariaveis_ZEL(G_stXML_Persistencia);
                return chamar(funcao);
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
                return chamar(funcao);
            });
        },
        nome);
}

// Changes of the receipt: the process that made the first of them, to the end of the receipt.
template <typename Funcao>
int quadroDoCupom(Funcao funcao, const char *nome = __builtin_FUNCTION()) noexcept {
    const auto comPosse = [&] {
        return comPosseDoCupom(G_stXML_Persistencia, [&] { return chamar(funcao); });
    };
    return semExcecao([&] { return naVez(comPosse); }, nome);
}

// An argument as an operation takes it. A null text is a view without data, so that an operation
// can tell it from an empty one.
constexpr std::string_view visto(const char *texto) {
    return texto == nullptr ? std::string_view{} : std::string_view{texto};
}
template <typename Valor>
requires(!std::is_convertible_v<const Valor &, const char *>) constexpr const Valor &visto(
    const Valor &valor) {
    return valor;
}

// noCupom(operation)(arguments) runs an operation that takes the receipt and the arguments as they
// came; nosPresets one that takes the presets of the next item, of which nothing reaches a file.
template <typename Operacao>
auto noCupom(Operacao operacao, const char *nome = __builtin_FUNCTION()) {
    return [=](const auto &...argumentos) noexcept {
        return quadroDoCupom(
            [&](const Memoria &memoria) { return operacao(memoria.cupom, visto(argumentos)...); },
            nome);
    };
}

template <typename Operacao>
auto nosPresets(Operacao operacao, const char *nome = __builtin_FUNCTION()) {
    return [=](const auto &...argumentos) noexcept {
        return quadroDoEstado(
            [&](const Memoria &memoria) { return operacao(memoria.presets, visto(argumentos)...); },
            nome);
    };
}

} // namespace zel
