// SPDX-License-Identifier: MIT
#include "leitura/Municipios.h"

#include "leitura/TabelaMunicipios.h"
#include "leitura/Texto.h"

#include <algorithm>
#include <iterator>

namespace zel::aplicativo {

namespace {

std::string letras(std::string_view nome) {
    std::string texto = minusculas(semAcentos(nome));
    std::erase_if(texto, [](char c) { return c < 'a' || c > 'z'; });
    return texto;
}

} // namespace

std::string_view nomeDoMunicipio(std::string_view codigo) {
    constexpr std::size_t kDoEstado = 2, kDoMunicipio = 5;
    if (codigo.size() != kDoEstado + kDoMunicipio) return {};
    const auto *estado = std::ranges::find_if(tabela::kMunicipios, [&](std::string_view linha) {
        return linha.starts_with(codigo.substr(0, kDoEstado));
    });
    if (estado == std::end(tabela::kMunicipios)) return {};
    for (const std::string_view municipio : dividir(estado->substr(kDoEstado), '|'))
        if (municipio.starts_with(codigo.substr(kDoEstado))) return municipio.substr(kDoMunicipio);
    return {};
}

bool mesmoNome(std::string_view a, std::string_view b) {
    return letras(a) == letras(b);
}

} // namespace zel::aplicativo
