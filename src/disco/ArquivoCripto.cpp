// SPDX-License-Identifier: MIT
#include "disco/ArquivoCripto.h"

#include "comum/ArquivosDoCaixa.h"
#include "disco/Arquivo.h"
#include "disco/Diretorio.h"
#include "recusa/Recusa.h"
#include "texto/Cripto.h"
#include "zel_felbor/codigos.h"

#include <algorithm>

namespace zel {

namespace {

using arquivos::kUltimaDanfe;

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
