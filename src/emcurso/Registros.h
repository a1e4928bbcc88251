// SPDX-License-Identifier: MIT
// The lines of the file of the document in progress: their types and where one ends. What stands in
// them is ArquivoPersistencia's.
#pragma once

#include "secao/Secao.h"
#include "texto/Numero.h"
#include "zel_felbor/codigos.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace zel {

// The section of each record type, "01" first.
inline constexpr std::array<Secao, 6> kSecaoDoTipo{Secao::kAbertura,    Secao::kVenda,
                                                   Secao::kTotalizacao, Secao::kTransporte,
                                                   Secao::kPagamento,   Secao::kEncerramento};

constexpr bool ehLista(Secao secao) {
    return secao == Secao::kVenda || secao == Secao::kPagamento;
}

// The place of a line's record type in kSecaoDoTipo.
inline std::optional<std::size_t> tipoDaLinha(std::string_view linha) {
    const long long tipo = lerInteiro(linha.substr(0, 2));
    if (tipo < 1 || tipo > static_cast<long long>(kSecaoDoTipo.size())) return {};
    return static_cast<std::size_t>(tipo - 1);
}

// Calls `ler` with each complete line until it answers something other than 1. Returns that answer,
// and in `inteiro` the bytes that complete lines take.
template <class Ler>
int percorrerLinhas(std::string_view texto, std::size_t &inteiro, Ler ler) {
    inteiro = 0;
    for (std::size_t fim; (fim = texto.find('\n', inteiro)) != texto.npos; inteiro = fim + 1) {
        std::string_view linha = texto.substr(inteiro, fim - inteiro);
        if (linha.ends_with('\r')) linha.remove_suffix(1);
        if (const int resultado = ler(linha); resultado != ZEL_OK) return resultado;
    }
    return ZEL_OK;
}

} // namespace zel
