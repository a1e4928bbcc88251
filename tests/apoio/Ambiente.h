// SPDX-License-Identifier: MIT
// A variable of the environment while a test needs it; afterwards it is as it was.
#pragma once

#include <optional>
#include <stdlib.h>
#include <string>

class Ambiente {
public:
    // `valor` null: not set.
    Ambiente(const char *nome, const char *valor) : nome_(nome) {
        if (const char *antes = getenv(nome)) antes_ = antes;
        por(valor);
    }
    ~Ambiente() { por(antes_ ? antes_->c_str() : nullptr); }
    Ambiente(const Ambiente &) = delete;
    Ambiente &operator=(const Ambiente &) = delete;

    void por(const char *valor) const {
        valor != nullptr ? setenv(nome_, valor, 1) : unsetenv(nome_);
    }

private:
    const char *nome_;
    std::optional<std::string> antes_;
};
