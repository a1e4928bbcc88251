// SPDX-License-Identifier: MIT
// A process that dies at any call that changes a file leaves the state and the document of before
// or of after the operation, agreeing with each other, and the sale goes on to a right document.
#include "fault/Ensaio.h"

#include <gtest/gtest.h>

#include <iostream>

namespace {

using disco::Plano;

class Morte : public testing::TestWithParam<Roteiro> {};

// The process that follows a dead one is killed as well while it puts things right, at each of its
// own changes.
int matarSucessor(const Ensaio &ensaio, std::size_t passo) {
    const disco::Fotografia deixado = disco::fotografar(ensaio.diretorio());
    for (int n = 1;; ++n) {
        disco::revelar(ensaio.diretorio(), deixado);
        const int fim = disco::emOutroProcesso([&] {
            const Processo processo(ensaio.diretorio(), true);
            const disco::Vigia vigia({.ato = Plano::Ato::kMorrer, .em = n, .soMudancas = true});
            char info[ZEL_TAMANHO_INFO];
            processo.funcoes().rInfoEstendida_ZEL("1", info);
            return 0;
        });
        if (fim == disco::kMorto) ensaio.conferirSucessor(passo, false);
        if (fim == disco::kMorto) continue;
        EXPECT_EQ(fim, 0);
        disco::revelar(ensaio.diretorio(), deixado);
        return n - 1;
    }
}

TEST_P(Morte, antes_ou_depois_de_cada_passo) {
    const Ensaio ensaio(GetParam());
    int mortes = 0, duplas = 0;
    for (std::size_t passo = 0; passo < ensaio.passos(); ++passo) {
        const int ultima = ensaio.chamadas(passo, true);
        for (const auto ato : {Plano::Ato::kMorrer, Plano::Ato::kMorrerNoMeio, Plano::Ato::kSair}) {
            for (int n = 1; n <= ultima; ++n) {
                // Ends that run destructors take long.
                if (!tudo() && ato == Plano::Ato::kSair && n % 4 != 0) continue;
                SCOPED_TRACE(std::string(ensaio.nome(passo)) + ", call " + std::to_string(n));
                const int fim = ensaio.sob(passo, {.ato = ato, .em = n, .soMudancas = true});
                if (fim == 0 && ato == Plano::Ato::kMorrerNoMeio) continue; // no write
                ASSERT_EQ(fim, disco::kMorto);
                ++mortes;
                if (tudo()) duplas += matarSucessor(ensaio, passo);
                ensaio.conferirSucessor(passo, false);
            }
        }
    }
    std::cout << "[ falhas ] mortes " << mortes << '\n';
    if (tudo()) std::cout << "[ falhas ] mortes de quem recuperava " << duplas << '\n';
}

INSTANTIATE_TEST_SUITE_P(Roteiros, Morte, testing::ValuesIn(roteiros()),
                         [](const auto &caso) { return std::string(caso.param.nome); });

} // namespace
