// SPDX-License-Identifier: MIT
// Memory that runs out at any request: the operation answers a negative code and has changed
// nothing, or it has done its work whole; the next call works, and so does the next process. Also
// in a process that puts right what a dead one left.
#include "disco/Memoria.h"
#include "apoio/Ambiente.h"
#include "fault/Ensaio.h"

#include <gtest/gtest.h>

#include <iostream>
#include <new>
#include <unistd.h>

namespace {

using disco::FaltaDeMemoria;

constexpr int kNaoDisparou = 2;

class Memoria : public testing::TestWithParam<Roteiro> {};

// A zone that is not UTC, which is what the C library falls back to. The step has to read it anew.
class OutraZona {
public:
    static void esquecer() {
        const Ambiente outra("TZ", "UTC0");
        tzset();
    }

private:
    Ambiente zona_{"TZ", access("/usr/share/zoneinfo/America/Sao_Paulo", R_OK) == 0
                             ? "America/Sao_Paulo"
                             : "BRT3"};
};

// The selection that every test run makes takes one of so many.
bool escolhido(std::size_t qual, std::size_t umDe) {
    return tudo() || qual % umDe == 0;
}

// What `acao` answers while memory is short; none where it did not come to that, or the test's own
// code was refused.
std::optional<int> comFalta(int em, bool sempre, const std::function<int()> &acao) {
    const FaltaDeMemoria falta(em, sempre);
    try {
        const int codigo = acao();
        if (falta.disparou()) return codigo;
    } catch (const std::bad_alloc &) {
        return {};
    }
    return {};
}

int pedidos(const Ensaio &ensaio, std::size_t passo) {
    ensaio.preparar(passo);
    const Processo processo(ensaio.diretorio());
    OutraZona::esquecer();
    const FaltaDeMemoria falta;
    EXPECT_GT(ensaio.fazer(passo, processo.funcoes()), 0);
    return falta.contados();
}

void semRascunhos(const std::string &diretorio) {
    for (const auto &[nome, bytes] : disco::fotografar(diretorio))
        EXPECT_FALSE(nome.ends_with(".novo")) << nome << " stays";
}

int conferir(const Ensaio &ensaio, std::size_t passo, int em, bool sempre) {
    ensaio.preparar(passo);
    return disco::emOutroProcesso([&] {
        const NovasFalhas falhas;
        const Processo processo(ensaio.diretorio());
        const Funcoes &f = processo.funcoes();
        OutraZona::esquecer();
        const auto codigo = comFalta(em, sempre, [&] { return ensaio.fazer(passo, f); });
        if (!codigo) return kNaoDisparou;
        semRascunhos(ensaio.diretorio());
        const auto achado = [&] { return retratar(f, ensaio.diretorio()); };
        if (*codigo <= 0) {
            recusarSe("refused", ensaio.foraDoLugar(passo, achado()));
            EXPECT_GT(ensaio.fazer(passo, f), 0) << "repeated";
        }
        recusarSe("done", ensaio.diferencaNoFim(passo, achado()));
        return falhas.codigo();
    });
}

TEST_P(Memoria, nada_muda_ou_tudo_esta_feito) {
    const OutraZona zona;
    const Ensaio ensaio(GetParam());
    int recusas = 0;
    std::size_t qual = 0;
    for (std::size_t passo = 0; passo < ensaio.passos(); ++passo) {
        const int ultimo = pedidos(ensaio, passo);
        for (int n = 1; n <= ultimo; ++n) {
            for (const bool sempre : {false, true}) {
                if (!escolhido(qual++, 97)) continue;
                SCOPED_TRACE(std::string(ensaio.nome(passo)) + ", request " + std::to_string(n) +
                             (sempre ? " and on" : ""));
                const int resposta = conferir(ensaio, passo, n, sempre);
                if (resposta == kNaoDisparou) continue;
                ++recusas;
                EXPECT_EQ(resposta, 0);
                if (resposta == 0 && !ensaio.outroCodigo(passo))
                    ensaio.conferirSucessor(passo, true);
            }
        }
    }
    std::cout << "[ falhas ] memória recusada " << recusas << '\n';
}

// Dies once its record is on the disk and no file has followed. False where the step has none.
bool morrerDepoisDoRegistro(const Ensaio &ensaio, std::size_t passo) {
    ensaio.preparar(passo);
    int em = 0, feitas = 0;
    {
        const Processo processo(ensaio.diretorio());
        const disco::Vigia vigia;
        ensaio.fazer(passo, processo.funcoes());
        for (const disco::Evento &evento : vigia.eventos()) {
            feitas += disco::muda(evento.chamada) ? 1 : 0;
            const bool registro = evento.chamada == disco::Chamada::kDescarregar &&
                                  evento.caminho.ends_with(".diario");
            if (registro) em = feitas + 1;
        }
    }
    using Ato = disco::Plano::Ato;
    return em > 0 && em <= feitas &&
           ensaio.sob(passo, {.ato = Ato::kMorrer, .em = em, .soMudancas = true}) == disco::kMorto;
}

// What is left of the dead one's, read by a process that is short of memory at its first call.
int recuperar(const Ensaio &ensaio, std::size_t passo, int em, bool sempre, int *contados) {
    const Processo processo(ensaio.diretorio(), true);
    const Funcoes &f = processo.funcoes();
    const NovasFalhas falhas;
    char info[ZEL_TAMANHO_INFO];
    const auto ler = [&] { return f.rInfoEstendida_ZEL("1", info); };
    if (contados != nullptr) {
        const FaltaDeMemoria falta;
        ler();
        *contados = falta.contados();
        return 0;
    }
    if (!comFalta(em, sempre, ler)) return kNaoDisparou;
    ler();
    const Retrato achado = retratar(f, ensaio.diretorio());
    recusarSe("found", ensaio.foraDoLugar(passo, achado));
    if (!(achado == ensaio.retrato(passo + 1))) {
        EXPECT_GT(ensaio.fazer(passo, f), 0) << ensaio.nome(passo);
    }
    semRascunhos(ensaio.diretorio());
    recusarSe("at the end", ensaio.diferencaNoFim(passo, retratar(f, ensaio.diretorio())));
    return falhas.codigo();
}

TEST_P(Memoria, um_processo_que_recupera) {
    const Ensaio ensaio(GetParam());
    int recusas = 0;
    std::size_t qual = 0;
    for (std::size_t passo = 0; passo < ensaio.passos(); ++passo) {
        if (!morrerDepoisDoRegistro(ensaio, passo)) continue;
        const disco::Fotografia deixado = disco::fotografar(ensaio.diretorio());
        int ultimo = 0;
        recuperar(ensaio, passo, 0, false, &ultimo);
        for (int n = 1; n <= ultimo; ++n) {
            for (const bool sempre : {false, true}) {
                if (!escolhido(qual++, 397)) continue;
                SCOPED_TRACE(std::string(ensaio.nome(passo)) + ", request " + std::to_string(n) +
                             (sempre ? " and on" : ""));
                disco::revelar(ensaio.diretorio(), deixado);
                const int resposta = disco::emOutroProcesso(
                    [&] { return recuperar(ensaio, passo, n, sempre, nullptr); });
                if (resposta == kNaoDisparou) continue;
                ++recusas;
                EXPECT_EQ(resposta, 0);
            }
        }
    }
    std::cout << "[ falhas ] memória recusada a quem recuperava " << recusas << '\n';
}

INSTANTIATE_TEST_SUITE_P(Roteiros, Memoria, testing::ValuesIn(roteiros()),
                         [](const auto &caso) { return std::string(caso.param.nome); });

} // namespace
