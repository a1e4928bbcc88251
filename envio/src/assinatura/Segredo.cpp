// SPDX-License-Identifier: MIT
#include "assinatura/Segredo.h"

#include "comum/Descritor.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <openssl/crypto.h>
#include <sys/mman.h>
#include <utility>

namespace zel::envio {

namespace {

constexpr std::size_t kArea = 4096;
static_assert(Segredo::kMaior < kArea);

} // namespace

Segredo::Segredo() {
    void *area = ::mmap(nullptr, kArea, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (area == MAP_FAILED) throw std::bad_alloc();
    // Neither may be allowed; the password is wiped all the same.
    ::madvise(area, kArea, MADV_DONTDUMP);
    ::mlock(area, kArea);
    area_ = static_cast<char *>(area);
}

Segredo::Segredo(std::string_view texto) : Segredo() {
    tamanho_ = std::min(texto.size(), kMaior);
    std::memcpy(area_, texto.data(), tamanho_);
}

Segredo::~Segredo() {
    if (area_ == nullptr) return;
    OPENSSL_cleanse(area_, kArea);
    ::munmap(area_, kArea);
}

Segredo::Segredo(Segredo &&outro) noexcept
    : area_(std::exchange(outro.area_, nullptr)), tamanho_(std::exchange(outro.tamanho_, 0)) {}

Segredo &Segredo::operator=(Segredo &&outro) noexcept {
    std::swap(area_, outro.area_);
    std::swap(tamanho_, outro.tamanho_);
    return *this;
}

void Segredo::lerLinha(int fd) {
    std::size_t lidos = 0;
    while (lidos < kMaior) {
        const ssize_t n =
            comum::insistir([&] { return ::read(fd, area_ + lidos, kMaior - lidos); });
        if (n <= 0) break;
        lidos += static_cast<std::size_t>(n);
    }
    const std::string_view lido(area_, lidos);
    tamanho_ = std::min(lido.find_first_of("\r\n"), lidos);
    OPENSSL_cleanse(area_ + tamanho_, kArea - tamanho_);
}

} // namespace zel::envio
