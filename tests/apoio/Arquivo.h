// SPDX-License-Identifier: MIT
// Files of a test, whole. Whether one that cannot be read is a failure is the caller's to say.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>

inline std::optional<std::string> lerTudo(const std::filesystem::path &caminho) {
    std::ifstream arquivo(caminho, std::ios::binary);
    if (!arquivo) return std::nullopt;
    return std::string(std::istreambuf_iterator<char>(arquivo), {});
}

inline bool gravarTudo(const std::filesystem::path &caminho, std::string_view conteudo) {
    std::ofstream arquivo(caminho, std::ios::binary | std::ios::trunc);
    arquivo << conteudo;
    arquivo.close();
    return arquivo.good();
}
