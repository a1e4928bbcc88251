// SPDX-License-Identifier: MIT
// Looks at files without changing any: the library is not asked, for it completes what it loads.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <sys/types.h>

namespace zel::aplicativo {

inline constexpr std::size_t kMaximoConfig = 4U << 20;
inline constexpr std::size_t kMaximoDocumento = 16U << 20;

enum class Leitura { kLido, kInexistente, kFalha };

// Reads a whole regular file of at most `maximo` bytes. `motivo` says why it could not be read.
Leitura lerArquivo(const std::string &caminho, std::size_t maximo, std::string &conteudo,
                   std::string &motivo);

enum class TipoArquivo { kNenhum, kRegular, kDiretorio, kOutro };
struct DadosArquivo {
    TipoArquivo tipo = TipoArquivo::kNenhum;
    mode_t modo = 0;
};
// Links are followed.
DadosArquivo olhar(const std::string &caminho);

// Where a symbolic link leads that leads to nothing; empty for anything else.
std::string ligacaoSemAlvo(const std::string &caminho);

// Whether the user who runs the command may write there.
bool podeGravar(const std::string &caminho);

// The path without links and dots, ending in "/"; none when it is no directory.
std::optional<std::string> diretorioInteiro(const std::string &caminho);

// Whether another process holds the receipt of the data directory (its path ends in "/").
bool cupomComOutroProcesso(const std::string &diretorio);

} // namespace zel::aplicativo
