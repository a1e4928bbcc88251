// SPDX-License-Identifier: MIT
// What values of a configuration may be.
#pragma once

#include "base/Decimal.h"
#include "base/Texto.h"
#include "comum/Ascii.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace zel::envio {

template <std::size_t kMinimo, std::size_t kMaximo = kMinimo>
bool digitos(std::string_view texto) {
    return texto.size() >= kMinimo && texto.size() <= kMaximo && soDigitos(texto);
}

// TDec_0302a04: up to three digits, up to four decimals.
inline bool porcento(std::string_view texto) {
    const auto numero = Decimal::ler(texto);
    return numero && numero->texto(2, 4, 3);
}

template <std::size_t kMinimo, std::size_t kMaximo>
bool texto(std::string_view valor) {
    return ehTexto(valor, kMinimo, kMaximo);
}

inline bool umDe(std::string_view valor, std::string_view permitidos) {
    return valor.size() == 1 && permitidos.find(valor) != permitidos.npos;
}

inline bool ehCaminho(std::string_view valor) {
    return !valor.empty() && valor.size() < 4096 && valor.find('\0') == valor.npos;
}

inline bool semBrancos(std::string_view valor) {
    return std::all_of(valor.begin(), valor.end(), [](char c) { return c > ' ' && c < 0x7F; });
}

inline bool ehSegredo(std::string_view valor) {
    return !valor.empty() && valor.size() <= 128 && semBrancos(valor);
}

inline bool ehEndereco(std::string_view valor) {
    const std::size_t pergunta = valor.find('?');
    return valor.size() <= 500 && semBrancos(valor) &&
           (valor.starts_with("https://") || valor.starts_with("http://")) &&
           (pergunta == valor.npos || valor.substr(pergunta) == "?p=");
}

// Where a request goes: never in the clear, never with a password in it.
inline bool ehServico(std::string_view valor) {
    constexpr std::string_view kTls = "https://";
    return valor.size() <= 500 && valor.starts_with(kTls) && valor.size() > kTls.size() &&
           valor.substr(kTls.size()).find_first_of("/:") != 0 &&
           std::all_of(valor.begin(), valor.end(), [](char c) {
               return c > ' ' && c < 0x7F &&
                      std::string_view("@?#\\\"<>").find(c) == std::string_view::npos;
           });
}

} // namespace zel::envio
