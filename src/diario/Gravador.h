// SPDX-License-Identifier: MIT
// What a process knows of the journal and of the files in it, and what it does with them beside
// writing: puts right what somebody left undone, and empties the journal. For Gravacao.cpp alone.
#pragma once

#include "diario/Diario.h"
#include "disco/Identidade.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <sys/types.h>

namespace zel {

// A file that holds what the journal says, or is known to be gone (no identity).
struct Cadeia {
    Identidade identidade; // when that was last seen
    Descritor aberto;      // to write in its place, once that was done
};

// What this process knows of the journal and of the files in it.
struct Gravador {
    Diario diario;
    std::uint64_t leituras = 0; // of the journal
    pid_t processo = 0;
    // By name.
    std::map<std::string, Cadeia, std::less<>> cadeias;
    std::int64_t momento = 0; // of this process's last record
    bool atrasado = false;    // a file may lack what the journal has
    bool perdeu = false; // a flush was refused: what a file seems to hold may not reach the disk
    bool mudou = false;  // this process changed a file
    Gravador() = default;
    ~Gravador();
    Gravador(const Gravador &) = delete;
    Gravador &operator=(const Gravador &) = delete;
};

// Made by the first call that needs it, so that it goes before whatever it uses.
Gravador &gravador();

// Whether the journal is known and nothing was left undone.
bool acompanhado();

// Reads the journal and puts every file in the state that it has for it. False when one cannot be.
bool recuperar();

// Flushes the files and empties the journal, with room for a record of `tamanho` bytes. False with
// the journal as it was, or closed.
bool esvaziarDiario(std::size_t tamanho);

} // namespace zel
