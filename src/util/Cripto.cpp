// SPDX-License-Identifier: MIT
#include "util/Cripto.h"

#include "ZEL_FelborFramework.h"
#include "util/Arquivo.h"
#include "util/Diretorio.h"
#include "util/Recusa.h"

#include <algorithm>

namespace zel {

namespace {

constexpr std::string_view kUltimaDanfe = "ultimadanfe.bin";
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

using Transformacao = std::string (*)(std::string_view texto, std::string_view chave);

// Reads the source whole before the target is touched: they may be the same file.
int transformarArquivo(std::string_view origem, std::string_view destino, std::string_view chave,
                       Transformacao transformar) {
    std::string conteudo;
    if (lerArquivo(std::string(origem.substr(0, kMaximoCaminho)), conteudo) != Leitura::kLido)
        return arquivoIndisponivel();
    return gravarDestino(std::string(destino.substr(0, kMaximoCaminho)),
                         transformar(conteudo, chave.substr(0, kMaximaChave)));
}

// The library's own files: a text with its terminating zero, both under the fixed key.
int fnCriptografarStringToArquivo(std::string_view texto, const std::string &caminho,
                                  Acesso acesso) {
    const std::string terminado = std::string(texto).append(1, '\0');
    return substituirArquivo(caminho, embaralhar(terminado, kChaveFixa), acesso);
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

int fnCriptografarArquivo(std::string_view origem, std::string_view destino,
                          std::string_view chave) {
    return transformarArquivo(origem, destino, chave, embaralhar);
}

int fnDescriptografarArquivo(std::string_view origem, std::string_view destino,
                             std::string_view chave) {
    return transformarArquivo(origem, destino, chave, desembaralhar);
}

int fnCriarArquivoContigencia(const std::string &caminho, std::string_view texto) {
    return fnCriptografarStringToArquivo(texto, caminho, Acesso::kUmask);
}

std::string fnDescriptBufferContingencia(std::string_view conteudo, std::string_view chave) {
    if (conteudo.size() > 1) conteudo.remove_suffix(1);
    return deslocar(conteudo, chave, -1);
}

int fnCriarArquivoCriptUltimaDanfe(std::string_view texto) {
    return fnCriptografarStringToArquivo(texto, fnConfigurarPath(kUltimaDanfe), Acesso::kPrivado);
}

int fnLerArquivoCriptUltimaDanfe(std::string &texto) {
    std::string conteudo;
    if (lerArquivo(fnConfigurarPath(kUltimaDanfe), conteudo, Ligacao::kNaoSeguida) !=
        Leitura::kLido)
        return arquivoIndisponivel();
    texto = desembaralhar(conteudo, kChaveFixa);
    texto.resize(std::min(texto.find('\0'), texto.size()));
    return ZEL_OK;
}

} // namespace zel
