// SPDX-License-Identifier: MIT
// Power that fails, which is worse than a process that dies: the bytes that were not flushed may be
// lost, torn or there, and each change of a name that was not flushed happened or did not. The
// calls of an operation are recorded, and after each of them every disk that a power cut could
// leave is given to a new process.
#include "fault/Ensaio.h"

#include <gtest/gtest.h>

#include <iostream>
#include <set>

namespace {

class Queda : public testing::TestWithParam<Roteiro> {};

std::vector<disco::Evento> gravar(const Ensaio &ensaio, std::size_t passo) {
    ensaio.preparar(passo);
    const Processo processo(ensaio.diretorio());
    const disco::Vigia vigia;
    EXPECT_GT(ensaio.fazer(passo, processo.funcoes()), 0);
    return vigia.eventos();
}

int conferirPasso(const Ensaio &ensaio, std::size_t passo) {
    const std::vector<disco::Evento> eventos = gravar(ensaio, passo);
    disco::Imagens imagens(ensaio.diretorio(), ensaio.foto(passo));
    std::set<disco::Fotografia> antes, depois;
    for (const disco::Evento &evento : eventos) {
        antes.merge(imagens.possiveis());
        imagens.aplicar(evento);
    }
    depois = imagens.possiveis();
    for (const std::string &pendencia : imagens.pendencias())
        ADD_FAILURE() << "success is answered while " << pendencia;
    int discos = 0;
    const auto religar = [&](const disco::Fotografia &imagem, bool feito) {
        ++discos;
        disco::revelar(ensaio.diretorio(), imagem);
        ensaio.conferirSucessor(passo, feito);
    };
    for (const disco::Fotografia &imagem : antes)
        if (!depois.contains(imagem)) religar(imagem, false);
    for (const disco::Fotografia &imagem : depois)
        religar(imagem, true);
    return discos;
}

TEST_P(Queda, nada_que_foi_respondido_se_perde) {
    const Ensaio ensaio(GetParam());
    int discos = 0;
    for (std::size_t passo = 0; passo < ensaio.passos(); ++passo) {
        SCOPED_TRACE(ensaio.nome(passo));
        discos += conferirPasso(ensaio, passo);
    }
    std::cout << "[ falhas ] discos depois de uma queda " << discos << '\n';
}

INSTANTIATE_TEST_SUITE_P(Roteiros, Queda, testing::ValuesIn(roteiros()),
                         [](const auto &caso) { return std::string(caso.param.nome); });

} // namespace
