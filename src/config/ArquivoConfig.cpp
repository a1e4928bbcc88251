#include "config/ArquivoConfig.h"

#include "config/VarreduraConfig.h"
#include "util/TextoXml.h"

#include <algorithm>
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
                    std::vector<Edicao> edicoes) {
    if (edicoes.empty()) return std::string(texto);
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
    // A value without its end tag would take in what is added behind it.
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
std::string completar(std::string_view original, const ValoresConfig &valores) {
    std::string texto(original);
    for (int volta = 0; volta < kMaximoVoltas; ++volta) {
        const auto varredura = varrerConfig(texto);
        auto edicoes = faltas(*varredura, valores);
        if (edicoes.empty()) return texto;
        texto = aplicar(texto, *varredura, std::move(edicoes));
    }
    return std::string(original);
}

} // namespace

ValoresConfig::ValoresConfig() {
    for (std::uint16_t i = 0; i < kTotalEntradas; ++i)
        if (stZELTAGs[i].tipo == TipoEntrada::kChave) definir(Chave{i}, stZELTAGs[i].padrao);
}

void ValoresConfig::definir(Chave chave, std::string_view valor) {
    textos_[donaDoValor(chave).indice] = cortarBytes(valor, stZELTAGs[chave.indice].tamanho);
}

std::string fnXML_CriarArquivo(const ValoresConfig &valores) {
    return escrever(0, kTotalEntradas - 1, valores);
}

std::optional<CargaConfig> fnXML_CarregarXML(std::string_view texto, const ValoresConfig &atuais) {
    const auto varredura = varrerConfig(texto);
    if (!varredura) return std::nullopt;
    CargaConfig carga{atuais, {}, varredura->inteira()};
    for (const ElementoConfig &elemento : varredura->entendidos())
        carga.valores.definir(elemento.chave, elemento.valor(texto));
    carga.texto = completar(texto, carga.valores);
    return carga;
}

std::optional<std::string> fnXML_AlterarArquivo(std::string_view texto,
                                                std::span<const Alteracao> alteracoes) {
    const auto varredura = varrerConfig(texto);
    if (!varredura) return std::nullopt;
    for (const Alteracao &alteracao : alteracoes)
        if (!varredura->presentes[alteracao.chave.indice]) return std::nullopt;
    std::vector<Edicao> edicoes;
    for (const ElementoConfig &elemento : varredura->elementos) {
        // Of two changes of one value the last one holds.
        const auto alteracao =
            std::find_if(alteracoes.rbegin(), alteracoes.rend(), [&](const Alteracao &candidata) {
                return donaDoValor(candidata.chave) == donaDoValor(elemento.chave);
            });
        if (alteracao == alteracoes.rend() || alteracao->valor == elemento.valor(texto)) continue;
        const std::string_view nome = stZELTAGs[elemento.chave.indice].nome;
        edicoes.push_back({elemento.inicio, elemento.fim,
                           elemento.forma == FormaElemento::kVazio
                               ? ">" + alteracao->valor + tagDeFim(nome)
                               : alteracao->valor});
    }
    return aplicar(texto, *varredura, std::move(edicoes));
}

} // namespace zel
