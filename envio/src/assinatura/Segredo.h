// SPDX-License-Identifier: MIT
// A password: in a page of its own that stands in no core and, where the system allows, in no swap;
// wiped when it goes. Never copied into a std::string. What is beyond it: OpenSSL frees a copy in
// UTF-16 unwiped where it derives the key of a PKCS#12 file, and ZEL_ENVIO_SENHA stands in the
// program's environment; a file or a credential has only the former.
#pragma once

#include <cstddef>
#include <string_view>

namespace zel::envio {

class Segredo {
public:
    static constexpr std::size_t kMaior = 1024; // bytes; what is longer is cut

    Segredo();
    explicit Segredo(std::string_view texto);
    ~Segredo();
    Segredo(Segredo &&outro) noexcept;
    Segredo &operator=(Segredo &&outro) noexcept;

    bool vazio() const { return tamanho_ == 0; }
    std::size_t tamanho() const { return tamanho_; }
    // Ends with a 0.
    const char *texto() const { return area_; }

    // The first line of what a descriptor has.
    void lerLinha(int fd);

private:
    char *area_ = nullptr;
    std::size_t tamanho_ = 0;
};

} // namespace zel::envio
