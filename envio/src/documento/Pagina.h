// SPDX-License-Identifier: MIT
// A page of text for a person: UTF-8, lines of up to 78 characters, nothing in it that a terminal
// would obey. Numbers, moments and keys as they are read in Brazil.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zel::envio {

class Pagina {
public:
    static constexpr std::size_t kLargura = 78;

    // Broken between words; what follows the first line stands two places further in. Nothing when
    // there is no text.
    void linha(std::string_view texto, std::size_t recuo = 0);
    // "rotulo: texto"; nothing when there is no text.
    void campo(std::string_view rotulo, std::string_view texto, std::size_t recuo = 0);
    // The value, if any, at the right edge.
    void valor(std::string_view rotulo, std::string_view valor, std::size_t recuo = 0);
    void regua();
    // A rule between what stands already and what follows.
    void secao();
    // Cut wherever the line is full: a text to be copied.
    void inteiro(std::string_view texto);

    const std::string &texto() const { return texto_; }

private:
    std::string texto_;
};

// "1234.5" with at least that many decimals: "1.234,50". What is no number stays as it is.
std::string numeroLido(std::string_view texto, int casas);
// "2026-09-21T10:00:00-03:00": "21/09/2026 10:00:00 -03:00"; a date alone likewise.
std::string momentoLido(std::string_view texto);
// 44 digits in groups of four.
std::string chaveLida(std::string_view chave);
// "CNPJ 11.222.333/0001-81", "CPF 123.456.789-09"; other lengths as they are.
std::string cnpjLido(std::string_view digitos);

} // namespace zel::envio
