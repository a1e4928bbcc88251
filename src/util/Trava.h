// SPDX-License-Identifier: MIT
// Keeps processes apart that work in one data directory. Two locks on the file
// "ZEL_Framework.trava" there, each of one process at a time: the turn, for the time of one change
// of files, and the receipt, from the first change of the receipt to the end of the process. The
// system drops both when the process ends, however it ends; a forked child has neither. Where the
// file system has no locks every process has both, and the log says so.
#pragma once

#include <cstdint>

namespace zel {

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
    // Keeps it to the end of the process.
    void manter() { nova_ = false; }

private:
    bool obtida_;
    bool nova_;
};

} // namespace zel
