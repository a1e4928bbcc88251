// SPDX-License-Identifier: MIT
// The log of a till, read as whoever looks after it would: the lines that a call appended. Sets the
// environment for the libraries that are loaded while it lives.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "blackbox/Caixa.h"

class Log {
public:
    // An own temporary directory, which goes with it; `nivel` as ZEL_LOG_NIVEL, null for none.
    explicit Log(const char *nivel = nullptr) {
        std::string modelo = (std::filesystem::temp_directory_path() / "zel-log-XXXXXX").string();
        diretorio_ = mkdtemp(modelo.data()) != nullptr ? modelo : "";
        apontar(caminho().c_str(), nivel);
    }
    ~Log() {
        apontar(logDaBateria(), nullptr);
        std::error_code ignorado;
        std::filesystem::remove_all(diretorio_, ignorado);
    }
    Log(const Log &) = delete;
    Log &operator=(const Log &) = delete;

    // What libraries that are loaded from here on find in their environment; null for nothing.
    static void apontar(const char *destino, const char *nivel) {
        destino != nullptr ? setenv("ZEL_LOG", destino, 1) : unsetenv("ZEL_LOG");
        nivel != nullptr ? setenv("ZEL_LOG_NIVEL", nivel, 1) : unsetenv("ZEL_LOG_NIVEL");
    }

    std::string caminho() const { return diretorio_ + "/caixa.log"; }

    std::vector<std::string> linhas() const { return linhasDe(caminho()); }
    static std::vector<std::string> linhasDe(const std::string &caminho) {
        std::ifstream arquivo(caminho, std::ios::binary);
        std::vector<std::string> todas;
        for (std::string linha; std::getline(arquivo, linha);)
            todas.push_back(linha);
        return todas;
    }

private:
    std::string diretorio_;
};
