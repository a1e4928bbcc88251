// SPDX-License-Identifier: MIT
// The file of the queue: made, told from others, and raised to the form of this program. Its tables
// stand in Forma.cpp, each form as the step from the one before it.
#pragma once

#include "base/Recusa.h"
#include "fila/Banco.h"

#include <memory>
#include <string>

namespace zel::envio {

// Null, with a refusal, when directory or file are not what they have to be; nothing that was there
// is changed then.
std::unique_ptr<Banco> abrirBanco(const std::string &diretorio, Recusas &recusas);

} // namespace zel::envio
