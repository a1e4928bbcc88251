// SPDX-License-Identifier: MIT
// A till of its own for each tax test: an empty directory, the default configuration without any
// tax section, an open receipt, no presets.
#pragma once

#include "apoio/ComDados.h"
#include "imposto/Presets.h"
#include "secao/Mudancas.h"
#include "secao/Tag.h"
#include "texto/Texto.h"

#include <functional>

namespace zel {

// The group "ICMS40 orig=0 CST=41".
inline ST_tagZEL grupo(std::string_view texto) {
    const auto partes = split(texto, ' ', 20);
    ST_tagZEL tag(partes.front());
    for (const auto parte : std::span(partes).subspan(1))
        tag.addSubTag(parte.substr(0, parte.find('=')), parte.substr(parte.find('=') + 1));
    return tag;
}

// A tag in one line: "ICMS(ICMS40(orig=0 CST=41))".
inline std::string resumo(const ST_tagZEL &tag) {
    if (!tag.subTags) return tag.nome + "=" + tag.valor.value_or("");
    std::string filhos;
    for (const auto &filho : *tag.subTags)
        filhos += (filhos.empty() ? "" : " ") + resumo(filho);
    return tag.nome + "(" + filhos + ")";
}

class ComImposto : public ComDados {
protected:
    void SetUp() override {
        ComDados::SetUp();
        configurar(R"(IMPOSTO\ICMS\ICMS00)", "Orig= CST= modBC=");
        configurar("CONFIGURACAO", "estadoCFe=1");
    }

    // Sets the keys of a section: "Orig=0 CST=20 modBC=".
    static void configurar(const std::string &secao, std::string_view valores) {
        for (const auto par : split(valores, ' ', 20)) {
            const std::string chave(par.substr(0, par.find('=')));
            ComDados::configurar({{secao + "\\" + chave, par.substr(chave.size() + 1)}});
        }
    }

    // What an operation adds to an empty `imposto`, or the code with which it refuses.
    static std::string resultado(const std::function<int(ST_tagZEL &)> &operacao) {
        ST_tagZEL imposto("imposto");
        const int codigo = operacao(imposto);
        return codigo == ZEL_OK ? resumo(imposto) : std::to_string(codigo);
    }

    // The same of an operation that rebuilds a stored tag. Taken back, the tag is as it was.
    static std::string remontado(ST_tagZEL guardado,
                                 const std::function<int(ST_tagZEL &, Mudancas &)> &operacao) {
        const std::string antes = resumo(guardado);
        Mudancas mudancas;
        const int codigo = operacao(guardado, mudancas);
        std::string depois = codigo == ZEL_OK ? resumo(guardado) : std::to_string(codigo);
        mudancas.desfazer();
        EXPECT_EQ(resumo(guardado), antes);
        return depois;
    }

    ST_tagImpostoConfTemp presets;
};

} // namespace zel
