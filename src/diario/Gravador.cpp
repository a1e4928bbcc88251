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
#include <utility>
#include <vector>

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
    g.ausentes.clear();
    return true;
}

namespace {

// Puts a file in the state that the journal has for it, unless somebody wrote it since; a missing
// one when it was not `removido`.
bool acertar(const std::string &nome, const EstadoDiario &estado, bool removido, bool &mudado) {
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
        g.ausentes.insert(nome);
        return true;
    case Leitura::kLido:
        if (lerArquivo(caminho, conteudo, ligacao) != Leitura::kLido) return false;
        if (conteudo != estado.conteudo() && estado.ehDeOutro(identidade, conteudo)) return true;
        if (conteudo != estado.conteudo() || g.perdeu) break;
        g.cadeias[nome] = {identidade, {}, false};
        return true;
    }
    g.mudou = mudado = true;
    if (substituirArquivo(caminho, estado.conteudo(), estado.acesso, ligacao) != ZEL_OK ||
        identificar(caminho, ligacao, identidade) != Leitura::kLido)
        return false;
    g.cadeias[nome] = {identidade, {}, false};
    return true;
}

// Notes how every file stands that holds what the journal says: the process that wrote them did not
// come to it, or they were put right here; and what somebody takes away from here on is to stay
// away. What was known of the last record comes first, for not all may fit.
void carimbarTudo() {
    Gravador &g = gravador();
    std::vector<CarimboDiario> carimbos{{"", identificarDiretorio(fnConfigurarPath(""))}};
    for (const CarimboDiario &carimbo : g.diario.carimbos())
        if (!carimbo.nome.empty()) carimbos.push_back(carimbo);
    for (const auto &[nome, cadeia] : g.cadeias) {
        const auto lugar = std::ranges::find(carimbos, nome, &CarimboDiario::nome);
        if (lugar != carimbos.end())
            lugar->identidade = cadeia.identidade;
        else
            carimbos.push_back({nome, cadeia.identidade});
    }
    g.diario.carimbar(std::move(carimbos));
}

bool acertarTodos(const Diario::Conteudo &conteudo) {
    Gravador &g = gravador();
    const bool interrompido = !conteudo.registros.empty() && !conteudo.carimbos;
    // Nothing may follow a record that is not on the disk.
    if (interrompido && !g.diario.descarregar()) return false;
    const EstadosDiario estados(conteudo);
    // As it was before anything is put right.
    const Identidade diretorio = identificarDiretorio(fnConfigurarPath(""));
    bool acertou = false;
    for (const auto &[nome, estado] : estados.arquivos())
        if (!acertar(nome, estado, estados.foiRemovido(estado, diretorio), acertou)) return false;
    if ((interrompido || acertou) && !g.diario.danificado()) carimbarTudo();
    return true;
}

} // namespace

bool recuperar() {
    Gravador &g = gravador();
    Diario::Conteudo conteudo;
    g.cadeias.clear();
    g.ausentes.clear();
    g.diretorio = {};
    g.processo = ::getpid();
    g.atrasado = true;
    ++g.leituras;
    const Leitura leitura = g.diario.ler(conteudo);
    if (leitura == Leitura::kFalha) return false;
    if (leitura == Leitura::kLido && !acertarTodos(conteudo)) return false;
    g.atrasado = g.perdeu = false;
    return true;
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
