// SPDX-License-Identifier: MIT
// A file of the library, loaded as an application loads it, and its functions. Another file is
// another library to the loader, with globals of its own: who wants a new process copies it first.
#pragma once

#include "apoio/Funcoes.h"

#include <dlfcn.h>

#include <memory>
#include <stdexcept>
#include <string>

class Biblioteca {
public:
    explicit Biblioteca(const std::string &caminho)
        : endereco_(dlopen(caminho.c_str(), RTLD_NOW | RTLD_LOCAL)) {
        if (!endereco_) throw std::runtime_error(dlerror());
        funcoes_ = std::make_unique<Funcoes>(endereco_.get());
    }

    const Funcoes &funcoes() const { return *funcoes_; }

private:
    struct Descarregar {
        void operator()(void *endereco) const { dlclose(endereco); }
    };
    std::unique_ptr<void, Descarregar> endereco_;
    std::unique_ptr<Funcoes> funcoes_;
};
