// SPDX-License-Identifier: MIT
#include "diario/Gravacao.h"

#include "diario/Gravador.h"
#include "diario/Plano.h"
#include "disco/Diretorio.h"
#include "disco/Identidade.h"
#include "disco/Trava.h"
#include "recusa/Recusa.h"
#include "zel_felbor/codigos.h"

#include <algorithm>
#include <iterator>
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
struct Passo {
    const MudancaArquivo *mudanca = nullptr;
    std::string caminho{};
    ArquivoAchado achado{};
    bool aberto = false; // was looked at where it is open
    Plano plano{};
    Rascunho rascunho{}; // of one that is not written where it stands
    Cadeia *cadeia = nullptr;
    bool estreia = false; // the journal has nothing of the file yet
};

// All of them, and the record that they are.
struct Gravacao {
    std::vector<Passo> passos;
    std::vector<std::string> ausentes; // files of the journal that somebody took away
    std::string registro;
    bool mudaNomes() const {
        return std::ranges::any_of(passos, [](const Passo &passo) { return !passo.plano.noLugar; });
    }
    bool escreve(std::string_view nome) const {
        return std::ranges::any_of(passos,
                                   [&](const Passo &passo) { return passo.mudanca->nome == nome; });
    }
};

void esquecerCadeia(std::string_view nome) {
    auto &cadeias = gravador().cadeias;
    if (const auto cadeia = cadeias.find(nome); cadeia != cadeias.end()) cadeias.erase(cadeia);
}

// Looks at the file, and whether it stands as the journal left it. One that is open need not be
// looked for, unless a link could lead elsewhere by now.
Leitura procurar(Passo &passo) {
    const auto cadeia = gravador().cadeias.find(passo.mudanca->nome);
    const bool conhecida = cadeia != gravador().cadeias.end();
    auto &[existe, nomeLivre, achada, seguido, conteudo] = passo.achado;
    passo.aberto = seguido = conhecida && passo.mudanca->ligacao == Ligacao::kNaoSeguida &&
                             identificar(cadeia->second.aberto, achada) &&
                             achada == cadeia->second.identidade;
    if (passo.aberto) return Leitura::kLido;
    const Leitura leitura = identificar(passo.caminho, passo.mudanca->ligacao, achada);
    seguido = leitura == Leitura::kLido && conhecida && achada == cadeia->second.identidade;
    return leitura;
}

bool planejar(const MudancaArquivo &mudanca, Passo &passo) {
    passo.mudanca = &mudanca;
    passo.caminho = fnConfigurarPath(mudanca.nome);
    const Leitura leitura = procurar(passo);
    // A link that is not followed makes way.
    if (leitura == Leitura::kFalha && !ehLigacao(passo.caminho)) return false;
    ArquivoAchado &achado = passo.achado;
    achado.existe = leitura == Leitura::kLido;
    achado.nomeLivre = leitura == Leitura::kInexistente;
    if (precisaDoConteudo(mudanca, achado) &&
        lerArquivo(passo.caminho, achado.conteudo, mudanca.ligacao) != Leitura::kLido)
        return false;
    planejar(mudanca, achado, passo.plano);
    return true;
}

bool planejarTodos(std::span<const MudancaArquivo> mudancas, std::vector<Passo> &passos) {
    passos = std::vector<Passo>(mudancas.size());
    return std::ranges::equal(mudancas, passos, [](const MudancaArquivo &mudanca, Passo &passo) {
        return planejar(mudanca, passo);
    });
}

RegistroDiario registroDe(const Gravacao &gravacao) {
    std::vector<MudancaDiario> mudancas;
    for (const Passo &passo : gravacao.passos)
        std::ranges::copy(passo.plano.mudancas, std::back_inserter(mudancas));
    for (const std::string &nome : gravacao.ausentes)
        mudancas.push_back({.nome = nome, .forma = FormaMudanca::kLevada});
    return gravador().diario.preparar(std::move(mudancas));
}

// What takes memory once the record is on the disk, where nothing may fail for want of it.
void reservar(std::vector<Passo> &passos) {
    for (Passo &passo : passos) {
        if (!passo.plano.noLugar)
            passo.rascunho = rascunhoDe(passo.caminho, passo.mudanca->ligacao);
        const auto [lugar, nova] = gravador().cadeias.try_emplace(std::string(passo.mudanca->nome));
        passo.cadeia = &lugar->second;
        passo.estreia = nova;
    }
}

// New files are there, with room for their bytes, before anything has happened.
bool preparar(const Gravacao &gravacao) {
    return std::ranges::all_of(gravacao.passos, [&](const Passo &passo) {
        return passo.plano.noLugar || escreverRascunho(passo.rascunho, passo.plano.depois,
                                                       passo.mudanca->acesso, gravador().momento);
    });
}

void abandonar(const std::vector<Passo> &passos) {
    for (const Passo &passo : passos) {
        if (!passo.rascunho.nome.empty()) removerArquivo(passo.rascunho.nome);
        if (passo.estreia) esquecerCadeia(passo.mudanca->nome);
    }
}

// Opens a file to write in its place, unless it is open. False where it is not the one that was
// looked at.
bool abrirSeguido(const Passo &passo, Cadeia &cadeia) {
    if (passo.aberto && cadeia.aberto.aberto()) return true;
    Identidade aberta;
    if (!passo.achado.seguido || !identificar(cadeia.aberto, aberta))
        cadeia.aberto = abrirNoLugar(passo.caminho, passo.mudanca->ligacao, aberta);
    return cadeia.aberto.aberto() && aberta == passo.achado.identidade;
}

// What hinders a step once may not hinder it twice.
template <class Tentar>
bool duasVezes(Tentar tentar) {
    bool certo = false;
    for (int vez = 0; vez < 2 && !certo; ++vez)
        certo = tentar();
    return certo;
}

bool escreverTrechos(const Passo &passo, const Cadeia &cadeia) {
    return std::ranges::all_of(passo.plano.mudancas, [&](const MudancaDiario &mudanca) {
        return mudanca.forma != FormaMudanca::kTrecho ||
               cadeia.aberto.escrever(mudanca.bytes, mudanca.lugar);
    });
}

// Writes a file in its place, and sees how it stands then. It stays open for the next time. False
// also where somebody was there since it was looked at, or another file has got its name: the next
// call puts right what stands there.
bool escreverSobre(const Passo &passo, Cadeia &cadeia) {
    if (!abrirSeguido(passo, cadeia)) return false;
    // Twice here, for the file is not the one that was looked at once a part of it is written.
    if (!duasVezes([&] { return escreverTrechos(passo, cadeia); })) {
        // The host reads the same file under a number that it took from here.
        if (errno == EBADF) cadeia.aberto.soltar();
        return false;
    }
    // Another one may have its name, or a link lead elsewhere.
    return marcarEscrita(cadeia.aberto, gravador().momento, cadeia.identidade,
                         [&](Identidade &identidade) {
                             return identificar(passo.caminho, passo.mudanca->ligacao,
                                                identidade) == Leitura::kLido &&
                                    identidade.no == passo.achado.identidade.no;
                         });
}

// Makes one change and sees how the file stands then.
bool aplicar(const Passo &passo) {
    Cadeia &cadeia = *passo.cadeia;
    if (passo.plano.noLugar) return escreverSobre(passo, cadeia);
    cadeia.aberto.fechar();
    if (!instalarRascunho(passo.rascunho)) return false;
    const Leitura leitura = identificar(passo.caminho, passo.mudanca->ligacao, cadeia.identidade);
    // Whoever waited for the file may have taken it already.
    if (leitura == Leitura::kInexistente) cadeia.identidade = {};
    return leitura != Leitura::kFalha;
}

// When everything had followed, as the file system's own clock has it: what changes later gets a
// later time, or the same one where that clock has not moved on.
std::int64_t quandoSeguiu(const Gravacao &gravacao) {
    std::int64_t quando = 0;
    for (const Passo &passo : gravacao.passos)
        quando = std::max(quando, passo.cadeia->identidade.mudanca);
    if (!gravacao.mudaNomes()) return quando;
    const std::int64_t nomes = identificarDiretorio(fnConfigurarPath("")).mudanca;
    return std::max(quando, nomes != 0 ? nomes : agora());
}

// The record is on the disk: what fails from here on is put right later. Whether nothing did.
bool seguir(const Gravacao &gravacao) {
    Gravador &g = gravador();
    bool todos = true;
    for (const Passo &passo : gravacao.passos) {
        if (duasVezes([&] { return aplicar(passo); })) continue;
        todos = false;
        esquecerCadeia(passo.mudanca->nome);
    }
    for (const std::string &nome : gravacao.ausentes)
        esquecerCadeia(nome);
    try {
        g.diario.encerrar(todos ? quandoSeguiu(gravacao) : 0);
    } catch (...) {
        // The files have followed all the same; without memory for it the next process does
        // without.
    }
    return todos;
}

// The files that are gone are to stay so, although the directory gets a later time by names of this
// record.
void notarAusentes(Gravacao &gravacao) {
    gravacao.ausentes.clear();
    if (!gravacao.mudaNomes()) return;
    for (const auto &[nome, cadeia] : gravador().cadeias)
        if (!gravacao.escreve(nome) && !existeArquivo(fnConfigurarPath(nome)))
            gravacao.ausentes.push_back(nome);
}

// What is to be written, and a record of it that has room. Once the journal is empty it has the
// files whole, for which it may have to grow.
bool planejar(std::span<const MudancaArquivo> mudancas, Gravacao &gravacao) {
    Diario &diario = gravador().diario;
    constexpr int kVoltas = 3; // as it is, emptied, grown
    for (int volta = 0; volta < kVoltas; ++volta) {
        if (!planejarTodos(mudancas, gravacao.passos)) return false;
        notarAusentes(gravacao);
        const RegistroDiario seguinte = registroDe(gravacao);
        const std::size_t tamanho = tamanhoRegistroDiario(seguinte);
        if (diario.cabe(tamanho)) {
            gravador().momento = seguinte.momento;
            gravacao.registro = escreverRegistroDiario(seguinte);
            return true;
        }
        if (!esvaziarDiario(tamanho)) return false;
    }
    return false;
}

// New files, and the record with which it happens; or nothing of it.
bool registrar(Gravacao &gravacao) {
    Gravador &g = gravador();
    const auto desfazer = [&] {
        g.atrasado = false;
        abandonar(gravacao.passos);
        return false;
    };
    try {
        reservar(gravacao.passos);
        g.mudou = g.atrasado = true; // until every file has followed, even if the process ends here
        return (preparar(gravacao) && g.diario.acrescentar(gravacao.registro)) || desfazer();
    } catch (...) {
        desfazer();
        throw;
    }
}

bool gravarTodos(std::span<const MudancaArquivo> mudancas) {
    Gravador &g = gravador();
    if (!acompanhado() && !recuperar()) return false;
    if (!g.diario.abrirOuCriar() || (g.diario.danificado() && !esvaziarDiario(0))) return false;
    Gravacao gravacao;
    if (!planejar(mudancas, gravacao) || !registrar(gravacao)) return false;
    g.atrasado = !seguir(gravacao);
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
    const auto deixada = identidadeDeixada(nome);
    return deixada && ehEscritaDe(deixada->escrita, gravador().momento) ? deixada : std::nullopt;
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
