// SPDX-License-Identifier: MIT
#include "util/Gravacao.h"

#include "ZEL_FelborFramework.h"
#include "util/Descritor.h"
#include "util/Diario.h"
#include "util/Diretorio.h"
#include "util/EstadosDiario.h"
#include "util/Recusa.h"
#include "util/Trava.h"

#include <algorithm>
#include <map>
#include <pthread.h>
#include <set>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace zel {

namespace {

// A file that holds what the journal says.
struct Cadeia {
    Identidade identidade; // when that was last seen
    Descritor aberto;      // to write in its place, once that was done
    bool marcada = false;  // that is nobody else's identity
};

// What this process knows of the journal and of the files in it.
struct Gravador {
    Diario diario;
    std::uint64_t leituras = 0; // of the journal
    pid_t processo = 0;
    // Files that hold what the journal says, by name.
    std::map<std::string, Cadeia, std::less<>> cadeias;
    bool atrasado = false; // a file may lack what the journal has
    bool perdeu = false;   // a flush was refused: what a file seems to hold may not reach the disk
    bool mudou = false;    // this process changed a file
    Identidade diretorio;  // after this process's last change of names
    std::set<std::string> ausentes; // files of the journal that the next record is to call gone
    ~Gravador();
};

// Made by the first call that needs it, so that it goes before whatever it uses.
Gravador &gravador() {
    static Gravador unico;
    return unico;
}

// A child has what is open here as well; should it close every number, as a service does that
// starts, and open others, they would be taken for these.
[[maybe_unused]] const int kNaBifurcacao = ::pthread_atfork(nullptr, nullptr, esquecerDiario);

// One change on its way.
struct Plano {
    const MudancaArquivo *mudanca = nullptr;
    std::string caminho;
    std::string inteiro;  // a whole that took the place of an end
    bool noLugar = false; // written where the file stands
    bool existia = false;
    Identidade achada;      // where it existed
    bool seguida = false;   // stands as the journal left it
    bool aberta = false;    // was looked at where it is open
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

// Looks at the file, and whether it stands as the journal left it. One that is open need not be
// looked for, unless a link could lead elsewhere by now.
Leitura identificar(Plano &plano) {
    const auto cadeia = gravador().cadeias.find(plano.mudanca->nome);
    const bool conhecida = cadeia != gravador().cadeias.end();
    plano.aberta = conhecida && plano.mudanca->ligacao == Ligacao::kNaoSeguida &&
                   identificar(cadeia->second.aberto, plano.achada) &&
                   plano.achada == cadeia->second.identidade;
    plano.seguida = plano.aberta;
    if (plano.aberta) return Leitura::kLido;
    const Leitura leitura = identificar(plano.caminho, plano.mudanca->ligacao, plano.achada);
    plano.seguida =
        leitura == Leitura::kLido && conhecida && plano.achada == cadeia->second.identidade;
    return leitura;
}

// Whether a file holds what the caller takes it to hold; one that the journal left so does.
bool ehOSabido(const Plano &plano) {
    const auto &antes = plano.mudanca->antes;
    if (!plano.existia || !antes || plano.achada.tamanho != antes->size()) return false;
    std::string conteudo;
    return plano.seguida ||
           (lerArquivo(plano.caminho, conteudo, plano.mudanca->ligacao) == Leitura::kLido &&
            conteudo == *antes);
}

void planejarFim(Plano &plano, const MudancaArquivo::Fim &fim) {
    plano.noLugar = true;
    plano.trecho.forma = FormaMudanca::kTrecho;
    plano.trecho.lugar = fim.lugar;
    plano.trecho.retirados = fim.tamanho - fim.lugar;
    plano.trecho.bytes = plano.mudanca->depois;
    plano.registro = plano.trecho;
}

bool planejar(const MudancaArquivo &mudanca, Plano &plano) {
    plano.mudanca = &mudanca;
    plano.caminho = fnConfigurarPath(mudanca.nome);
    plano.trecho.nome = mudanca.nome;
    plano.trecho.acesso = mudanca.acesso;
    plano.trecho.ligacao = mudanca.ligacao;
    const Leitura leitura = identificar(plano);
    // A link that is not followed makes way.
    if (leitura == Leitura::kFalha && !ehLigacao(plano.caminho)) return false;
    plano.existia = leitura == Leitura::kLido;
    if (mudanca.fim && plano.existia && plano.achada.tamanho == mudanca.fim->tamanho) {
        planejarFim(plano, *mudanca.fim);
        if (plano.seguida) return true;
        // The journal does not know it yet.
        if (lerArquivo(plano.caminho, plano.inteiro, mudanca.ligacao) != Leitura::kLido)
            return false;
        plano.inteiro.resize(std::min(plano.inteiro.size(), mudanca.fim->lugar));
        plano.inteiro.append(mudanca.depois);
        plano.registro.forma = FormaMudanca::kInteira;
        plano.registro.lugar = plano.registro.retirados = 0;
        plano.registro.bytes = plano.inteiro;
        return true;
    }
    if (mudanca.fim) plano.inteiro = mudanca.fim->inteiro();
    plano.depois = mudanca.fim ? std::string_view(plano.inteiro) : mudanca.depois;
    const bool sabido = ehOSabido(plano);
    if (sabido) descreverTrecho(*mudanca.antes, plano.depois, plano.trecho);
    plano.noLugar = sabido && mudanca.antes->size() == plano.depois.size();
    plano.registro = plano.trecho;
    if (sabido && plano.seguida) return true;
    plano.registro.forma =
        leitura == Leitura::kInexistente ? FormaMudanca::kInteiraNova : FormaMudanca::kInteira;
    plano.registro.lugar = plano.registro.retirados = 0;
    plano.registro.bytes = plano.depois;
    return true;
}

bool planejarTodas(std::span<const MudancaArquivo> mudancas, std::vector<Plano> &planos) {
    planos.assign(mudancas.size(), {});
    for (std::size_t i = 0; i < mudancas.size(); ++i)
        if (!planejar(mudancas[i], planos[i])) return false;
    return true;
}

RegistroDiario registroDe(const std::vector<Plano> &planos) {
    std::vector<MudancaDiario> mudancas;
    std::vector<CarimboDiario> achados;
    for (const Plano &plano : planos) {
        mudancas.push_back(plano.registro);
        // What comes back after a power cut is told by it.
        if (plano.existia && !plano.seguida)
            achados.push_back({std::string(plano.mudanca->nome), plano.achada});
    }
    for (const std::string &nome : gravador().ausentes)
        achados.push_back({nome, {}});
    return gravador().diario.preparar(std::move(mudancas), std::move(achados));
}

void abandonar(const std::vector<Plano> &planos) {
    for (const Plano &plano : planos)
        if (!plano.noLugar) removerRascunho(plano.caminho, plano.mudanca->ligacao);
}

// New files are there, with room for their bytes, before anything has happened.
bool preparar(const std::vector<Plano> &planos) {
    return std::ranges::all_of(planos, [](const Plano &plano) {
        return plano.noLugar || escreverRascunho(plano.caminho, plano.depois, plano.mudanca->acesso,
                                                 plano.mudanca->ligacao);
    });
}

// Opens a file to write in its place, unless it is open. False where it is not the one that was
// looked at.
bool abrirSeguida(const Plano &plano, Cadeia &cadeia) {
    if (plano.aberta && cadeia.aberto.aberto()) return true;
    Identidade aberta;
    if (!identificar(cadeia.aberto, aberta)) cadeia.aberto.fechar();
    if (!plano.seguida || !cadeia.aberto.aberto()) {
        cadeia.aberto = abrirNoLugar(plano.caminho, plano.mudanca->ligacao);
        if (!identificar(cadeia.aberto, aberta)) return false;
    }
    return aberta == plano.achada;
}

// Writes a file in its place, and sees how it stands then. It stays open for the next time. False
// also where somebody was there since it was looked at, or another file has got its name: the next
// call puts right what stands there.
bool escreverSobre(const Plano &plano, Cadeia &cadeia) {
    if (!abrirSeguida(plano, cadeia)) return false;
    const auto escrever = [&] {
        return cadeia.aberto.escrever(plano.trecho.bytes, plano.trecho.lugar);
    };
    // Here, for the file is not the one that was looked at once a part of it is written.
    if (!escrever() && !escrever()) {
        // The host reads the same file under a number that it took from here.
        if (errno == EBADF) cadeia.aberto.soltar();
        return false;
    }
    if (!plano.mudanca->marcada) return identificar(cadeia.aberto, cadeia.identidade);
    // A file that people edit. Another one may have its name, or a link lead elsewhere.
    Identidade marcada;
    const bool marca = marcarEscrita(cadeia.aberto, marcada);
    if (identificar(plano.caminho, plano.mudanca->ligacao, cadeia.identidade) != Leitura::kLido ||
        cadeia.identidade.no != plano.achada.no)
        return false;
    cadeia.marcada = marca && cadeia.identidade == marcada;
    return true;
}

// Makes one change and sees how the file stands then.
bool aplicar(const Plano &plano, Cadeia &cadeia) {
    cadeia.marcada = false;
    if (plano.noLugar) return escreverSobre(plano, cadeia);
    const Ligacao ligacao = plano.mudanca->ligacao;
    cadeia.aberto.fechar();
    return instalarRascunho(plano.caminho, ligacao) &&
           identificar(plano.caminho, ligacao, cadeia.identidade) == Leitura::kLido;
}

// The record is on the disk: what fails from here on is put right later. Whether nothing did.
bool seguir(const std::vector<Plano> &planos) {
    Gravador &g = gravador();
    std::vector<CarimboDiario> carimbos;
    bool nomes = false, todos = true;
    for (const Plano &plano : planos) {
        const std::string nome(plano.mudanca->nome);
        Cadeia &cadeia = g.cadeias[nome];
        // What hinders it once may not hinder it twice.
        if (!aplicar(plano, cadeia) && !aplicar(plano, cadeia)) {
            todos = false;
            g.cadeias.erase(nome);
            continue;
        }
        nomes |= !plano.noLugar;
        carimbos.push_back({nome, cadeia.identidade});
    }
    if (nomes) {
        g.diretorio = identificarDiretorio(fnConfigurarPath(""));
        carimbos.push_back({"", g.diretorio});
    }
    g.diario.carimbar(std::move(carimbos));
    return todos;
}

// Flushes every file that the journal speaks of, and their names.
bool descarregarTudo() {
    for (const auto &[nome, cadeia] : gravador().cadeias) {
        // The configuration may be a link; no other file is followed.
        const std::string caminho = fnConfigurarPath(nome);
        if (!descarregarArquivo(caminho, Ligacao::kSeguida) && existeArquivo(caminho)) return false;
    }
    return descarregarDiretorio(fnConfigurarPath(""));
}

bool esvaziar(std::size_t tamanho) {
    Gravador &g = gravador();
    if (g.atrasado) return false;
    if (!descarregarTudo()) {
        g.perdeu = g.atrasado = true;
        return false;
    }
    // Of a damaged journal nobody knows which files it had.
    if (g.diario.danificado()) descarregarTudoQueHa(fnConfigurarPath(""));
    if (!g.diario.esvaziar(tamanho)) {
        g.atrasado = true;
        return false;
    }
    g.cadeias.clear();
    g.ausentes.clear();
    return true;
}

// Puts a file in the state that the journal has for it, unless somebody wrote it since; a missing
// one when it was not `removido`.
bool acertar(const std::string &nome, const EstadoDiario &estado, bool removido) {
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
        if (conteudo != estado.conteudo && estado.ehDeOutro(identidade)) return true;
        if (conteudo != estado.conteudo || g.perdeu) break;
        g.cadeias[nome] = {identidade, {}, false};
        return true;
    }
    g.mudou = true;
    if (substituirArquivo(caminho, estado.conteudo, estado.acesso, ligacao) != ZEL_OK ||
        identificar(caminho, ligacao, identidade) != Leitura::kLido)
        return false;
    g.cadeias[nome] = {identidade, {}, false};
    return true;
}

// Notes how every file stands that holds what the journal says: the process that wrote them did not
// come to it, and what somebody takes away from here on is to stay away.
void carimbarTudo() {
    std::vector<CarimboDiario> carimbos;
    for (const auto &[nome, cadeia] : gravador().cadeias)
        carimbos.push_back({nome, cadeia.identidade});
    carimbos.push_back({"", identificarDiretorio(fnConfigurarPath(""))});
    gravador().diario.carimbar(std::move(carimbos));
}

bool acertarTodos(const Diario::Conteudo &conteudo) {
    Gravador &g = gravador();
    const bool interrompido = !conteudo.registros.empty() && !conteudo.carimbos;
    // Nothing may follow a record that is not on the disk.
    if (interrompido && !g.diario.descarregar()) return false;
    const EstadosDiario estados(conteudo);
    // As it was before anything is put right.
    const Identidade diretorio = identificarDiretorio(fnConfigurarPath(""));
    for (const auto &[nome, estado] : estados.arquivos())
        if (!acertar(nome, estado, estados.foiRemovido(estado, diretorio))) return false;
    if (interrompido && !g.diario.danificado()) carimbarTudo();
    return true;
}

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

// Whether the journal is known and nothing was left undone.
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
        if (const Vez vez; vez && diario.emDia()) esvaziar(0);
    } catch (...) {
        // The journal is read by the next process.
    }
}

// Somebody changed names in the directory: the files that are gone are to stay so, although the
// directory will have a later time by names of this record.
void notarAusentes(const std::vector<Plano> &planos) {
    Gravador &g = gravador();
    const bool nomes = !std::ranges::all_of(planos, &Plano::noLugar);
    // One that is written anew is gone no more.
    const auto deixada = [&](const auto &cadeia) {
        return std::ranges::none_of(
            planos, [&](const Plano &plano) { return plano.mudanca->nome == cadeia.first; });
    };
    if (!nomes || !std::ranges::any_of(g.cadeias, deixada) ||
        identificarDiretorio(fnConfigurarPath("")) == g.diretorio)
        return;
    for (const auto &[nome, cadeia] : g.cadeias)
        if (!existeArquivo(fnConfigurarPath(nome))) g.ausentes.insert(nome);
}

// What is to be written, and a record of it that has room. Once the journal is empty it has the
// files whole, for which it may have to grow.
bool planejarRegistro(std::span<const MudancaArquivo> mudancas, std::vector<Plano> &planos,
                      std::string &registro) {
    Diario &diario = gravador().diario;
    constexpr int kVoltas = 3; // as it is, emptied, grown
    for (int volta = 0; volta < kVoltas; ++volta) {
        if (!planejarTodas(mudancas, planos)) return false;
        notarAusentes(planos);
        const RegistroDiario seguinte = registroDe(planos);
        const std::size_t tamanho = tamanhoRegistroDiario(seguinte);
        if (diario.cabe(tamanho)) {
            registro = escreverRegistroDiario(seguinte);
            return true;
        }
        if (!esvaziar(tamanho)) return false;
    }
    return false;
}

bool gravarTodos(std::span<const MudancaArquivo> mudancas) {
    Gravador &g = gravador();
    if (!acompanhado() && !recuperar()) return false;
    if (!g.diario.abrirOuCriar() || (g.diario.danificado() && !esvaziar(0))) return false;
    std::vector<Plano> planos;
    std::string registro;
    if (!planejarRegistro(mudancas, planos, registro)) return false;
    g.mudou = g.atrasado = true; // until every file has followed, even if the process ends here
    if (!preparar(planos) || !g.diario.acrescentar(registro)) {
        g.atrasado = false;
        abandonar(planos);
        return false;
    }
    for (const std::string &nome : std::exchange(g.ausentes, {}))
        g.cadeias.erase(nome);
    try {
        g.atrasado = !seguir(planos);
    } catch (...) {
        // Memory ran out; it has happened all the same, and the next call puts it right.
    }
    return true;
}

} // namespace

int acompanharDiario() {
    const bool meu = gravador().processo == Vez::processo();
    return (meu && acompanhado() && gravador().diario.emDia()) || recuperar()
               ? int{ZEL_OK}
               : arquivoIndisponivel();
}

int completarDiario() {
    return !gravador().atrasado || recuperar() ? int{ZEL_OK} : arquivoIndisponivel();
}

int gravarJuntos(std::span<const MudancaArquivo> mudancas) {
    return gravarTodos(mudancas) ? int{ZEL_OK} : arquivoIndisponivel();
}

std::optional<Identidade> identidadeMarcada(std::string_view nome) {
    const auto cadeia = gravador().cadeias.find(nome);
    if (cadeia == gravador().cadeias.end() || !cadeia->second.marcada) return {};
    return cadeia->second.identidade;
}

std::optional<Identidade> identidadeDeixada(std::string_view nome) {
    const auto cadeia = gravador().cadeias.find(nome);
    if (cadeia == gravador().cadeias.end()) return {};
    return cadeia->second.identidade;
}

std::uint64_t leiturasDoDiario() {
    return gravador().leituras;
}

void aliviarDiario() {
    Diario &diario = gravador().diario;
    // One that somebody moved away is nobody's to read after a power cut.
    if (diario.aberto() && !diario.temSeuNome())
        diario.fechar();
    else if (diario.passouDaMetade())
        esvaziar(0);
}

void esquecerDiario() {
    gravador().diario.fechar();
    gravador().cadeias.clear();
    gravador().processo = 0;
}

} // namespace zel
