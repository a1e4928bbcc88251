// SPDX-License-Identifier: MIT
// A directory of a test's own, gone when the test ends.
#pragma once

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <stdlib.h>
#include <string>

class PastaTemporaria {
public:
    PastaTemporaria() {
        if (::mkdtemp(caminho_.data()) == nullptr) throw std::runtime_error("mkdtemp");
    }
    ~PastaTemporaria() { std::filesystem::remove_all(caminho_); }
    PastaTemporaria(const PastaTemporaria &) = delete;
    PastaTemporaria &operator=(const PastaTemporaria &) = delete;

    std::string operator/(std::string_view nome) const { return (caminho_ + "/").append(nome); }
    std::string ler(std::string_view nome) const {
        std::ifstream arquivo(*this / nome, std::ios::binary);
        return {std::istreambuf_iterator<char>(arquivo), {}};
    }
    void gravar(std::string_view nome, std::string_view conteudo) const {
        std::ofstream(*this / nome, std::ios::binary) << conteudo;
    }

private:
    std::string caminho_ = std::filesystem::temp_directory_path() / "zel_XXXXXX";
};
