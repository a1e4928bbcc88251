// SPDX-License-Identifier: MIT
// A printer's command as its manual writes it, for instance "GS v 48 0 {bytes} {height} {data}":
// words with blanks between them. A word is the name of a control character, a number 0 to 255, a
// single character that stands for itself (digits are numbers), or the place of a value.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zel::cupom {

// What a command may ask for. Numbers are one byte; lengths are two, the lower one first.
enum class Valor {
    kNumero,  // {n}
    kModulo,  // {module}: side of a QR code's module in dots
    kTamanho, // {length} of the data; {length+3} adds what else the command counts
    kLargura, // {bytes} of one row of dots
    kAltura,  // {height} in dots
    kDados,   // {data}
};

// Values for one writing of a command.
struct Valores {
    int numero = 0;
    int modulo = 0;
    std::size_t largura = 0;
    std::size_t altura = 0;
    std::string_view dados;
};

constexpr std::size_t kMaiorComando = 128; // words

class Comando {
public:
    // None when a word is none of those above or there are too many; no words are no command.
    static std::optional<Comando> ler(std::string_view texto);

    bool existe() const { return !partes_.empty(); }
    // Whether the values that it asks for are exactly these.
    bool pede(const std::vector<Valor> &valores) const;

    void escrever(std::string &saida, const Valores &valores) const;

private:
    // Bytes as they are, and the value that follows them, if any.
    struct Parte {
        std::string bytes;
        std::optional<Valor> valor;
        std::size_t soma = 0;
    };

    bool porPalavra(std::string_view palavra);
    bool porValor(std::string_view palavra);

    std::vector<Parte> partes_;
};

} // namespace zel::cupom
