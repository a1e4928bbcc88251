// SPDX-License-Identifier: MIT
#include "base/Decimal.h"

#include "comum/Ascii.h"
#include "comum/Zeros.h"

#include <array>
#include <cstddef>
#include <limits>

namespace zel::envio {

namespace {

// 15 digits before the point and 10 after it do not fit 64 bits: what would not is refused.
__extension__ using Largo = __int128;

constexpr std::int64_t kLimite = std::numeric_limits<std::int64_t>::max();

constexpr std::int64_t potencia(int casas) {
    std::int64_t valor = 1;
    for (int i = 0; i < casas; ++i)
        valor *= 10;
    return valor;
}

// Divided by a power of ten, half goes up.
constexpr Largo arredondar(Largo valor, int casas) {
    const Largo divisor = potencia(casas);
    return (valor + divisor / 2) / divisor;
}

} // namespace

std::optional<Decimal> Decimal::ler(std::string_view texto) {
    const std::size_t ponto = texto.find('.');
    const std::string_view inteiros = texto.substr(0, ponto);
    std::string_view casas = ponto == texto.npos ? std::string_view() : texto.substr(ponto + 1);
    if ((inteiros.empty() && casas.empty()) || inteiros.size() > 15) return {};
    while (casas.size() > kMaisCasas && casas.back() == '0')
        casas.remove_suffix(1);
    if (casas.size() > kMaisCasas) return {};
    Largo valor = 0;
    for (const std::string_view parte : {inteiros, casas}) {
        if (!parte.empty() && !soDigitos(parte)) return {};
        for (const char c : parte)
            valor = valor * 10 + (c - '0');
    }
    if (valor > kLimite) return {};
    return Decimal(static_cast<std::int64_t>(valor), static_cast<int>(casas.size()));
}

int Decimal::casasPrecisas() const {
    int casas = casas_;
    for (std::int64_t resto = unidades_; casas > 0 && resto % 10 == 0; resto /= 10)
        --casas;
    return casas;
}

std::optional<Centavos> Decimal::centavos() const {
    if (casasPrecisas() > 2) return {};
    if (casas_ >= 2) return unidades_ / potencia(casas_ - 2);
    const Largo valor = Largo{unidades_} * potencia(2 - casas_);
    if (valor > kLimite) return {};
    return static_cast<Centavos>(valor);
}

std::optional<std::string> Decimal::texto(int minimo, int maximo, int inteiros) const {
    const int precisas = casasPrecisas();
    if (precisas > maximo) return {};
    const int casas = precisas < minimo ? minimo : precisas;
    std::string antes = std::to_string(unidades_ / potencia(casas_));
    if (antes.size() > static_cast<std::size_t>(inteiros)) return {};
    if (casas == 0) return antes;
    std::string depois = casas_ > 0 ? comZeros(std::to_string(unidades_ % potencia(casas_)),
                                               static_cast<std::size_t>(casas_))
                                    : "";
    depois.resize(static_cast<std::size_t>(casas), '0');
    return antes + '.' + depois;
}

Centavos Decimal::porCentoDe(Centavos base) const {
    return static_cast<Centavos>(arredondar(Largo{base} * unidades_, casas_ + 2));
}

std::optional<Centavos> Decimal::vezes(const Decimal &outro) const {
    Largo produto = Largo{unidades_} * outro.unidades_;
    int casas = casas_ + outro.casas_;
    for (; casas < 2; ++casas)
        produto *= 10;
    const int fora = casas - 2;
    const Largo divisor =
        fora > 10 ? Largo{potencia(10)} * potencia(fora - 10) : Largo{potencia(fora)};
    const Largo valor = (produto + divisor / 2) / divisor;
    if (valor > kLimite) return {};
    return static_cast<Centavos>(valor);
}

std::string textoDe(Centavos valor) {
    const bool negativo = valor < 0;
    const std::int64_t modulo = negativo ? -valor : valor;
    return (negativo ? "-" : "") + std::to_string(modulo / 100) + '.' +
           comZeros(std::to_string(modulo % 100), 2);
}

} // namespace zel::envio
