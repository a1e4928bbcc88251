// SPDX-License-Identifier: MIT
// A data directory of its own for each test that links the rooms, with the default configuration.
#pragma once

#include "ZEL_FelborFramework.h"
#include "apoio/DiretorioDeDados.h"
#include "config/Registro.h"

#include <gtest/gtest.h>
#include <initializer_list>
#include <utility>

namespace zel {

using Pares = std::initializer_list<std::pair<std::string_view, std::string_view>>;

class ComDados : public testing::Test {
protected:
    void SetUp() override {
        serDiretorioDeDados(pasta);
        ASSERT_EQ(inicializarConfig(), ZEL_OK);
    }
    ~ComDados() override { ::unsetenv("ZEL_DIRETORIO"); }

    static void configurar(Pares valores) {
        for (const auto &[caminho, valor] : valores)
            ASSERT_EQ(fnRegAlterarValor_ZEL(caminho, valor), ZEL_OK) << caminho;
    }
    bool existe(std::string_view nome) const { return std::filesystem::exists(pasta / nome); }
    // A directory stands where the file would be written first: that fails, for root too.
    void impedirGravacao(const std::string &nome) const {
        std::filesystem::create_directory(pasta / (nome + ".novo"));
    }

    PastaTemporaria pasta;
};

} // namespace zel
