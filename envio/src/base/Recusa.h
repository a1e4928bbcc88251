// SPDX-License-Identifier: MIT
// What is wrong with a document, a configuration or a certificate: each thing by name, all of them
// at once. Whoever finds something adds it here and goes on; whoever asked looks at the end.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zel::envio {

// UTF-8 throughout, with blanks in the place of control characters; the reason is a Portuguese
// phrase that names the remedy where there is one.
struct Recusa {
    std::string campo; // path of an element, key of the configuration, or file
    std::string valor; // as it was found; empty when it is missing or secret
    std::string motivo;
};

class Recusas {
public:
    // Always false, so that a check can end with `return recusas.juntar(...)`. Values longer than
    // 120 characters are cut.
    bool juntar(std::string_view campo, std::string_view valor, std::string_view motivo);
    void juntar(const Recusas &outras);

    bool nenhuma() const { return lista_.empty(); }
    // As many as anybody reads; a hostile text has millions.
    bool cheias() const { return lista_.size() >= 100; }
    const std::vector<Recusa> &lista() const { return lista_; }

    // A line each: `field: "value"; reason`.
    std::string texto() const;

private:
    std::vector<Recusa> lista_;
};

} // namespace zel::envio
