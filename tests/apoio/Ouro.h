// SPDX-License-Identifier: MIT
// Golden files.
#pragma once

#include "apoio/Arquivo.h"

#include <gtest/gtest.h>

#include <cstdlib>

// The file has that text. With ZEL_REGENERAR=1 in the environment it is written first.
inline void compararComOuro(const std::filesystem::path &caminho, std::string_view texto) {
    const char *regenerar = std::getenv("ZEL_REGENERAR");
    if (regenerar != nullptr && std::string_view(regenerar) == "1") {
        std::filesystem::create_directories(caminho.parent_path());
        EXPECT_TRUE(gravarTudo(caminho, texto)) << caminho << " cannot be written";
    }
    EXPECT_EQ(lerTudo(caminho), texto)
        << "golden file " << caminho << ": ZEL_REGENERAR=1 writes it; look at the difference";
}
