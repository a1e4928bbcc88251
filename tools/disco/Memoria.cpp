// SPDX-License-Identifier: MIT
#include "disco/Memoria.h"

#include <cerrno>
#include <cstddef>
#include <dlfcn.h>
#include <new>

namespace disco {

namespace {

FaltaDeMemoria *falta = nullptr;

bool recusado() {
    if (falta == nullptr || !falta->julgar()) return false;
    errno = ENOMEM;
    return true;
}

// The next function of that name. Not with a static of the function that asks: to guard it takes
// memory where there are threads.
template <class Funcao>
Funcao *achar(Funcao *&real, const char *nome) {
    if (real == nullptr) real = reinterpret_cast<Funcao *>(dlsym(RTLD_NEXT, nome));
    return real;
}

void *(*mallocReal)(std::size_t) = nullptr;
void *(*callocReal)(std::size_t, std::size_t) = nullptr;
void *(*reallocReal)(void *, std::size_t) = nullptr;
void *(*newReal)(std::size_t) = nullptr;
void *(*newSemExcecaoReal)(std::size_t, const std::nothrow_t &) = nullptr;

} // namespace

FaltaDeMemoria::FaltaDeMemoria(int em, bool sempre) : em_(em), sempre_(sempre) {
    falta = this;
}

FaltaDeMemoria::~FaltaDeMemoria() {
    falta = nullptr;
}

bool FaltaDeMemoria::julgar() {
    ++contados_;
    return em_ > 0 && (contados_ == em_ || (sempre_ && contados_ > em_));
}

} // namespace disco

using namespace disco;

extern "C" {

void *malloc(std::size_t tamanho) noexcept {
    return recusado() ? nullptr : achar(mallocReal, "malloc")(tamanho);
}

void *calloc(std::size_t quantos, std::size_t tamanho) noexcept {
    return recusado() ? nullptr : achar(callocReal, "calloc")(quantos, tamanho);
}

void *realloc(void *antes, std::size_t tamanho) noexcept {
    return recusado() ? nullptr : achar(reallocReal, "realloc")(antes, tamanho);
}

} // extern "C"

// What it gives goes back to the standard's own operator delete.
void *operator new(std::size_t tamanho) { // NOLINT(misc-new-delete-overloads)
    if (recusado()) throw std::bad_alloc();
    return achar(newReal, "_Znwm")(tamanho);
}

void *operator new(std::size_t tamanho, const std::nothrow_t &semExcecao) noexcept {
    return recusado() ? nullptr
                      : achar(newSemExcecaoReal, "_ZnwmRKSt9nothrow_t")(tamanho, semExcecao);
}
