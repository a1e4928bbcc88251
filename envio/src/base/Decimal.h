// SPDX-License-Identifier: MIT
// Decimal numbers of documents, exactly: what is written is what is meant, and no sum of money goes
// through binary fractions.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zel::envio {

// Money in hundredths.
using Centavos = std::int64_t;

// A number without a sign as a document writes it: up to 15 digits before the point and up to 10
// after it. "10.", ".50" and "007" are numbers, "", ".", "1,5", "-1" and "1e3" are not.
class Decimal {
public:
    static constexpr int kMaisCasas = 10;

    constexpr Decimal() = default;
    constexpr Decimal(std::int64_t unidades, int casas) : unidades_(unidades), casas_(casas) {}
    static constexpr Decimal deCentavos(Centavos valor) { return {valor, 2}; }
    static std::optional<Decimal> ler(std::string_view texto);

    bool zero() const { return unidades_ == 0; }
    // Decimals that are needed to write it without loss: 1.500 needs 1.
    int casasPrecisas() const;
    // In hundredths; none when that would lose something.
    std::optional<Centavos> centavos() const;

    // With at least `minimo` decimals and as many more as it needs; none when it needs more than
    // `maximo`, or more than `inteiros` digits before the point.
    std::optional<std::string> texto(int minimo, int maximo, int inteiros) const;

    // `base` times this number over 100, half a cent goes up: a percentage of an amount.
    Centavos porCentoDe(Centavos base) const;

    // This number times that one, in hundredths, half a cent goes up; none when it is out of range.
    std::optional<Centavos> vezes(const Decimal &outro) const;

private:
    std::int64_t unidades_ = 0; // the number times 10 to the power of casas_
    int casas_ = 0;
};

// "12.34", "-0.05".
std::string textoDe(Centavos valor);

} // namespace zel::envio
