// SPDX-License-Identifier: MIT
// A document held against the schema that the tax authority publishes, by the program xmllint.
#pragma once

#include "conferencia/Achado.h"

#include <string>
#include <string_view>

namespace zel::aplicativo {

// `pasta` holds the schema files; the root's name chooses among them. Persons' data in the messages
// is hidden. Without xmllint, or without the file, that is the finding.
void conferirEsquema(std::string_view bytes, std::string_view raiz, const std::string &pasta,
                     Relatorio &relatorio);

} // namespace zel::aplicativo
