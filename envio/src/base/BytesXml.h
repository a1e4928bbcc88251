// SPDX-License-Identifier: MIT
// Bytes before they are read as XML: what would cost the reader more time than their size suggests,
// or mean another thing to it than it does here, is refused.
#pragma once

#include <string>
#include <string_view>

namespace zel::envio {

// Why not to read them, in Portuguese; empty when they may be. The reader compares the attributes
// of an element with each other, and a prefix with the namespaces in force: both are limited, and
// so is a DOCTYPE, which could declare more of them.
std::string motivoParaNaoLer(std::string_view bytes);

// Their encoding by declaration or mark, else UTF-8 when they are that, and ISO-8859-1 otherwise.
// Null with a reason for any other than the four in which ASCII stands for itself.
const char *codificacaoDe(std::string_view bytes, std::string &motivo);

} // namespace zel::envio
