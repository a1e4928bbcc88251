// SPDX-License-Identifier: MIT
// The log of a till, read as whoever looks after it would: the lines that a call appended. Sets the
// environment for the libraries that are loaded while it lives.
#pragma once

#include "apoio/Ambiente.h"
#include "apoio/PastaTemporaria.h"

#include <fstream>
#include <string>
#include <vector>

class Log {
public:
    // In a directory of its own; `nivel` as ZEL_LOG_NIVEL, null for none.
    explicit Log(const char *nivel = nullptr) { apontar(caminho().c_str(), nivel); }

    // What libraries that are loaded from here on find in their environment; null for nothing.
    void apontar(const char *destino, const char *nivel) const {
        destino_.por(destino);
        nivel_.por(nivel);
    }

    std::string caminho() const { return pasta_ / "caixa.log"; }

    std::vector<std::string> linhas() const { return linhasDe(caminho()); }
    static std::vector<std::string> linhasDe(const std::string &caminho) {
        std::ifstream arquivo(caminho, std::ios::binary);
        std::vector<std::string> todas;
        for (std::string linha; std::getline(arquivo, linha);)
            todas.push_back(linha);
        return todas;
    }

private:
    PastaTemporaria pasta_;
    Ambiente destino_{"ZEL_LOG", nullptr}, nivel_{"ZEL_LOG_NIVEL", nullptr};
};
