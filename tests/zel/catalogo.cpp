// SPDX-License-Identifier: MIT
// Lists the catalogue of the configuration file for scripts/gerar-configuracao: one key a line, in
// file order: path, longest value in characters, default (ISO-8859-1), and what its tax group does
// with it, separated by tabs: "lida" the group reads it, "exigida" it needs it, "aceita" without it
// the item is sold without its tax.
#include "config/Catalogo.h"
#include "imposto/GruposContribuicao.h"
#include "imposto/GruposICMS.h"

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>

namespace {

std::string caminhoDe(std::uint16_t indice) {
    std::string caminho(zel::stZELTAGs[indice].nome);
    for (std::uint16_t i = zel::kLugares[indice].grupo; i != 0; i = zel::kLugares[i].grupo)
        caminho = std::string(zel::stZELTAGs[i].nome) + "\\" + caminho;
    return caminho;
}

bool eh(const std::optional<zel::Chave> &chave, std::uint16_t indice) {
    return chave && chave->indice == indice;
}

std::string noGrupo(std::uint16_t indice) {
    std::string lida;
    for (const auto grupos :
         {zel::gruposICMS(), zel::gruposPIS(), zel::gruposCOFINS(), zel::gruposISSQN()})
        for (const zel::Grupo &grupo : grupos) {
            // No key chooses the groups of substitution, so nothing reads theirs; a service has
            // ISSQN.
            if (!grupo.escolha && grupo.nome.texto() != "ISSQN") continue;
            bool exigida = eh(grupo.escolha, indice);
            for (const zel::Elemento &elemento : grupo.lista()) {
                if (!eh(elemento.chave, indice)) continue;
                lida = "lida";
                exigida = exigida || elemento.exigido;
            }
            if (exigida) return grupo.aceitaVazio ? "aceita" : "exigida";
        }
    return lida;
}

} // namespace

int main() {
    for (std::uint16_t i = 0; i < zel::kTotalEntradas; ++i) {
        const zel::EntradaCatalogo &entrada = zel::stZELTAGs[i];
        if (entrada.tipo != zel::TipoEntrada::kChave) continue;
        std::printf("%s\t%d\t%.*s\t%s\n", caminhoDe(i).c_str(), int{entrada.tamanho},
                    static_cast<int>(entrada.padrao.size()), entrada.padrao.data(),
                    noGrupo(i).c_str());
    }
    return std::fflush(stdout) == 0 ? 0 : 1;
}
