// SPDX-License-Identifier: MIT
#include "config/ArquivoConfig.h"

#include "texto/TextoXml.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace zel {

namespace {

constexpr int kMaximoVoltas = 8;

// A piece of the text and what takes its place.
struct Edicao {
    std::size_t inicio;
    std::size_t fim;
    std::string texto;
};

std::string aplicar(std::string_view texto, const Varredura &varredura,
                    std::vector<Edicao> &edicoes) {
    // Pieces added at one place keep their order.
    std::stable_sort(edicoes.begin(), edicoes.end(),
                     [](const Edicao &a, const Edicao &b) { return a.inicio < b.inicio; });
    if (varredura.fimDaRaiz < texto.size()) texto = texto.substr(0, varredura.fimDaRaiz + 1);
    std::string resultado;
    std::size_t copiado = 0;
    for (const Edicao &edicao : edicoes) {
        resultado.append(texto.substr(copiado, edicao.inicio - copiado)).append(edicao.texto);
        copiado = edicao.fim;
    }
    return resultado.append(texto.substr(copiado));
}

// Moves the places of a text in which every element was understood past new values.
void deslocar(Varredura &varredura, const std::vector<Edicao> &edicoes) {
    // `ateAqui`: a value at the place itself pushes it on.
    const auto mover = [&](std::size_t &lugar, bool ateAqui) {
        if (lugar == kAusente) return;
        std::size_t cresceu = 0; // modulo: a text may shrink
        for (const Edicao &edicao : edicoes)
            if (edicao.inicio < lugar || (ateAqui && edicao.inicio == lugar))
                cresceu += edicao.texto.size() - (edicao.fim - edicao.inicio);
        lugar += cresceu;
    };
    for (ElementoConfig &elemento : varredura.elementos) {
        mover(elemento.inicio, false);
        mover(elemento.fim, true);
    }
    for (FimDeGrupo &fim : varredura.fimDosGrupos) {
        mover(fim.inicio, true);
        mover(fim.fim, true);
    }
    mover(varredura.fimDaRaiz, true);
}

std::string tagDeFim(std::string_view nome) {
    return std::string("</").append(nome).append(">");
}

// The lines of the entries from `inicio` up to and including `fim`.
std::string escrever(std::size_t inicio, std::size_t fim, const ValoresConfig &valores) {
    std::string linhas;
    for (std::size_t i = inicio; i <= fim; ++i) {
        const std::string_view nome = stZELTAGs[i].nome;
        linhas.append(std::size_t{2} * kLugares[i].nivel, ' ').append("<").append(nome).append(">");
        if (stZELTAGs[i].tipo == TipoEntrada::kChave)
            linhas.append(valores[Chave{static_cast<std::uint16_t>(i)}]).append(tagDeFim(nome));
        linhas.append("\r\n");
    }
    return linhas;
}

// What the text lacks.
std::vector<Edicao> faltas(const Varredura &varredura, const ValoresConfig &valores) {
    std::vector<Edicao> edicoes;
    // A value without its end tag would take in what is added after it.
    for (const ElementoConfig &elemento : varredura.elementos)
        if (elemento.forma == FormaElemento::kSemFim)
            edicoes.push_back(
                {elemento.fim, elemento.fim, tagDeFim(stZELTAGs[elemento.chave.indice].nome)});
    for (std::size_t i = 1; i + 1 < kTotalEntradas; ++i) {
        if (stZELTAGs[i].tipo == TipoEntrada::kFechaGrupo || varredura.presentes[i]) continue;
        const std::uint16_t grupo = kLugares[i].grupo;
        const FimDeGrupo &lugar = varredura.fimDosGrupos[grupo];
        const std::size_t recuo = std::size_t{2} * kLugares[grupo].nivel;
        if (lugar.vazio()) {
            // It gets an end tag on a line of its own, and then what it lacks like any other.
            const std::string fim = ">\r\n" + std::string(recuo, ' ');
            edicoes.push_back({lugar.inicio, lugar.fim, fim + tagDeFim(stZELTAGs[grupo].nome)});
            i = kLugares[grupo].fim;
            continue;
        }
        if (lugar.existe()) {
            // The end tag's own indentation begins the new lines; another one is left for it.
            std::string linhas = escrever(i, kLugares[i].fim, valores).substr(recuo);
            linhas.append(recuo, ' ');
            edicoes.push_back({lugar.inicio, lugar.fim, std::move(linhas)});
        }
        i = kLugares[i].fim;
    }
    return edicoes;
}

// An empty group is opened before it is filled; in a torn text, what is added may end an element
// that had no end and so hide others: what is lacking then is looked for again. A text that is
// never complete stays as it is, for what one load added, the next would add again.
TextoConfig completar(TextoConfig original, const ValoresConfig &valores) {
    TextoConfig atual = original;
    for (int volta = 0; volta < kMaximoVoltas; ++volta) {
        auto edicoes = faltas(atual.varredura, valores);
        if (edicoes.empty()) return atual;
        atual = *localizar(aplicar(atual.texto, atual.varredura, edicoes));
    }
    return original;
}

} // namespace

ValoresConfig::ValoresConfig() {
    for (std::uint16_t i = 0; i < kTotalEntradas; ++i)
        if (stZELTAGs[i].tipo == TipoEntrada::kChave) definir(Chave{i}, stZELTAGs[i].padrao);
}

void ValoresConfig::definir(Chave chave, std::string_view valor) {
    textos_[donaDoValor(chave).indice] = cortarBytes(valor, stZELTAGs[chave.indice].tamanho);
}

void ValoresConfig::assumir(Alteracao &&alteracao) noexcept {
    textos_[donaDoValor(alteracao.chave).indice] = std::move(alteracao.valor);
}

std::string fnXML_CriarArquivo(const ValoresConfig &valores) {
    return escrever(0, kTotalEntradas - 1, valores);
}

std::optional<TextoConfig> localizar(std::string texto) {
    auto varredura = varrerConfig(texto);
    if (!varredura) return std::nullopt;
    return TextoConfig{std::move(texto), std::move(*varredura)};
}

std::optional<CargaConfig> fnXML_CarregarXML(std::string_view texto, const ValoresConfig &atuais) {
    auto lido = localizar(std::string(texto));
    if (!lido) return std::nullopt;
    CargaConfig carga{atuais, {}, lido->varredura.inteira()};
    for (const ElementoConfig &elemento : lido->varredura.entendidos())
        carga.valores.definir(elemento.chave, elemento.valor(texto));
    carga.arquivo = completar(std::move(*lido), carga.valores);
    return carga;
}

std::optional<TextoConfig> fnXML_AlterarArquivo(const TextoConfig &atual,
                                                std::span<const Alteracao> alteracoes) {
    const Varredura &varredura = atual.varredura;
    for (const Alteracao &alteracao : alteracoes)
        if (!varredura.presentes[alteracao.chave.indice]) return std::nullopt;
    std::vector<Edicao> edicoes;
    bool completos = true;
    for (const ElementoConfig &elemento : varredura.elementos) {
        // Of two changes of one value the last one holds.
        const auto alteracao =
            std::find_if(alteracoes.rbegin(), alteracoes.rend(), [&](const Alteracao &candidata) {
                return donaDoValor(candidata.chave) == donaDoValor(elemento.chave);
            });
        if (alteracao == alteracoes.rend() || alteracao->valor == elemento.valor(atual.texto))
            continue;
        const std::string_view nome = stZELTAGs[elemento.chave.indice].nome;
        const bool vazio = elemento.forma == FormaElemento::kVazio;
        completos = completos && !vazio;
        edicoes.push_back({elemento.inicio, elemento.fim,
                           vazio ? ">" + alteracao->valor + tagDeFim(nome) : alteracao->valor});
    }
    if (edicoes.empty()) return atual;
    std::string texto = aplicar(atual.texto, varredura, edicoes);
    if (!completos || !varredura.inteira()) return localizar(std::move(texto));
    TextoConfig novo{std::move(texto), varredura};
    deslocar(novo.varredura, edicoes);
    return novo;
}

} // namespace zel
