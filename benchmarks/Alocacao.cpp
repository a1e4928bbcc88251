// SPDX-License-Identifier: MIT
#include "Alocacao.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <malloc.h>
#include <new>

namespace {

Alocado conta; // these programs have one thread

void *reservar(std::size_t tamanho, std::size_t alinhamento) {
    const std::size_t inteiro = (std::max<std::size_t>(tamanho, 1) + alinhamento - 1) / alinhamento;
    void *bloco = alinhamento <= alignof(std::max_align_t)
                      ? std::malloc(std::max<std::size_t>(tamanho, 1))
                      : std::aligned_alloc(alinhamento, inteiro * alinhamento);
    if (bloco == nullptr) throw std::bad_alloc();
    conta.pedido += static_cast<std::int64_t>(tamanho);
    conta.vivo += static_cast<std::int64_t>(malloc_usable_size(bloco));
    conta.pico = std::max(conta.pico, conta.vivo);
    return bloco;
}

void devolver(void *bloco) {
    if (bloco == nullptr) return;
    conta.vivo -= static_cast<std::int64_t>(malloc_usable_size(bloco));
    std::free(bloco);
}

} // namespace

Alocado alocado() {
    return conta;
}

void reiniciarPico() {
    conta.pico = conta.vivo;
}

// The array and nothrow forms of the library call these.
void *operator new(std::size_t tamanho) {
    return reservar(tamanho, 1);
}

void *operator new(std::size_t tamanho, std::align_val_t alinhamento) {
    return reservar(tamanho, static_cast<std::size_t>(alinhamento));
}

void operator delete(void *bloco) noexcept {
    devolver(bloco);
}

void operator delete(void *bloco, std::size_t) noexcept {
    devolver(bloco);
}

void operator delete(void *bloco, std::align_val_t) noexcept {
    devolver(bloco);
}

void operator delete(void *bloco, std::size_t, std::align_val_t) noexcept {
    devolver(bloco);
}
