// SPDX-License-Identifier: MIT
// Decimal texts, read and written without the process locale: an application that calls setlocale
// must not change one byte of a document. Everything here is a pure function.
#pragma once

#include <string>
#include <string_view>

namespace zel {

// Reads a decimal: optional blanks, an optional sign, digits with at most one point, ending at the
// first other character. No digits reads as 0; there is no exponent, hexadecimal, "inf" or "nan".
double lerDecimal(std::string_view texto);

// Reads a whole number: optional blanks, an optional sign, digits, ending at the first other
// character. No digits reads as 0; a number beyond the range of long long stays at its bound.
long long lerInteiro(std::string_view texto);

// Writes with exactly `casas` decimals, correctly rounded from the binary value. A value that is
// written as zero has no sign: the authority knows no "-0.00".
std::string formatarDecimal(double valor, int casas);

// Money: two decimals ("%0.2f").
inline std::string formatarMoeda(double valor) {
    return formatarDecimal(valor, 2);
}

// The value that formatarMoeda writes.
inline double emCentavos(double valor) {
    return lerDecimal(formatarMoeda(valor));
}

// Writes a whole number with zeros on the left up to `largura` digits, the sign in front ("%0*d").
std::string formatarInteiro(long long valor, int largura = 0);

// The text with its first comma turned into a point.
std::string trocarVirgula(std::string_view texto);

// Zeros on the left up to `largura` characters; a longer text stays as it is.
std::string fnZerosLeft(std::string_view texto, std::size_t largura);

// Drops each leading zero that is followed by a character other than a point: "000" is "0",
// "0.50" stays, "0012.3" is "12.3".
std::string fnRetirarZerosLeft(std::string_view texto);

// True for digits with at most one point and at least one digit: a text that can stand in a
// document as a decimal number exactly as it is.
bool ehDecimalPuro(std::string_view texto);

// Cuts to two decimals: toward zero when `truncar`, otherwise by correct rounding of the binary
// value.
double arredondarOuTruncar(double valor, bool truncar);

} // namespace zel
