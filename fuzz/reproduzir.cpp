// SPDX-License-Identifier: MIT
// Plays every file of a corpus directory through a target; without any the test must fail.
#include "Alvo.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <cstdio>
#include <iterator>

int main(int quantos, char **argumentos) {
    int jogados = 0;
    std::error_code erro;
    for (const auto &entrada :
         std::filesystem::directory_iterator(quantos == 2 ? argumentos[1] : "", erro)) {
        std::fprintf(stderr, "%s\n", entrada.path().c_str()); // the last one told has fallen
        std::ifstream arquivo(entrada.path(), std::ios::binary);
        const std::string dados{std::istreambuf_iterator<char>(arquivo), {}};
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(dados.data()), dados.size());
        ++jogados;
    }
    return jogados == 0 ? 1 : 0;
}
