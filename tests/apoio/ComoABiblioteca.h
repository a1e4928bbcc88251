// SPDX-License-Identifier: MIT
// What the command zel takes for the value of a key is what the library takes, whatever the file of
// the configuration looks like.
#pragma once

#include "conferencia/ArquivoConfig.h"
#include "leitura/TabelaChaves.h"
#include "leitura/Texto.h"

#include "config/ArquivoConfig.h"
#include "texto/TextoXml.h"

namespace zel::aplicativo {

// Where the two readings of `texto` differ: a path, or "raiz"; empty when they do not.
inline std::string_view diferencaDaBiblioteca(const ArquivoConfig &config, std::string_view texto) {
    const auto carga = fnXML_CarregarXML(texto, ValoresConfig{});
    if (config.temRaiz() != carga.has_value()) return "raiz";
    if (!carga) return {};
    for (const LinhaChave &chave : kChaves) {
        // By path there is only one of the key that stands twice.
        if (chave.nome() == "dFab") continue;
        const auto valor = latin1DeUtf8(config[chave.caminho].valor);
        if (!valor || cortarBytes(*valor, chave.tamanho) !=
                          carga->valores[*zel::procurarChave(chave.caminho)])
            return chave.caminho;
    }
    return {};
}

} // namespace zel::aplicativo
