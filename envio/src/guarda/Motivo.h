// SPDX-License-Identifier: MIT
// Why a file could not be written, in Portuguese.
#pragma once

#include <cerrno>
#include <string>

namespace zel::envio {

inline std::string motivoDoDisco(int erro) {
    switch (erro) {
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return "o disco está cheio: libere espaço; nada foi escrito pela metade";
    case EACCES:
    case EPERM:
    case EROFS:
        return "não pode ser escrito: confira dono e permissões da pasta";
    case ENOENT:
    case ENOTDIR:
        return "a pasta não existe: confira o caminho";
    default:
        return "o disco recusou a escrita (erro " + std::to_string(erro) + ")";
    }
}

} // namespace zel::envio
