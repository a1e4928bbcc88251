// SPDX-License-Identifier: MIT
// Keeps processes apart that work in one data directory. Two locks on the file
// "ZEL_Framework.trava" there, each of one process at a time: the turn, for the time of one change
// of files, and the receipt, from the first change of the receipt to its end. The system drops both
// when the process ends, however it ends; a forked child has neither. Where the file system has no
// locks every process has both, and the log says so.
#pragma once

#include "disco/Identidade.h"

#include <cstdint>

namespace zel {

// While it lives, the turns that are asked for share one time of waiting: a call that goes on
// without the first one does not wait as long again for the next.
class EsperaDaChamada {
public:
    EsperaDaChamada();
    ~EsperaDaChamada();
    EsperaDaChamada(const EsperaDaChamada &) = delete;
    EsperaDaChamada &operator=(const EsperaDaChamada &) = delete;
};

// The turn to change files, for the life of the object; one within another is the same turn. Waits
// three seconds at most for that of another process.
class Vez {
public:
    Vez();
    ~Vez();
    Vez(const Vez &) = delete;
    Vez &operator=(const Vez &) = delete;

    // False when it could not be had: another process does not end its own, or the lock file can
    // be neither opened nor made.
    explicit operator bool() const { return obtida_; }
    // The code of that refusal, whose reason is kept.
    static int recusa();

    // The number of this process's turn under way; 0 for none.
    static std::uint64_t atual();
    // The process that has it.
    static pid_t processo();

    // Locks one file more to the end of the turn under way, as long as `arquivo` is open: should
    // somebody remove the lock file meanwhile, whoever makes a new one waits here. False, with
    // errno, when the time of this turn's wait is over.
    static bool estender(const Descritor &arquivo);

private:
    bool obtida_;
};

// The receipt of the data directory, asked for within a turn. Given back at the end of the object
// that took it, unless kept.
class PosseDoCupom {
public:
    PosseDoCupom();
    ~PosseDoCupom();
    PosseDoCupom(const PosseDoCupom &) = delete;
    PosseDoCupom &operator=(const PosseDoCupom &) = delete;

    // False when another process has it, or the lock file can be neither opened nor made.
    explicit operator bool() const { return obtida_; }
    // The code of the refusal, whose reason is kept.
    static int recusa();
    // Another process may have worked here since this one last had it.
    bool nova() const { return nova_; }

    // Takes it from a process that does nothing with it, as the caller knows: the lock file makes
    // way for a new one. False when that cannot be.
    bool tomar();

    // Keeps it for later calls, or gives it back although an earlier call kept it.
    void manter() { nova_ = false; }
    void largar() { nova_ = obtida_; }

    // Whether this process has it: the lock is still held, and on the file that others find.
    static bool minha();
    // Whether several processes serve one receipt (ZEL_COMPARTILHADO=1): none keeps it then. Read
    // once, and not in a process with more rights than its user.
    static bool compartilhada();

private:
    bool obtida_;
    bool nova_;
};

} // namespace zel
