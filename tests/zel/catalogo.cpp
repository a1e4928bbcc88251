// SPDX-License-Identifier: MIT
// Lists the catalogue of the configuration file for scripts/gerar-configuracao: one key a line, in
// file order: path, longest value in characters and default (ISO-8859-1), separated by tabs.
#include "config/Catalogo.h"

#include <cstdio>
#include <string>

namespace {

std::string caminhoDe(std::uint16_t indice) {
    std::string caminho(zel::stZELTAGs[indice].nome);
    for (std::uint16_t i = zel::kLugares[indice].grupo; i != 0; i = zel::kLugares[i].grupo)
        caminho = std::string(zel::stZELTAGs[i].nome) + "\\" + caminho;
    return caminho;
}

} // namespace

int main() {
    for (std::uint16_t i = 0; i < zel::kTotalEntradas; ++i) {
        const zel::EntradaCatalogo &entrada = zel::stZELTAGs[i];
        if (entrada.tipo != zel::TipoEntrada::kChave) continue;
        std::printf("%s\t%d\t%.*s\n", caminhoDe(i).c_str(), int{entrada.tamanho},
                    static_cast<int>(entrada.padrao.size()), entrada.padrao.data());
    }
    return std::fflush(stdout) == 0 ? 0 : 1;
}
