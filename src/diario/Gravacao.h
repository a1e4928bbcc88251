// SPDX-License-Identifier: MIT
// Changes of several files of the data directory that happen together: one record of the journal
// is the moment at which they do, the files follow without a flush of their own. What a process
// that died, a power cut or a refusing disk leaves is put right from the journal by whoever
// comes next, except in a file that somebody else wrote later. Knows what is to be where, not what
// it means.
#pragma once

#include "disco/Arquivo.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace zel {

struct MudancaArquivo {
    std::string_view nome; // in the data directory
    Acesso acesso = Acesso::kPrivado;
    Ligacao ligacao = Ligacao::kNaoSeguida;
    std::string_view depois{};               // what the file is to hold
    std::optional<std::string_view> antes{}; // what it holds, where that is known for sure
    // A new end: `depois` alone takes the place of what stands from `lugar` on in a file of
    // `tamanho` bytes. Where the file is not the one that was left, `inteiro` gives all of it.
    struct Fim {
        std::size_t lugar;
        std::size_t tamanho;
        std::function<std::string()> inteiro;
    };
    std::optional<Fim> fim{};
};

// Makes the changes, within a turn (Trava.h): all of them, and durably, or none. A file changes
// where it stands when its size stays and little else changes, or its end is new, otherwise by a
// rename, so that readers find it whole. ZEL_OK or ZEL_ARQUIVO_INDISPONIVEL.
int gravarJuntos(std::span<const MudancaArquivo> mudancas);

// The identity that a file of the last change was left with; none where others' changes of the next
// moments could have the same one.
std::optional<Identidade> identidadeMarcada(std::string_view nome);

// The identity that a file was left with, or found with as the journal has it; none where that is
// not known.
std::optional<Identidade> identidadeDeixada(std::string_view nome);

// How often this process had to read the journal: no other process's change came in between two
// calls, in turns of their own, that get the same number.
std::uint64_t leiturasDoDiario();

// At the beginning of a turn: takes note of what other processes did, and puts right what a dead
// one left. ZEL_OK, or ZEL_ARQUIVO_INDISPONIVEL when something that was done cannot be put in
// place.
int acompanharDiario();

// Within a turn: puts right what the last change of this process left undone. As acompanharDiario.
int completarDiario();

// At a quiet moment: flushes the files and empties the journal when it is half full. What fails is
// tried again at the next one.
void aliviarDiario();

// Forgets what this process knows, as in a new one.
void esquecerDiario();

} // namespace zel
