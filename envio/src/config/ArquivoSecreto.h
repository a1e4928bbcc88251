// SPDX-License-Identifier: MIT
// Files that hold a secret (the CSC, the CSRT): taken only when nobody but their owner can open
// them.
#pragma once

#include "base/Recusa.h"

#include <optional>
#include <string>
#include <string_view>

namespace zel::envio {

// The first line, of up to 1024 bytes, without its end. `campo` is where the file was named, and
// all that a refusal says of it: the secret itself may stand there by mistake.
std::optional<std::string> lerArquivoSecreto(const std::string &arquivo, std::string_view campo,
                                             Recusas &recusas);

// Whether group and others are kept out of a file that exists.
bool soDoDono(const std::string &arquivo);

} // namespace zel::envio
