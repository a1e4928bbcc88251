// SPDX-License-Identifier: MIT
// What each operation of one process asks of the disk, as a table that is read when it changes: a
// save too many, a flush too many or a file written twice shows here.
#include "apoio/Ouro.h"
#include "fault/Ensaio.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

namespace {

using disco::Chamada;

struct Coluna {
    const char *nome;
    std::vector<Chamada> chamadas;
};

const Coluna kColunas[] = {
    {"abre", {Chamada::kAbrir}},
    {"lê", {Chamada::kLer}},
    {"pergunta", {Chamada::kSituacao}},
    {"escreve", {Chamada::kEscrever}},
    {"descarrega", {Chamada::kDescarregar}},
    {"troca de nome", {Chamada::kRenomear, Chamada::kTrocar, Chamada::kLigar}},
    {"remove", {Chamada::kRemover}},
    {"trava", {Chamada::kTravar}},
};

std::string linha(const char *nome, const std::vector<disco::Evento> &eventos) {
    std::ostringstream texto;
    texto << "| " << nome;
    for (const Coluna &coluna : kColunas) {
        const auto quantas = std::count_if(eventos.begin(), eventos.end(), [&](const auto &evento) {
            return std::find(coluna.chamadas.begin(), coluna.chamadas.end(), evento.chamada) !=
                   coluna.chamadas.end();
        });
        texto << " | " << quantas;
    }
    std::size_t bytes = 0;
    for (const disco::Evento &evento : eventos)
        bytes += evento.bytes.size();
    texto << " | " << bytes << " |\n";
    return texto.str();
}

TEST(Contagem, chamadas_de_cada_operacao) {
    std::ostringstream tabela;
    tabela << "| operação";
    for (const Coluna &coluna : kColunas)
        tabela << " | " << coluna.nome;
    tabela << " | bytes |\n|---|"
           << "---:|---:|---:|---:|---:|---:|---:|---:|---:|\n";
    for (const Roteiro &roteiro : roteiros()) {
        const Ensaio ensaio(roteiro);
        ensaio.preparar(0);
        const Processo processo(ensaio.diretorio());
        for (std::size_t passo = 0; passo < ensaio.passos(); ++passo) {
            const disco::Vigia vigia;
            ASSERT_GT(ensaio.fazer(passo, processo.funcoes()), 0);
            tabela << linha(ensaio.nome(passo), vigia.eventos());
        }
    }
    compararComOuro(ZEL_CHAMADAS, tabela.str());
}

// Loading, too, is an operation that may be killed; here it is only counted.
TEST(Contagem, um_processo_que_so_le_nao_escreve) {
    const Ensaio ensaio(roteiros().front());
    ensaio.preparar(8);
    const disco::Vigia vigia;
    const Processo processo(ensaio.diretorio());
    for (const disco::Evento &evento : vigia.eventos()) {
        const bool daqui = evento.caminho.starts_with(ensaio.diretorio());
        EXPECT_FALSE(daqui && disco::muda(evento.chamada) && evento.chamada != Chamada::kAbrir)
            << static_cast<int>(evento.chamada) << " " << evento.caminho;
    }
}

} // namespace
