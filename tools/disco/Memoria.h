// SPDX-License-Identifier: MIT
// The memory of the running program, as a program under test asks for it: all that it gets, or
// refused. The program that links this room defines operator new and the C library's functions
// itself, so every shared object that it loads, and the C library, call these (link with
// ENABLE_EXPORTS). Outside the life of a FaltaDeMemoria they only pass on. For one thread.
#pragma once

namespace disco {

// While it lives, request number `em`, counted from 1, gets nothing; with `sempre` each after it as
// well. 0: all are only counted.
class FaltaDeMemoria {
public:
    explicit FaltaDeMemoria(int em = 0, bool sempre = false);
    ~FaltaDeMemoria();
    FaltaDeMemoria(const FaltaDeMemoria &) = delete;
    FaltaDeMemoria &operator=(const FaltaDeMemoria &) = delete;

    int contados() const { return contados_; }
    // False when the program asked less often.
    bool disparou() const { return em_ > 0 && contados_ >= em_; }

    // For the functions that give memory.
    bool julgar();

private:
    int em_;
    bool sempre_;
    int contados_ = 0;
};

} // namespace disco
