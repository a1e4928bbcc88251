// SPDX-License-Identifier: MIT
// Power that fails, which is worse than a process that dies: the bytes that were not flushed may be
// lost, torn or there, and each change of a name that was not flushed happened or did not. The
// calls of an operation are recorded, and after each of them every disk that a power cut could
// leave is given to a new process.
#include "fault/Ensaio.h"

#include <gtest/gtest.h>

#include <iostream>
#include <random>
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

// Both, or by turns in a selection.
std::vector<disco::Idade> idades(int discos) {
    using disco::Idade;
    if (tudo()) return {Idade::kAntiga, Idade::kVista};
    return {discos % 2 == 0 ? Idade::kVista : Idade::kAntiga};
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
        for (const disco::Idade idade : idades(discos)) {
            ++discos;
            disco::revelar(ensaio.diretorio(), imagem, idade);
            ensaio.conferirSucessor(passo, feito);
        }
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

// One process that does it all: but for the journal hardly anything is flushed on the way, so that
// with each step more is at stake.
class UmProcesso {
public:
    explicit UmProcesso(const Ensaio &ensaio) : ensaio_(ensaio), imagens_(trabalhar()) {}

    // Every power cut at a flush, before and after it, and after the answer of each step.
    int cortar() {
        for (std::size_t i = 0; i < eventos_.size(); ++i) {
            const bool descarga = eventos_[i].chamada == disco::Chamada::kDescarregar;
            if (descarga) religar(false);
            imagens_.aplicar(eventos_[i]);
            if (descarga) religar(false);
            for (; passo_ < fins_.size() && fins_[passo_] == i + 1; ++passo_)
                religar(true);
        }
        EXPECT_EQ(passo_, ensaio_.passos());
        return discos_;
    }

private:
    disco::Imagens trabalhar() {
        ensaio_.preparar(0);
        const Processo processo(ensaio_.diretorio());
        const disco::Vigia vigia;
        for (std::size_t passo = 0; passo < ensaio_.passos(); ++passo) {
            EXPECT_GT(ensaio_.fazer(passo, processo.funcoes()), 0);
            fins_.push_back(vigia.eventos().size());
        }
        eventos_ = vigia.eventos();
        return {ensaio_.diretorio(), ensaio_.foto(0)};
    }

    void religar(bool feito) {
        SCOPED_TRACE(ensaio_.nome(passo_));
        for (const disco::Fotografia &imagem : imagens_.sorteadas(tudo() ? 12 : 3, sorte_)) {
            for (const disco::Idade idade : idades(discos_)) {
                ++discos_;
                disco::revelar(ensaio_.diretorio(), imagem, idade);
                ensaio_.conferirSucessor(passo_, feito);
            }
        }
    }

    const Ensaio &ensaio_;
    std::vector<disco::Evento> eventos_;
    std::vector<std::size_t> fins_; // how many of them there were after each step
    disco::Imagens imagens_;
    std::mt19937 sorte_{1};
    std::size_t passo_ = 0;
    int discos_ = 0;
};

TEST_P(Queda, de_um_processo_que_fez_tudo) {
    const Ensaio ensaio(GetParam());
    std::cout << "[ falhas ] discos depois de uma queda, um processo "
              << UmProcesso(ensaio).cortar() << '\n';
}

INSTANTIATE_TEST_SUITE_P(Roteiros, Queda, testing::ValuesIn(roteiros()),
                         [](const auto &caso) { return std::string(caso.param.nome); });

} // namespace
