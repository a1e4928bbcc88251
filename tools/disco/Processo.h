// SPDX-License-Identifier: MIT
// Other processes and their directory, for programs that watch what a process leaves.
#pragma once

#include "disco/Imagens.h"

#include <functional>
#include <string>

namespace disco {

// The regular files of a directory whose path ends in "/"; of a journal without the zeros at its
// end.
Fotografia fotografar(const std::string &diretorio);

// Makes the directory hold these files and nothing else.
void revelar(const std::string &diretorio, const Fotografia &fotografia,
             Idade idade = Idade::kAntiga);

// The journal that was written there as in the photograph is told to be the file that it names.
void reconhecerDiario(const std::string &diretorio, const Fotografia &fotografia);

// Runs `acao` in a process of its own. Its answer (0 to 125), kMorto where a plan ended it, or
// kSemResposta when it crashed, or said nothing for a minute.
inline constexpr int kSemResposta = 126;
int emOutroProcesso(const std::function<int()> &acao);

} // namespace disco
