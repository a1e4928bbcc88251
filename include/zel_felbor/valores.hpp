// SPDX-License-Identifier: MIT
// Values that the operations take: decimal numbers without floating point, rates, adjustments. A
// value that cannot be sent carries the reason, and the operation that is given it is not called.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace zel_felbor {

// What is sent to the library, or the reason why nothing can be.
struct Conversao {
    std::string texto;
    std::string erro;
};

// A decimal number: an integer and the number of its decimals (0 to 10).
class Decimal {
public:
    constexpr Decimal() noexcept = default;
    template <typename Inteiro, std::enable_if_t<std::is_integral_v<Inteiro>, int> = 0>
    constexpr Decimal(Inteiro inteiro) noexcept : unidades_(static_cast<std::int64_t>(inteiro)) {
        static_assert(sizeof inteiro < 8 || std::is_signed_v<Inteiro>);
    }
    // No floating-point number is exactly a tenth: Decimal("0.1").
    template <typename Real, std::enable_if_t<std::is_floating_point_v<Real>, int> = 0>
    Decimal(Real) = delete;
    // Digits with an optional sign in front and at most one comma or point: "12,50", "-3".
    explicit Decimal(std::string_view texto) noexcept : valido_(ler(texto)) {}
    explicit Decimal(const char *texto) noexcept : Decimal(std::string_view(texto)) {}

    static constexpr Decimal centavos(std::int64_t centavos) noexcept { return {centavos, 2}; }
    static constexpr Decimal milesimos(std::int64_t milesimos) noexcept { return {milesimos, 3}; }

    constexpr bool valido() const noexcept { return valido_; }
    constexpr bool negativo() const noexcept { return unidades_ < 0; }
    // The number of decimals that are needed to write the number.
    constexpr int casas() const noexcept {
        int casas = casas_;
        for (std::int64_t n = unidades_; casas > 0 && n % 10 == 0; n /= 10)
            --casas;
        return casas;
    }

    // With a point, at least two decimals, and no zeros after the second one.
    std::string texto() const {
        const int escritas = casas() < 2 ? 2 : casas();
        std::string digitos = std::to_string(unidades_);
        if (negativo()) digitos.erase(0, 1);
        for (int i = casas_; i < escritas; ++i)
            digitos.push_back('0');
        for (int i = escritas; i < casas_; ++i)
            digitos.pop_back();
        const auto largura = static_cast<std::size_t>(escritas) + 1;
        if (digitos.size() < largura) digitos.insert(0, largura - digitos.size(), '0');
        digitos.insert(digitos.size() - static_cast<std::size_t>(escritas), 1, '.');
        return negativo() ? "-" + digitos : digitos;
    }

    // As the library reads it: 15 characters and `maximoDeCasas` decimals at most.
    Conversao converter(std::string_view argumento, int maximoDeCasas) const {
        const std::string nome(argumento);
        if (!valido_) return {"", nome + ": não é um número decimal de até 18 dígitos"};
        if (casas() > maximoDeCasas)
            return {"", nome + ": " + texto() + " tem mais de " + std::to_string(maximoDeCasas) +
                            " casas decimais"};
        std::string escrito = texto();
        if (escrito.size() > 15) return {"", nome + ": " + escrito + " passa de 15 caracteres"};
        return {std::move(escrito), ""};
    }

private:
    constexpr Decimal(std::int64_t unidades, int casas) noexcept
        : unidades_(unidades), casas_(casas) {}

    bool ler(std::string_view texto) noexcept {
        const bool menos = !texto.empty() && texto.front() == '-';
        if (menos) texto.remove_prefix(1);
        int digitos = 0, virgulas = 0;
        for (const char c : texto) {
            if (c == ',' || c == '.') {
                if (++virgulas > 1) return false;
                continue;
            }
            if (c < '0' || c > '9' || ++digitos > 18) return false;
            unidades_ = unidades_ * 10 + (c - '0');
            casas_ += virgulas;
        }
        if (menos) unidades_ = -unidades_;
        return digitos > 0 && casas_ <= 10;
    }

    std::int64_t unidades_ = 0;
    int casas_ = 0;
    bool valido_ = true;
};

// The rate of an item: goods or service with its percentage, or none of it.
class Aliquota {
public:
    static Aliquota mercadoria(const Decimal &percentual) { return {"T", percentual}; }
    static Aliquota servico(const Decimal &percentual) { return {"S", percentual}; }
    static Aliquota isento() { return {"I", 0}; }
    static Aliquota naoIncidencia() { return {"N", 0}; }
    static Aliquota substituicao() { return {"F", 0}; }

    // "T1800", "S0500", "I".
    Conversao converter(std::string_view argumento) const {
        if (tipo_ != "T" && tipo_ != "S") return {tipo_, ""};
        Conversao numero = percentual_.converter(argumento, 2);
        if (!numero.erro.empty()) return numero;
        std::string &digitos = numero.texto;
        if (percentual_.negativo() || digitos.size() > 5)
            return {"", std::string(argumento) + ": " + digitos + " não está entre 0 e 99,99"};
        digitos.erase(digitos.find('.'), 1);
        digitos.insert(0, 4 - digitos.size(), '0');
        return {tipo_ + digitos, ""};
    }

private:
    Aliquota(const char *tipo, const Decimal &percentual) : tipo_(tipo), percentual_(percentual) {}

    std::string tipo_;
    Decimal percentual_;
};

// A discount or a surcharge, as an amount or as a percentage; made without arguments, none.
class Ajuste {
public:
    Ajuste() = default;
    static Ajuste desconto(const Decimal &quantia) { return {"D$", quantia}; }
    static Ajuste descontoPercentual(const Decimal &percentual) { return {"D%", percentual}; }
    static Ajuste acrescimo(const Decimal &quantia) { return {"A$", quantia}; }
    static Ajuste acrescimoPercentual(const Decimal &percentual) { return {"A%", percentual}; }

    // `sentido` is "D" or "A" where the function takes one of them alone, otherwise empty.
    Conversao tipo(std::string_view argumento, std::string_view sentido) const {
        if (!sentido.empty() && tipo_.substr(0, 1) != sentido)
            return {"", std::string(argumento) +
                            (sentido == "D" ? ": não é um desconto" : ": não é um acréscimo")};
        return {tipo_, ""};
    }
    Conversao valor(std::string_view argumento) const {
        if (tipo_.empty()) return {};
        return valor_.converter(argumento, tipo_[1] == '$' ? 2 : 4); // an amount is in cents
    }

private:
    Ajuste(const char *tipo, const Decimal &valor) : tipo_(tipo), valor_(valor) {}

    std::string tipo_;
    Decimal valor_;
};

} // namespace zel_felbor
