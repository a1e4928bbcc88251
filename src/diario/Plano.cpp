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
        trecho.retirados = retirados;
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

MudancaDiario inteira(const MudancaDiario &modelo, std::string_view bytes, bool nova) {
    MudancaDiario mudanca = modelo;
    mudanca.forma = nova ? FormaMudanca::kInteiraNova : FormaMudanca::kInteira;
    mudanca.bytes = bytes;
    return mudanca;
}

bool ehDoTamanho(const ArquivoAchado &achado, std::size_t tamanho) {
    return achado.existe && achado.identidade.tamanho == tamanho;
}

// A new end of the file that was left. The journal gets it whole where it does not know it yet.
void planejarFim(const MudancaArquivo &mudanca, const ArquivoAchado &achado,
                 const MudancaDiario &modelo, Plano &plano) {
    const MudancaArquivo::Fim &fim = *mudanca.fim;
    MudancaDiario trecho = modelo;
    trecho.lugar = fim.lugar;
    trecho.retirados = fim.tamanho - fim.lugar;
    trecho.bytes = mudanca.depois;
    plano.noLugar = trecho.noLugar = true;
    if (!achado.seguido) {
        plano.inteiro = achado.conteudo.substr(0, fim.lugar).append(mudanca.depois);
        plano.mudancas.push_back(inteira(modelo, plano.inteiro, false));
        trecho.retirados = trecho.bytes.size(); // of the whole
    }
    plano.mudancas.push_back(trecho);
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
    if (mudanca.fim && ehDoTamanho(achado, mudanca.fim->tamanho))
        return planejarFim(mudanca, achado, modelo, plano);
    if (mudanca.fim) plano.inteiro = mudanca.fim->inteiro();
    plano.depois = mudanca.fim ? std::string_view(plano.inteiro) : mudanca.depois;
    // What the caller takes it to hold; one that the journal left so does.
    const bool sabido = mudanca.antes && ehDoTamanho(achado, mudanca.antes->size()) &&
                        (achado.seguido || achado.conteudo == *mudanca.antes);
    std::vector<MudancaDiario> trechos;
    if (sabido) trechos = diferencas(*mudanca.antes, plano.depois, modelo);
    plano.noLugar = sabido && mudanca.antes->size() == plano.depois.size() &&
                    trechos.front().retirados <= kNoLugar;
    for (MudancaDiario &trecho : trechos)
        trecho.noLugar = plano.noLugar;
    if (!sabido || !achado.seguido)
        plano.mudancas.push_back(inteira(modelo, plano.depois, achado.nomeLivre));
    if (plano.noLugar || plano.mudancas.empty())
        plano.mudancas.insert(plano.mudancas.end(), trechos.begin(), trechos.end());
}

} // namespace zel
