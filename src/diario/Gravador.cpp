// SPDX-License-Identifier: MIT
#include "diario/Gravador.h"

#include "diario/EstadosDiario.h"
#include "disco/Arquivo.h"
#include "disco/Diretorio.h"
#include "disco/Trava.h"
#include "zel_felbor/codigos.h"

#include <algorithm>
#include <string>
#include <unistd.h>

namespace zel {

Gravador &gravador() {
    static Gravador unico;
    return unico;
}

namespace {

// Flushes every file that the journal speaks of, and their names.
bool descarregarTudo() {
    for (const auto &[nome, cadeia] : gravador().cadeias) {
        // The configuration may be a link; no other file is followed.
        const std::string caminho = fnConfigurarPath(nome);
        if (!descarregarArquivo(caminho, Ligacao::kSeguida) && existeArquivo(caminho)) return false;
    }
    return descarregarDiretorio(fnConfigurarPath(""));
}

} // namespace

bool esvaziarDiario(std::size_t tamanho) {
    Gravador &g = gravador();
    if (g.atrasado) return false;
    if (!descarregarTudo()) {
        g.perdeu = g.atrasado = true;
        return false;
    }
    // Of a damaged journal nobody knows which files it had.
    if (g.diario.danificado()) {
        descarregarTudoQueHa(fnConfigurarPath(""));
        if (!g.diario.guardarDanificado()) return false;
    }
    if (!g.diario.esvaziar(tamanho)) {
        g.atrasado = true;
        return false;
    }
    g.cadeias.clear();
    return true;
}

namespace {

// Puts a file in the state that the journal has for it, unless somebody wrote it since; a missing
// one when it was not `removido`.
bool acertar(const std::string &nome, const EstadoDiario &estado, bool removido, bool &acertou) {
    Gravador &g = gravador();
    const std::string caminho = fnConfigurarPath(nome);
    // Nobody else's journal leads out of his directory.
    const Ligacao ligacao = g.diario.alheio() ? Ligacao::kNaoSeguida : estado.ligacao;
    Identidade identidade;
    std::string conteudo;
    switch (identificar(caminho, ligacao, identidade)) {
    case Leitura::kFalha:
        return ehLigacao(caminho);
    case Leitura::kInexistente:
        if (!removido) break;
        g.cadeias[nome] = {};
        return true;
    case Leitura::kLido:
        if (lerArquivo(caminho, conteudo, ligacao) != Leitura::kLido) return false;
        if (conteudo != estado.conteudo && estado.ehDeOutro(identidade, conteudo)) return true;
        if (conteudo != estado.conteudo || g.perdeu) break;
        g.cadeias[nome] = {identidade, {}};
        return true;
    }
    g.mudou = acertou = true;
    g.cadeias[nome] = {};
    return substituirArquivo(caminho, estado.conteudo, estado.acesso, ligacao, estado.momento) ==
           ZEL_OK;
}

// What is `acertado` has been put right, or the process that wrote the last record did not come to
// the end of it.
bool acertarTodos(const Diario::Conteudo &conteudo, bool &acertado) {
    Gravador &g = gravador();
    acertado = !conteudo.registros.empty() && conteudo.seguido == 0;
    // Nothing may follow a record that is not on the disk.
    if (acertado && !g.diario.descarregar()) return false;
    const EstadosDiario estados(conteudo);
    // As it was before anything is put right.
    const Identidade diretorio = identificarDiretorio(fnConfigurarPath(""));
    return std::ranges::all_of(estados.arquivos(), [&](const auto &arquivo) {
        const auto &[nome, estado] = arquivo;
        return acertar(nome, estado, estados.foiRemovido(estado, diretorio), acertado);
    });
}

} // namespace

bool recuperar() {
    Gravador &g = gravador();
    Diario::Conteudo conteudo;
    g.cadeias.clear();
    g.processo = ::getpid();
    g.atrasado = true;
    ++g.leituras;
    const Leitura leitura = g.diario.ler(conteudo);
    if (leitura == Leitura::kFalha) return false;
    bool acertado = false;
    if (leitura == Leitura::kLido && !acertarTodos(conteudo, acertado)) return false;
    g.atrasado = g.perdeu = false;
    // Files are judged by when the journal's records were followed, and these are later.
    return !acertado || conteudo.danificado || esvaziarDiario(0);
}

bool acompanhado() {
    const Gravador &g = gravador();
    return g.processo != 0 && !g.atrasado && g.diario.aberto();
}

Gravador::~Gravador() {
    // The end of the process is a quiet moment; a child that never called, or a reader, has nothing
    // to say. Nor has a process that ends in the middle of a call: what it was at is put right from
    // the journal.
    if (processo != ::getpid() || !mudou || diario.vazio()) return;
    try {
        if (const Vez vez; vez && diario.emDia()) esvaziarDiario(0);
    } catch (...) {
        // The journal is read by the next process.
    }
}

} // namespace zel
