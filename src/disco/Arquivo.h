// SPDX-License-Identifier: MIT
// The files of the library, and those that the application names. A file is read whole, replaced
// whole or not at all, changed within one sector, or extended by one record; success means that the
// change is on the disk (written, flushed, renamed, directory flushed). Interrupted calls are
// repeated. What answers ZEL_OK or ZEL_ARQUIVO_INDISPONIVEL is handed on as it is; what answers
// false has kept the file and errno for whoever refuses (Recusa.h). Where a disk that refuses to be
// flushed refuses the way back as well, the change stands and is answered as done: a refused sale
// must not come back to life with the next process. That, the modes that a file keeps, links that
// are not followed, scratch files that take no memory and the reason of a refusal are what
// comum/Arquivo.h does without. Knows nothing of what the files hold.
#pragma once

#include "disco/Identidade.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zel {

// Who may read a file: its owner alone (it holds the taxpayer's secret), or whoever the process's
// umask lets. A private file that is replaced keeps its mode and, where allowed, its owner; so does
// one that takes over (kHerdado) whatever its predecessor had.
enum class Acesso { kPrivado, kUmask, kHerdado };

bool ehLigacao(const std::string &caminho);

// Reads a whole regular file into `conteudo` (emptied first), with its identity before that. Only a
// missing file is kInexistente.
Leitura lerArquivo(const std::string &caminho, std::string &conteudo,
                   Ligacao ligacao = Ligacao::kSeguida, Identidade *identidade = nullptr);

// Writes `conteudo` beside the file (its name with ".novo" appended), flushes it, puts it in the
// file's place and flushes the directory. With a link that is followed, the file it points to is
// replaced. The target must be a regular file, a link, or not exist. ZEL_OK, or
// ZEL_ARQUIVO_INDISPONIVEL with the old file whole. With `momento` as its time of writing, where
// one is given.
int substituirArquivo(const std::string &caminho, std::string_view conteudo, Acesso acesso,
                      Ligacao ligacao = Ligacao::kNaoSeguida,
                      std::optional<std::int64_t> momento = {});

// Writes a file that does not exist yet, in a directory where others may write at the same time. 1;
// ZEL_RECUSADO the name, or that of its scratch file, is taken: try another one;
// ZEL_ARQUIVO_INDISPONIVEL.
int criarArquivo(const std::string &caminho, std::string_view conteudo);

// Writes the file that the application named: links are followed, a device or pipe is written
// through, a file keeps its mode. It is replaced whole; where that cannot be (a file of somebody
// else's, one with several names, a directory that may not be written) it is written over in its
// place. ZEL_OK, or ZEL_ARQUIVO_INDISPONIVEL with the old content where it could be kept.
int gravarDestino(const std::string &caminho, std::string_view conteudo);

// Renames `de` over `para`, in one step. Whoever needs it flushed asks for that. False with both as
// they were.
bool renomearArquivo(const std::string &de, const std::string &para);

// Flushes the directory that the file stands in, and with it earlier renames.
bool descarregarDiretorio(const std::string &caminho);

// The scratch file of one that is to be replaced. A link that is followed has it beside the file it
// points to. What is done with it takes no memory.
struct Rascunho {
    std::string destino;
    std::string nome;
};
Rascunho rascunhoDe(const std::string &caminho, Ligacao ligacao);

// Writes it, without a flush and with `momento` as its time of writing, or puts it in the place of
// its file.
bool escreverRascunho(const Rascunho &rascunho, std::string_view conteudo, Acesso acesso,
                      std::int64_t momento);
bool instalarRascunho(const Rascunho &rascunho);

// Opens a file to write in its place, to be kept, and notes which one it is; without waiting,
// should it be a pipe.
Descritor abrirNoLugar(const std::string &caminho, Ligacao ligacao, Identidade &identidade);

// Flushes a file's bytes, and the name of one that a link points to elsewhere.
bool descarregarArquivo(const std::string &caminho, Ligacao ligacao);

// Flushes the whole file system that a directory is on, as far as the system lets.
void descarregarTudoQueHa(const std::string &diretorio);

// A file that is made in somebody else's directory is his: whoever works there next must be able to
// use it.
void darAoDonoDoDiretorio(int fd, const std::string &caminho);

// Removes a file; one that does not exist is removed already.
bool removerArquivo(const std::string &caminho);

// Removes the scratch files that a dead process left in a directory (its path ends in "/"), those
// of files whose name `nosso` takes. Nothing else there is touched. Without memory for it:
// bad_alloc.
void removerRascunhos(const std::string &diretorio, bool (*nosso)(std::string_view nome));

// False only when it is known that there is none.
bool existeArquivo(const std::string &caminho);

} // namespace zel
