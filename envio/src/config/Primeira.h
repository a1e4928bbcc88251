// SPDX-License-Identifier: MIT
// A first zel-envio.toml, from what the till's configuration knows.
#pragma once

#include "base/Recusa.h"

#include <optional>
#include <string>
#include <string_view>

namespace zel::envio {

// `caixa`: the bytes of ZEL_Framework.xml. The text has comments for everything that the shop has
// to add and is one that Configuracao::ler takes. The CSC itself, which the till keeps in
// CONFIGURACAO\TokenSefaz, is not copied: the text says where it is and where it goes; where the
// till has none the QR code is of version 3, which asks for none. A file that `arquivos` names is
// used at once; the others stand as comments.
struct PrimeirosArquivos {
    std::string certificado, senha, csc;
};
std::optional<std::string> primeiraConfiguracao(std::string_view caixa, Recusas &recusas,
                                                const PrimeirosArquivos &arquivos = {});

} // namespace zel::envio
