// SPDX-License-Identifier: MIT
// The system's errors in words of our own: the same in every locale.
#pragma once

#include <string>

namespace zel {

// In the place of an error number: something that is no regular file, without an error.
inline constexpr int kNaoEhArquivo = -1;

// "permissão negada (EACCES)"; "erro 71 do sistema" for one without words. UTF-8.
std::string textoDoErro(int erro);

} // namespace zel
