// SPDX-License-Identifier: MIT
#include "diario/Plano.h"

#include <algorithm>

namespace zel {

namespace {

// A file that keeps its size is written in its place where no more bytes of it change.
constexpr std::size_t kNoLugar = kSetor;

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

// The bytes that differ, as one piece; of a file that keeps its size, as several that are to be
// written in its place when they are few (kNoLugar).
std::vector<MudancaDiario> diferencas(std::string_view antes, std::string_view depois,
                                      MudancaDiario trecho) {
    constexpr std::size_t kJuntos = 64, kMuitos = 8; // equal bytes between two pieces; pieces
    const std::size_t comum = std::min(antes.size(), depois.size());
    const std::size_t inicio = iguais<Ponta::kInicio>(antes, depois, comum);
    const std::size_t resto = iguais<Ponta::kFim>(antes, depois, comum - inicio);
    const auto pedaco = [&](std::size_t de, std::size_t ate, std::size_t retirados) {
        trecho.lugar = de;
        trecho.antes = retirados;
        trecho.bytes = depois.substr(de, ate - de);
        return trecho;
    };
    const std::size_t fim = depois.size() - resto;
    std::vector<MudancaDiario> trechos;
    std::size_t total = 0;
    for (std::size_t de = inicio, i = de; antes.size() == depois.size() && i < fim;) {
        while (i < fim && antes[i] != depois[i])
            ++i;
        const std::size_t n = iguais<Ponta::kInicio>(antes.substr(i), depois.substr(i), fim - i);
        if (n >= kJuntos || i + n == fim) {
            trechos.push_back(pedaco(de, i, i - de));
            total += i - de;
            de = i + n;
        }
        i += n;
    }
    if (!trechos.empty() && trechos.size() <= kMuitos && total <= kNoLugar) return trechos;
    return {pedaco(inicio, fim, antes.size() - resto - inicio)};
}

// The whole of a file, and when the one that was found had been written and changed.
MudancaDiario inteira(MudancaDiario modelo, std::string_view bytes, const ArquivoAchado &achado) {
    modelo.forma = achado.nomeLivre ? FormaMudanca::kInteiraNova : FormaMudanca::kInteira;
    modelo.lugar = static_cast<std::uint64_t>(achado.identidade.escrita);
    modelo.antes = static_cast<std::uint64_t>(achado.identidade.mudanca);
    modelo.bytes = bytes;
    return modelo;
}

bool ehDoTamanho(const ArquivoAchado &achado, std::size_t tamanho) {
    return achado.existe && achado.identidade.tamanho == tamanho;
}

// Written where it stands: the journal gets what it holds where it does not know that yet.
void noLugar(std::vector<MudancaDiario> trechos, MudancaDiario modelo, std::string_view antes,
             const ArquivoAchado &achado, Plano &plano) {
    plano.noLugar = modelo.noLugar = true;
    if (!achado.seguido) plano.mudancas.push_back(inteira(modelo, antes, achado));
    for (MudancaDiario &trecho : trechos) {
        trecho.noLugar = true;
        trecho.antes = achado.identidade.no;
        plano.mudancas.push_back(trecho);
    }
}

} // namespace

bool precisaDoConteudo(const MudancaArquivo &mudanca, const ArquivoAchado &achado) {
    if (achado.seguido) return false;
    return (mudanca.fim && ehDoTamanho(achado, mudanca.fim->tamanho)) ||
           (mudanca.antes && ehDoTamanho(achado, mudanca.antes->size()));
}

void planejar(const MudancaArquivo &mudanca, const ArquivoAchado &achado, Plano &plano) {
    const MudancaDiario modelo{.nome = mudanca.nome,
                               .forma = FormaMudanca::kTrecho,
                               .acesso = mudanca.acesso,
                               .ligacao = mudanca.ligacao,
                               .bytes = {},
                               .noLugar = false};
    if (mudanca.fim && ehDoTamanho(achado, mudanca.fim->tamanho)) {
        MudancaDiario fim = modelo;
        fim.lugar = mudanca.fim->lugar;
        fim.bytes = mudanca.depois;
        return noLugar({fim}, modelo, achado.conteudo, achado, plano);
    }
    if (mudanca.fim) plano.inteiro = mudanca.fim->inteiro();
    plano.depois = mudanca.fim ? std::string_view(plano.inteiro) : mudanca.depois;
    // What the caller takes it to hold; one that the journal left so does.
    const bool sabido = mudanca.antes && ehDoTamanho(achado, mudanca.antes->size()) &&
                        (achado.seguido || achado.conteudo == *mudanca.antes);
    std::vector<MudancaDiario> trechos;
    if (sabido) trechos = diferencas(*mudanca.antes, plano.depois, modelo);
    if (sabido && mudanca.antes->size() == plano.depois.size() && trechos.front().antes <= kNoLugar)
        return noLugar(trechos, modelo, *mudanca.antes, achado, plano);
    if (sabido && achado.seguido)
        plano.mudancas = trechos;
    else
        plano.mudancas.push_back(inteira(modelo, plano.depois, achado));
}

} // namespace zel
