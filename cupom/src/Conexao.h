// SPDX-License-Identifier: MIT
// Connections to network printers.
#pragma once

#include "Espera.h"
#include "Saida.h"
#include "comum/Descritor.h"

#include <optional>
#include <string>
#include <string_view>

namespace zel::cupom {

using comum::Descritor;

struct EnderecoTcp {
    std::string host;
    std::string porta;
};

// "host", "host:port" or "[host]:port"; none when it is neither.
std::optional<EnderecoTcp> lerEndereco(std::string_view texto);

struct Conexao {
    Envio resultado = Envio::kAusente;
    Descritor descritor; // open when kFeito, not blocking
};

// Tries the addresses of the host one after the other.
Conexao conectar(const EnderecoTcp &endereco, const Prazo &prazo);

} // namespace zel::cupom
