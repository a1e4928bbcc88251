#include "disco/Processo.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sys/wait.h>
#include <unistd.h>

namespace disco {

namespace fs = std::filesystem;

Fotografia fotografar(const std::string &diretorio) {
    Fotografia fotografia;
    for (const fs::directory_entry &entrada : fs::directory_iterator(diretorio)) {
        if (!entrada.is_regular_file()) continue;
        std::ifstream arquivo(entrada.path(), std::ios::binary);
        fotografia[entrada.path().filename()] = {std::istreambuf_iterator<char>(arquivo), {}};
    }
    return fotografia;
}

void revelar(const std::string &diretorio, const Fotografia &fotografia) {
    for (const fs::directory_entry &entrada : fs::directory_iterator(diretorio))
        fs::remove_all(entrada.path());
    for (const auto &[nome, bytes] : fotografia) {
        std::ofstream arquivo(diretorio + nome, std::ios::binary);
        arquivo.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        fs::permissions(diretorio + nome, fs::perms::owner_read | fs::perms::owner_write);
    }
}

int emOutroProcesso(const std::function<int()> &acao) {
    constexpr unsigned kMaiorEspera = 60;
    std::cout.flush();
    std::fflush(nullptr);
    // Without the fork handlers of a sanitizer, which touch megabytes; there is one thread only.
    const pid_t filho = _Fork();
    if (filho == 0) {
        alarm(kMaiorEspera);
        int resposta = kSemResposta;
        try {
            resposta = acao();
        } catch (const std::exception &erro) {
            std::cout << "exception: " << erro.what() << '\n';
        }
        std::cout.flush();
        std::fflush(nullptr);
        _exit(resposta);
    }
    int situacao = 0;
    while (filho > 0 && waitpid(filho, &situacao, 0) < 0) {
    }
    return filho > 0 && WIFEXITED(situacao) ? WEXITSTATUS(situacao) : kSemResposta;
}

} // namespace disco
