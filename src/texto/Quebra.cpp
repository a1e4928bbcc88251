// SPDX-License-Identifier: MIT
#include "texto/Quebra.h"

#include <algorithm>

namespace zel {

namespace {

constexpr std::size_t kMaximoRecuo = 99;

// The one character beyond the width is wanted: a text that just misses the line keeps together.
constexpr std::size_t kTolerancia = 1;

void quebrar(std::string &resultado, std::string_view trecho, std::size_t largura) {
    while (trecho.size() > largura && trecho.size() - largura > kTolerancia) {
        resultado.append(trecho.substr(0, largura)).push_back('\n');
        trecho.remove_prefix(largura);
    }
    resultado.append(trecho);
}

} // namespace

std::string fnQuabraLinhaLayout(std::string_view texto, std::size_t largura) {
    if (largura == 0) return std::string(texto);
    std::string resultado;
    const std::size_t ultima = texto.rfind('\n');
    if (ultima == texto.npos) {
        quebrar(resultado, texto, largura);
        return resultado;
    }
    std::size_t inicio = 0;
    while (inicio <= ultima) {
        const std::size_t fim = texto.find('\n', inicio);
        quebrar(resultado, texto.substr(inicio, fim - inicio), largura);
        resultado.push_back('\n');
        inicio = fim + 1;
    }
    return resultado.append(texto.substr(inicio));
}

std::string fnCentralizarLayout(std::string_view texto, std::size_t largura) {
    const std::string linhas = fnQuabraLinhaLayout(texto, largura);
    std::string resultado;
    for (std::string_view resto = linhas; !resto.empty();) {
        const std::size_t tamanho = std::min(resto.find('\n'), resto.size());
        const std::size_t recuo = tamanho < largura ? (largura - tamanho) / 2 : 0;
        resultado.append(std::min(recuo, kMaximoRecuo), ' ');
        const std::size_t linha = std::min(tamanho + 1, resto.size()); // with its "\n"
        resultado.append(resto.substr(0, linha));
        resto.remove_prefix(linha);
    }
    return resultado;
}

} // namespace zel
