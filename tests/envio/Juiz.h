// SPDX-License-Identifier: MIT
// The published schemas, where ZEL_ESQUEMAS names their folder.
#pragma once

#include "esquema/Esquema.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace zel::envio::teste {

class Juiz {
public:
    static const Juiz &unico() {
        static const Juiz juiz;
        return juiz;
    }
    bool ha() const { return esquemas_ != nullptr; }

    // What they say against an unsigned NFe, but that Signature is missing; empty: nothing.
    std::string julgar(const Documento &documento) const {
        Recusas queixas;
        esquemas_->julgar(documento, true, queixas);
        return queixas.texto();
    }

private:
    Juiz() {
        const char *pasta = std::getenv("ZEL_ESQUEMAS");
        if (pasta == nullptr || *pasta == '\0') return;
        Recusas recusas;
        esquemas_ = Esquemas::abrir(pasta, recusas);
        EXPECT_TRUE(esquemas_) << recusas.texto();
    }

    std::shared_ptr<Esquemas> esquemas_;
};

} // namespace zel::envio::teste
