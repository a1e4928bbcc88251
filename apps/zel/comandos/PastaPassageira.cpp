// SPDX-License-Identifier: MIT
#include "comandos/PastaPassageira.h"

#include "leitura/Texto.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace zel::aplicativo {

PastaPassageira::PastaPassageira() {
    std::error_code erro;
    const auto pasta = std::filesystem::temp_directory_path(erro);
    std::string modelo = juntar({erro ? "/tmp" : pasta.string(), "/zel-XXXXXX"});
    if (::mkdtemp(modelo.data()) == nullptr)
        motivo_ = juntar({modelo, ": ", std::strerror(errno)});
    else
        caminho_ = modelo + "/";
}

PastaPassageira::~PastaPassageira() {
    std::error_code erro;
    if (!caminho_.empty()) std::filesystem::remove_all(caminho_, erro);
}

} // namespace zel::aplicativo
