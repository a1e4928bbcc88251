// A till of its own for each tax test: an empty directory, the default configuration without any
// tax section, an open receipt, no presets.
#pragma once

#include "PastaTemporaria.h"
#include "config/Registro.h"
#include "documento/ZEL_Controle.h"
#include "documento/ZEL_Persistencia.h"
#include "imposto/Presets.h"
#include "util/Texto.h"

#include <gtest/gtest.h>

#include <stdlib.h>
#include <string>
#include <string_view>
#include <vector>

namespace zel {

class ImpostoTest : public testing::Test {
protected:
    void SetUp() override {
        setenv("ZEL_DIRETORIO", (pasta_ / "").c_str(), 1);
        ASSERT_EQ(inicializarConfig(), 1);
        configurar(R"(IMPOSTO\ICMS\ICMS00)", "Orig= CST= modBC=");
        configurar("CONFIGURACAO", "estadoCFe=1");
        G_stXML_Persistencia = {};
        G_stTagImpostoConfTemp = {};
    }
    void TearDown() override {
        unsetenv("ZEL_DIRETORIO");
        G_stXML_Persistencia = {};
        G_stTagImpostoConfTemp = {};
    }

    // Sets the keys of a section: "Orig=0 CST=20 modBC=".
    static void configurar(const std::string &secao, std::string_view valores) {
        std::vector<Alteracao> alteracoes;
        for (const auto par : split(valores, ' ', 20)) {
            const auto igual = par.find('=');
            const auto chave = procurarChave(secao + "\\" + std::string(par.substr(0, igual)));
            ASSERT_TRUE(chave) << secao << ' ' << par;
            alteracoes.push_back({*chave, std::string(par.substr(igual + 1))});
        }
        ASSERT_EQ(alterarConfig(alteracoes), 1);
    }

private:
    PastaTemporaria pasta_;
};

// A tag in one line, in the order of its children: "ICMS(ICMS40(orig=0 CST=41))".
inline std::string resumo(const ST_tagZEL &tag) {
    if (!tag.subTags) return tag.nome + "=" + tag.valor.value_or("");
    std::string texto = tag.nome + "(";
    for (const auto &filho : *tag.subTags)
        texto += (texto.back() == '(' ? "" : " ") + resumo(filho);
    return texto + ")";
}

} // namespace zel
