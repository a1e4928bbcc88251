// SPDX-License-Identifier: MIT
#include "diario/Gravacao.h"

#include "diario/Gravador.h"
#include "disco/Diretorio.h"
#include "disco/Identidade.h"
#include "disco/Trava.h"
#include "recusa/Recusa.h"
#include "zel_felbor/codigos.h"

#include <algorithm>
#include <pthread.h>
#include <string>
#include <utility>
#include <vector>

namespace zel {

namespace {

// A child has what is open here as well; should it close every number, as a service does that
// starts, and open others, they would be taken for these.
[[maybe_unused]] const int kNaBifurcacao = ::pthread_atfork(nullptr, nullptr, esquecerDiario);

// One change on its way.
struct Plano {
    const MudancaArquivo *mudanca = nullptr;
    std::string caminho;
    Rascunho rascunho;        // of one that is not written where it stands
    Cadeia *cadeia = nullptr; // none where it was not followed
    bool estreia = false;     // the journal has nothing of the file yet
    std::string inteiro;      // a whole that took the place of an end
    bool noLugar = false;     // written where the file stands
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

void esquecerCadeia(std::string_view nome) {
    auto &cadeias = gravador().cadeias;
    if (const auto cadeia = cadeias.find(nome); cadeia != cadeias.end()) cadeias.erase(cadeia);
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

// What takes memory once the record is on the disk, where nothing may fail for want of it.
void reservar(std::vector<Plano> &planos) {
    for (Plano &plano : planos) {
        if (!plano.noLugar) plano.rascunho = rascunhoDe(plano.caminho, plano.mudanca->ligacao);
        const auto [lugar, nova] = gravador().cadeias.try_emplace(std::string(plano.mudanca->nome));
        plano.cadeia = &lugar->second;
        plano.estreia = nova;
    }
}

// New files are there, with room for their bytes, before anything has happened.
bool preparar(const std::vector<Plano> &planos) {
    return std::ranges::all_of(planos, [](const Plano &plano) {
        return plano.noLugar ||
               escreverRascunho(plano.rascunho, plano.depois, plano.mudanca->acesso);
    });
}

void abandonar(const std::vector<Plano> &planos) {
    for (const Plano &plano : planos) {
        if (!plano.rascunho.nome.empty()) removerArquivo(plano.rascunho.nome);
        if (plano.estreia) esquecerCadeia(plano.mudanca->nome);
    }
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
    cadeia.aberto.fechar();
    return instalarRascunho(plano.rascunho) &&
           identificar(plano.caminho, plano.mudanca->ligacao, cadeia.identidade) == Leitura::kLido;
}

// Notes how the files stand that have followed the record; without memory for it the next process
// does without.
void carimbarSeguidas(const std::vector<Plano> &planos) {
    Gravador &g = gravador();
    try {
        std::vector<CarimboDiario> carimbos;
        for (const Plano &plano : planos)
            if (plano.cadeia != nullptr)
                carimbos.push_back({std::string(plano.mudanca->nome), plano.cadeia->identidade});
        if (!std::ranges::all_of(planos, &Plano::noLugar)) {
            g.diretorio = identificarDiretorio(fnConfigurarPath(""));
            carimbos.push_back({"", g.diretorio});
        }
        g.diario.carimbar(std::move(carimbos));
    } catch (...) {
        // The files have followed all the same.
    }
}

// The record is on the disk: what fails from here on is put right later. Whether nothing did.
bool seguir(std::vector<Plano> &planos) {
    bool todos = true;
    for (Plano &plano : planos) {
        // What hinders it once may not hinder it twice.
        if (aplicar(plano, *plano.cadeia) || aplicar(plano, *plano.cadeia)) continue;
        todos = false;
        esquecerCadeia(plano.mudanca->nome);
        plano.cadeia = nullptr;
    }
    carimbarSeguidas(planos);
    return todos;
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
        if (!esvaziarDiario(tamanho)) return false;
    }
    return false;
}

// New files, and the record with which it happens; or nothing of it.
bool registrar(std::vector<Plano> &planos, const std::string &registro) {
    Gravador &g = gravador();
    bool feito = false;
    try {
        reservar(planos);
        g.mudou = g.atrasado = true; // until every file has followed, even if the process ends here
        feito = preparar(planos) && g.diario.acrescentar(registro);
    } catch (...) {
        g.atrasado = false;
        abandonar(planos);
        throw;
    }
    if (feito) return true;
    g.atrasado = false;
    abandonar(planos);
    return false;
}

bool gravarTodos(std::span<const MudancaArquivo> mudancas) {
    Gravador &g = gravador();
    if (!acompanhado() && !recuperar()) return false;
    if (!g.diario.abrirOuCriar() || (g.diario.danificado() && !esvaziarDiario(0))) return false;
    std::vector<Plano> planos;
    std::string registro;
    if (!planejarRegistro(mudancas, planos, registro)) return false;
    if (!registrar(planos, registro)) return false;
    const auto escrita = [&](const std::string &nome) {
        return std::ranges::any_of(planos,
                                   [&](const Plano &plano) { return plano.mudanca->nome == nome; });
    };
    for (const std::string &nome : std::exchange(g.ausentes, {}))
        if (!escrita(nome)) g.cadeias.erase(nome);
    g.atrasado = !seguir(planos);
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
        esvaziarDiario(0);
}

void esquecerDiario() {
    gravador().diario.fechar();
    gravador().cadeias.clear();
    gravador().processo = 0;
}

} // namespace zel
