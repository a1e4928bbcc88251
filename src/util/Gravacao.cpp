// SPDX-License-Identifier: MIT
#include "util/Gravacao.h"

#include "ZEL_FelborFramework.h"
#include "util/Diario.h"
#include "util/Diretorio.h"
#include "util/EstadosDiario.h"
#include "util/Recusa.h"
#include "util/Trava.h"

#include <algorithm>
#include <map>
#include <string>
#include <unistd.h>
#include <vector>

namespace zel {

namespace {

// What this process knows of the journal and of the files in it.
struct Gravador {
    Diario diario;
    pid_t processo = 0;
    // Files that hold what the journal says, as they stood when that was last seen.
    std::map<std::string, Identidade, std::less<>> cadeias;
    bool atrasado = false;  // a file may lack what the journal has
    bool perdeu = false;    // a flush was refused: what a file seems to hold may not reach the disk
    bool recomecar = false; // the journal is damaged: nothing may follow what it still has
    bool mudou = false;     // this process changed a file
    ~Gravador();
};

// Made by the first call that needs it, so that it goes before whatever it uses.
Gravador &gravador() {
    static Gravador unico;
    return unico;
}

// One change on its way.
struct Plano {
    const MudancaArquivo *mudanca = nullptr;
    std::string caminho;
    std::string inteiro;    // a whole that took the place of an end
    bool noLugar = false;   // written where the file stands
    MudancaDiario trecho{}; // what is written there
    MudancaDiario registro{};
    std::string_view depois{}; // the whole, where it is not
};

enum class Ponta { kInicio, kFim };

// How many characters of both are equal, counted from one end: in blocks first, for files of which
// little changes.
template <Ponta P>
std::size_t iguais(std::string_view a, std::string_view b, std::size_t maximo) {
    const auto parte = [](std::string_view texto, std::size_t feitos, std::size_t n) {
        return texto.substr(P == Ponta::kInicio ? feitos : texto.size() - feitos - n, n);
    };
    std::size_t total = 0;
    for (const std::size_t bloco : {std::size_t{64}, std::size_t{1}})
        while (total + bloco <= maximo && parte(a, total, bloco) == parte(b, total, bloco))
            total += bloco;
    return total;
}

// The bytes that differ, as one piece.
void descreverTrecho(std::string_view antes, std::string_view depois, MudancaDiario &registro) {
    const std::size_t comum = std::min(antes.size(), depois.size());
    const std::size_t inicio = iguais<Ponta::kInicio>(antes, depois, comum);
    const std::size_t fim = iguais<Ponta::kFim>(antes, depois, comum - inicio);
    registro.forma = FormaMudanca::kTrecho;
    registro.lugar = inicio;
    registro.retirados = antes.size() - fim - inicio;
    registro.bytes = depois.substr(inicio, depois.size() - fim - inicio);
}

// Whether a file stands as the journal left it.
bool continua(const Plano &plano, const Identidade &achada) {
    const auto cadeia = gravador().cadeias.find(plano.mudanca->nome);
    return cadeia != gravador().cadeias.end() && cadeia->second == achada;
}

void planejarFim(Plano &plano, const MudancaArquivo::Fim &fim) {
    plano.noLugar = true;
    plano.trecho.forma = FormaMudanca::kTrecho;
    plano.trecho.lugar = fim.lugar;
    plano.trecho.retirados = fim.tamanho - fim.lugar;
    plano.trecho.bytes = plano.mudanca->depois;
    plano.registro = plano.trecho;
}

int planejar(const MudancaArquivo &mudanca, Plano &plano) {
    plano.mudanca = &mudanca;
    plano.caminho = fnConfigurarPath(mudanca.nome);
    plano.trecho.nome = mudanca.nome;
    plano.trecho.acesso = mudanca.acesso;
    plano.trecho.ligacao = mudanca.ligacao;
    Identidade achada;
    const Leitura leitura = identificar(plano.caminho, mudanca.ligacao, achada);
    // A link that is not followed makes way.
    if (leitura == Leitura::kFalha && !ehLigacao(plano.caminho)) return arquivoIndisponivel();
    const bool seguida = leitura == Leitura::kLido && continua(plano, achada);
    if (mudanca.fim && seguida && achada.tamanho == mudanca.fim->tamanho) {
        planejarFim(plano, *mudanca.fim);
        return ZEL_OK;
    }
    if (mudanca.fim && leitura == Leitura::kLido && achada.tamanho == mudanca.fim->tamanho) {
        // The journal does not know it yet.
        if (lerArquivo(plano.caminho, plano.inteiro, mudanca.ligacao) != Leitura::kLido)
            return arquivoIndisponivel();
        plano.inteiro.resize(std::min(plano.inteiro.size(), mudanca.fim->lugar));
        plano.inteiro.append(mudanca.depois);
        planejarFim(plano, *mudanca.fim);
        plano.registro.forma = FormaMudanca::kInteira;
        plano.registro.lugar = plano.registro.retirados = 0;
        plano.registro.bytes = plano.inteiro;
        return ZEL_OK;
    }
    if (mudanca.fim) plano.inteiro = mudanca.fim->inteiro();
    plano.depois = mudanca.fim ? std::string_view(plano.inteiro) : mudanca.depois;
    const bool sabido =
        leitura == Leitura::kLido && mudanca.antes && achada.tamanho == mudanca.antes->size();
    if (sabido) descreverTrecho(*mudanca.antes, plano.depois, plano.trecho);
    plano.noLugar = sabido && mudanca.antes->size() == plano.depois.size();
    plano.registro = plano.trecho;
    if (sabido && seguida) return ZEL_OK;
    plano.registro.forma =
        leitura == Leitura::kInexistente ? FormaMudanca::kInteiraNova : FormaMudanca::kInteira;
    plano.registro.lugar = plano.registro.retirados = 0;
    plano.registro.bytes = plano.depois;
    return ZEL_OK;
}

int planejarTodas(std::span<const MudancaArquivo> mudancas, std::vector<Plano> &planos) {
    planos.assign(mudancas.size(), {});
    for (std::size_t i = 0; i < mudancas.size(); ++i)
        if (const int resultado = planejar(mudancas[i], planos[i]); resultado != ZEL_OK)
            return resultado;
    return ZEL_OK;
}

std::string registroDe(const std::vector<Plano> &planos) {
    std::vector<MudancaDiario> mudancas;
    for (const Plano &plano : planos)
        mudancas.push_back(plano.registro);
    return gravador().diario.preparar(std::move(mudancas));
}

void abandonar(const std::vector<Plano> &planos) {
    for (const Plano &plano : planos)
        if (!plano.noLugar) removerRascunho(plano.caminho, plano.mudanca->ligacao);
}

// New files are there, with room for their bytes, before anything has happened.
int preparar(const std::vector<Plano> &planos) {
    for (const Plano &plano : planos)
        if (!plano.noLugar && escreverRascunho(plano.caminho, plano.depois, plano.mudanca->acesso,
                                               plano.mudanca->ligacao) != ZEL_OK)
            return arquivoIndisponivel();
    return ZEL_OK;
}

int aplicar(const Plano &plano) {
    if (!plano.noLugar) return instalarRascunho(plano.caminho, plano.mudanca->ligacao);
    if (plano.trecho.bytes.empty()) return ZEL_OK;
    return escreverNoLugar(plano.caminho, plano.trecho.lugar, plano.trecho.bytes,
                           plano.mudanca->ligacao);
}

// The record is on the disk: what fails from here on is put right later. Whether nothing did.
bool seguir(const std::vector<Plano> &planos) {
    constexpr int kTentativas = 2; // what hinders it once may not hinder it twice
    Gravador &g = gravador();
    std::vector<CarimboDiario> carimbos;
    bool nomes = false, todos = true;
    for (const Plano &plano : planos) {
        int feito = jaRecusado(Motivo::kArquivo);
        for (int vez = 0; vez < kTentativas && feito != ZEL_OK; ++vez)
            feito = aplicar(plano);
        CarimboDiario carimbo{std::string(plano.mudanca->nome), {}};
        if (feito != ZEL_OK || identificar(plano.caminho, plano.mudanca->ligacao,
                                           carimbo.identidade) != Leitura::kLido) {
            todos = false;
            g.cadeias.erase(carimbo.nome);
            continue;
        }
        nomes |= !plano.noLugar;
        g.cadeias[carimbo.nome] = carimbo.identidade;
        carimbos.push_back(std::move(carimbo));
    }
    if (nomes) carimbos.push_back({"", identificarDiretorio(fnConfigurarPath(""))});
    g.diario.carimbar(std::move(carimbos));
    return todos;
}

// Flushes every file that the journal speaks of, and their names.
int descarregarTudo() {
    for (const auto &[nome, identidade] : gravador().cadeias) {
        // The configuration may be a link; no other file is followed.
        const std::string caminho = fnConfigurarPath(nome);
        if (descarregarArquivo(caminho, Ligacao::kSeguida) != ZEL_OK && existeArquivo(caminho))
            return arquivoIndisponivel();
    }
    return descarregarDiretorio(fnConfigurarPath(""));
}

int esvaziar(std::size_t tamanho) {
    Gravador &g = gravador();
    if (g.atrasado) return arquivoIndisponivel();
    if (descarregarTudo() != ZEL_OK) {
        g.perdeu = g.atrasado = true;
        return arquivoIndisponivel();
    }
    if (g.diario.esvaziar(tamanho) != ZEL_OK) {
        g.atrasado = true;
        return arquivoIndisponivel();
    }
    g.cadeias.clear();
    g.recomecar = false;
    return ZEL_OK;
}

// Puts a file in the state that the journal has for it, unless somebody wrote it since; a missing
// one when it was not `removido`.
int acertar(const std::string &nome, const EstadoDiario &estado, bool removido) {
    Gravador &g = gravador();
    const std::string caminho = fnConfigurarPath(nome);
    // Nobody else's journal leads out of his directory.
    const Ligacao ligacao = g.diario.alheio() ? Ligacao::kNaoSeguida : estado.ligacao;
    Identidade identidade;
    std::string conteudo;
    switch (identificar(caminho, ligacao, identidade)) {
    case Leitura::kFalha:
        return ehLigacao(caminho) ? int{ZEL_OK} : arquivoIndisponivel();
    case Leitura::kInexistente:
        if (removido) return ZEL_OK;
        break;
    case Leitura::kLido:
        if (lerArquivo(caminho, conteudo, ligacao) != Leitura::kLido) return arquivoIndisponivel();
        if (conteudo != estado.conteudo && estado.ehDeOutro(identidade)) return ZEL_OK;
        if (conteudo != estado.conteudo || g.perdeu) break;
        g.cadeias[nome] = identidade;
        return ZEL_OK;
    }
    g.mudou = true;
    if (substituirArquivo(caminho, estado.conteudo, estado.acesso, ligacao) != ZEL_OK ||
        identificar(caminho, ligacao, identidade) != Leitura::kLido)
        return arquivoIndisponivel();
    g.cadeias[nome] = identidade;
    return ZEL_OK;
}

int recuperar() {
    Gravador &g = gravador();
    Diario::Conteudo conteudo;
    g.cadeias.clear();
    g.processo = ::getpid();
    g.atrasado = true;
    switch (g.diario.ler(conteudo)) {
    case Leitura::kFalha:
        return arquivoIndisponivel();
    case Leitura::kInexistente:
        break;
    case Leitura::kLido:
        g.recomecar = conteudo.faltamUltimos;
        const EstadosDiario estados(conteudo);
        // As it was before anything is put right.
        const Identidade diretorio = identificarDiretorio(fnConfigurarPath(""));
        for (const auto &[nome, estado] : estados.arquivos())
            if (acertar(nome, estado, estados.foiRemovido(estado, diretorio)) != ZEL_OK)
                return arquivoIndisponivel();
    }
    g.atrasado = g.perdeu = false;
    return ZEL_OK;
}

Gravador::~Gravador() {
    // The end of the process is a quiet moment; a child that never called, or a reader, has nothing
    // to say. Nor has a process that ends in the middle of a call: what it was at is put right from
    // the journal.
    if (processo != ::getpid() || !mudou || diario.vazio()) return;
    try {
        if (const Vez vez; vez && diario.emDia()) esvaziar(0);
    } catch (...) {
        // The journal is read by the next process.
    }
}

// What is to be written, and a record of it that has room.
int planejarRegistro(std::span<const MudancaArquivo> mudancas, std::vector<Plano> &planos,
                     std::string &registro) {
    Gravador &g = gravador();
    if (const int plano = planejarTodas(mudancas, planos); plano != ZEL_OK) return plano;
    registro = registroDe(planos);
    if (g.diario.cabe(registro.size())) return ZEL_OK;
    if (esvaziar(registro.size()) != ZEL_OK) return arquivoIndisponivel();
    if (const int plano = planejarTodas(mudancas, planos); plano != ZEL_OK) return plano;
    registro = registroDe(planos);
    return g.diario.cabe(registro.size()) ? int{ZEL_OK} : g.diario.esvaziar(registro.size());
}

} // namespace

int acompanharDiario() {
    Gravador &g = gravador();
    if (g.processo == ::getpid() && !g.atrasado && g.diario.emDia()) return ZEL_OK;
    return recuperar();
}

int gravarJuntos(std::span<const MudancaArquivo> mudancas) {
    Gravador &g = gravador();
    if ((g.processo != ::getpid() || g.atrasado) && recuperar() != ZEL_OK)
        return arquivoIndisponivel();
    if (g.diario.abrirOuCriar() != ZEL_OK) return arquivoIndisponivel();
    if (g.recomecar && esvaziar(0) != ZEL_OK) return arquivoIndisponivel();
    std::vector<Plano> planos;
    std::string registro;
    if (const int plano = planejarRegistro(mudancas, planos, registro); plano != ZEL_OK)
        return plano;
    g.mudou = g.atrasado = true; // until every file has followed, even if the process ends here
    if (preparar(planos) != ZEL_OK || g.diario.acrescentar(registro) != ZEL_OK) {
        g.atrasado = false;
        abandonar(planos);
        return arquivoIndisponivel();
    }
    try {
        g.atrasado = !seguir(planos);
    } catch (...) {
        // Memory ran out; it has happened all the same, and the next call puts it right.
    }
    return ZEL_OK;
}

void aliviarDiario() {
    if (gravador().diario.passouDaMetade()) esvaziar(0);
}

void esquecerDiario() {
    gravador().diario.fechar();
    gravador().cadeias.clear();
    gravador().processo = 0;
}

} // namespace zel
