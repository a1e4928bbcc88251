// SPDX-License-Identifier: MIT
// The published schemas, where ZEL_ESQUEMAS names their folder.
#pragma once

#include "esquema/Esquema.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace zel::envio::teste {

inline constexpr const char *kSemEsquemas =
    "ZEL_ESQUEMAS não diz onde estão os esquemas publicados: nada foi julgado";

// Their folder; empty: none is named.
inline std::string pastaDosEsquemas() {
    const char *pasta = std::getenv("ZEL_ESQUEMAS");
    return pasta == nullptr ? "" : pasta;
}

class Juiz {
public:
    static const Juiz &unico() {
        static const Juiz juiz;
        return juiz;
    }
    // Null: there are none.
    Esquemas *esquemas() const { return esquemas_.get(); }

    // What they say against an unsigned NFe, but that Signature is missing; empty: nothing, or
    // there are none.
    std::string julgar(const Documento &documento) const {
        Recusas queixas;
        if (esquemas_ != nullptr) esquemas_->julgar(documento, true, queixas);
        return queixas.texto();
    }

private:
    Juiz() {
        if (pastaDosEsquemas().empty()) return;
        Recusas recusas;
        esquemas_ = Esquemas::abrir(pastaDosEsquemas(), recusas);
        EXPECT_TRUE(esquemas_) << recusas.texto();
    }

    std::shared_ptr<Esquemas> esquemas_;
};

} // namespace zel::envio::teste
