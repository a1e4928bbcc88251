// SPDX-License-Identifier: MIT
#include "texto/Cripto.h"

#include <algorithm>

namespace zel {

namespace {

constexpr int kDeslocamento = 84;

// Adds (sentido 1) or takes away (sentido -1) the key byte and the constant from every byte.
std::string deslocar(std::string_view texto, std::string_view chave, int sentido) {
    constexpr std::string_view kChaveVazia("\0", 1);
    if (chave.empty()) chave = kChaveVazia;
    std::string resultado(texto);
    std::size_t daChave = 0;
    for (char &c : resultado) {
        const int passo = static_cast<unsigned char>(chave[daChave]) + kDeslocamento;
        c = static_cast<char>(static_cast<unsigned char>(c) + sentido * passo);
        if (++daChave == chave.size()) daChave = 0;
    }
    return resultado;
}

} // namespace

std::string embaralhar(std::string_view claro, std::string_view chave) {
    return deslocar(claro, chave, 1);
}

std::string desembaralhar(std::string_view embaralhado, std::string_view chave) {
    std::string claro = deslocar(embaralhado, chave, -1);
    claro.resize(std::min(claro.find('\xFF'), claro.size()));
    return claro;
}

std::string fnDescriptBufferContingencia(std::string_view conteudo, std::string_view chave) {
    if (conteudo.size() > 1) conteudo.remove_suffix(1);
    return deslocar(conteudo, chave, -1);
}

} // namespace zel
