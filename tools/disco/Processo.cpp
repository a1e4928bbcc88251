// SPDX-License-Identifier: MIT
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

namespace {

constexpr std::uintmax_t kTamanhoDiario = std::uintmax_t{4} << 20;

// Its end is zeros that need not be kept.
bool ehDiario(const std::string &nome) {
    return nome.ends_with(".diario");
}

std::string lerTudo(const fs::path &caminho) {
    constexpr std::size_t kPedaco = std::size_t{64} << 10;
    std::ifstream arquivo(caminho, std::ios::binary);
    const bool diario = ehDiario(caminho.string());
    std::string bytes, pedaco(kPedaco, '\0');
    while (arquivo.read(pedaco.data(), kPedaco) || arquivo.gcount() > 0) {
        bytes.append(pedaco, 0, static_cast<std::size_t>(arquivo.gcount()));
        if (!diario) continue;
        const std::size_t antes = bytes.size();
        bytes.resize(bytes.find_last_not_of('\0') + 1);
        if (antes - bytes.size() >= kPedaco) break;
        bytes.resize(antes, '\0');
    }
    if (diario) bytes.resize(bytes.find_last_not_of('\0') + 1);
    return bytes;
}

} // namespace

Fotografia fotografar(const std::string &diretorio) {
    Fotografia fotografia;
    for (const fs::directory_entry &entrada : fs::directory_iterator(diretorio)) {
        if (!entrada.is_regular_file()) continue;
        fotografia[entrada.path().filename()] = lerTudo(entrada.path());
    }
    return fotografia;
}

void reconhecerDiario(const std::string &diretorio, const Fotografia &fotografia) {
    constexpr std::size_t kLugarDoNo = 32;
    for (const auto &[nome, bytes] : fotografia) {
        std::uint64_t no = 0;
        if (!ehDiario(nome) || bytes.size() < kLugarDoNo + sizeof no) continue;
        for (std::size_t i = sizeof no; i-- > 0;)
            no = no << 8 | static_cast<unsigned char>(bytes[kLugarDoNo + i]);
        if (no != 0) contarNo(diretorio + nome, no);
    }
}

void revelar(const std::string &diretorio, const Fotografia &fotografia, Idade idade) {
    for (const fs::directory_entry &entrada : fs::directory_iterator(diretorio))
        fs::remove_all(entrada.path());
    for (const auto &[nome, bytes] : fotografia) {
        std::ofstream arquivo(diretorio + nome, std::ios::binary);
        arquivo.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        arquivo.close();
        if (ehDiario(nome)) fs::resize_file(diretorio + nome, kTamanhoDiario);
        fs::permissions(diretorio + nome, fs::perms::owner_read | fs::perms::owner_write);
    }
    envelhecer(diretorio, idade);
    reconhecerDiario(diretorio, fotografia);
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
