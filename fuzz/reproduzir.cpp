// SPDX-License-Identifier: MIT
// Plays every file of a corpus directory through a target; without any the test must fail.
#include "Alvo.h"
#include "apoio/Arquivo.h"

#include <filesystem>
#include <fstream>
#include <string>

#include <cstdio>

int main(int quantos, char **argumentos) {
    int jogados = 0;
    std::error_code erro;
    for (const auto &entrada :
         std::filesystem::directory_iterator(quantos == 2 ? argumentos[1] : "", erro)) {
        std::fprintf(stderr, "%s\n", entrada.path().c_str()); // the last one shown crashed
        jogar(lerTudo(entrada.path()).value());
        ++jogados;
    }
    return jogados == 0 ? 1 : 0;
}
