// SPDX-License-Identifier: MIT
// A directory of a test's own, gone when the test ends.
#pragma once

#include "apoio/Arquivo.h"

#include <filesystem>
#include <stdexcept>
#include <stdlib.h>
#include <string>
#include <string_view>
#include <system_error>

class PastaTemporaria {
public:
    // On the file system of `base`.
    explicit PastaTemporaria(
        const std::filesystem::path &base = std::filesystem::temp_directory_path())
        : caminho_((base / "zel_XXXXXX").string()) {
        if (::mkdtemp(caminho_.data()) == nullptr)
            throw std::runtime_error(caminho_ + " cannot be made");
    }
    ~PastaTemporaria() {
        std::error_code ignorado;
        std::filesystem::permissions(caminho_, std::filesystem::perms::owner_all, ignorado);
        std::filesystem::remove_all(caminho_, ignorado);
    }
    PastaTemporaria(const PastaTemporaria &) = delete;
    PastaTemporaria &operator=(const PastaTemporaria &) = delete;

    const std::string &caminho() const { return caminho_; }
    std::string operator/(std::string_view nome) const { return (caminho_ + "/").append(nome); }
    std::ptrdiff_t quantosEm(std::string_view nome = "") const {
        return std::distance(std::filesystem::directory_iterator(*this / nome), {});
    }
    std::string ler(std::string_view nome) const { return lerTudo(*this / nome).value_or(""); }
    void gravar(std::string_view nome, std::string_view conteudo) const {
        gravarTudo(*this / nome, conteudo);
    }
    // With these rights; where it is.
    std::string gravar(std::string_view nome, std::string_view conteudo, unsigned modo) const {
        gravar(nome, conteudo);
        std::filesystem::permissions(*this / nome, std::filesystem::perms{modo});
        return *this / nome;
    }

private:
    std::string caminho_;
};
