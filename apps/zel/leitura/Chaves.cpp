// SPDX-License-Identifier: MIT
#include "leitura/Chaves.h"

#include "leitura/TabelaChaves.h"
#include "leitura/Texto.h"

#include <algorithm>
#include <iterator>

namespace zel::aplicativo {

namespace {

template <class Casa>
const LinhaChave *primeira(Casa casa) {
    const auto achada = std::find_if(std::begin(kChaves), std::end(kChaves), casa);
    return achada == std::end(kChaves) ? nullptr : achada;
}

} // namespace

const LinhaChave *procurarChave(std::string_view caminho) {
    return primeira([&](const LinhaChave &linha) { return linha.caminho == caminho; });
}

const LinhaChave *procurarChaveSemCaixa(std::string_view caminho) {
    return primeira([&](const LinhaChave &linha) { return igualSemCaixa(linha.caminho, caminho); });
}

bool ehGrupo(std::string_view caminho) {
    if (caminho.empty()) return true;
    return primeira([&](const LinhaChave &linha) {
               return linha.caminho.size() > caminho.size() && linha.caminho.starts_with(caminho) &&
                      linha.caminho[caminho.size()] == '\\';
           }) != nullptr;
}

} // namespace zel::aplicativo
