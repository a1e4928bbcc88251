// SPDX-License-Identifier: MIT
#include "rede/Confianca.h"

#include <sys/stat.h>

namespace zel::envio {

namespace {

std::shared_ptr<X509_STORE> lerDe(const std::string &arquivo) {
    const FilaDeErros fila;
    std::shared_ptr<X509_STORE> loja(X509_STORE_new(), X509_STORE_free);
    if (!loja) return nullptr;
    const bool lidas = arquivo.empty() ? X509_STORE_set_default_paths(loja.get()) == 1
                                       : X509_STORE_load_file(loja.get(), arquivo.c_str()) == 1;
    // One that is named is trusted, whoever signed it: a state's own authority without its root.
    const bool aceitas = X509_STORE_set_flags(loja.get(), X509_V_FLAG_TRUSTED_FIRST |
                                                              X509_V_FLAG_PARTIAL_CHAIN) == 1;
    return lidas && aceitas ? loja : nullptr;
}

} // namespace

std::shared_ptr<X509_STORE> Confianca::autoridades() {
    struct stat estado {};
    std::string marca;
    if (!arquivo_.empty() && stat(arquivo_.c_str(), &estado) == 0)
        marca = std::to_string(estado.st_mtim.tv_sec) + '.' +
                std::to_string(estado.st_mtim.tv_nsec) + '/' + std::to_string(estado.st_size);
    const std::lock_guard trava(porta_);
    if (lidas_ && marca == marca_) return lidas_;
    // While it is being replaced, those that were read hold.
    if (auto novas = lerDe(arquivo_)) {
        lidas_ = std::move(novas);
        marca_ = std::move(marca);
    }
    return lidas_;
}

} // namespace zel::envio
