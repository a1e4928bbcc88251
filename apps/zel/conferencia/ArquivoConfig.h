// SPDX-License-Identifier: MIT
// Reads ZEL_Framework.xml without the library, which completes and creates it when it loads. Finds
// every key with its value and line, and everything that the library does not understand as it
// stands: the first such thing ends the library's reading, keys after it keep their defaults.
#pragma once

#include "conferencia/Achado.h"
#include "leitura/Chaves.h"

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace zel::aplicativo {

// Why the library refuses the file as a whole: "não tem <FRAMEWORKZEL>...". Empty when it does not.
std::string_view faltaDaRaiz(std::string_view bytes);
std::string_view remedioDaRaiz();

struct ElementoConfig {
    const LinhaChave *chave;
    std::string valor; // as the file holds it, in UTF-8
    std::size_t linha;
    bool ignorado; // stands after the place where the library stops reading
};

// A value that counts, and where it stands; the default has line 0.
struct ValorConfig {
    std::string valor;
    std::size_t linha = 0;
};

class ArquivoConfig {
public:
    // Reads the bytes of a file and reports what is wrong with it as a text. Ends on any bytes, in
    // time proportional to their number.
    ArquivoConfig(std::string_view bytes, Relatorio &relatorio);

    // False when the root's tags are missing: the library refuses the file.
    bool temRaiz() const { return temRaiz_; }
    // False when the library stops reading before the end: keys after that have their defaults.
    bool lidaInteira() const;
    const std::vector<ElementoConfig> &elementos() const { return elementos_; }

    // What the library reads for a key of the catalogue.
    const ValorConfig &operator[](std::string_view caminho) const;

private:
    void conferirPresenca(Relatorio &relatorio) const;
    void conferirCodificacao(std::string_view bytes, Relatorio &relatorio) const;
    void valer();

    bool temRaiz_ = false;
    std::vector<ElementoConfig> elementos_;
    std::map<std::string, ValorConfig, std::less<>> valores_;
};

} // namespace zel::aplicativo
