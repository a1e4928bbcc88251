// SPDX-License-Identifier: MIT
// Texts as the authority takes them: what its schemas call TString, TDate and TDateTimeUTC.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zel::envio {

// Without blanks and line ends at both ends, and with one blank where several stood.
std::string aparar(std::string_view texto);

// Characters of UTF-8.
std::size_t caracteres(std::string_view utf8);

// From `minimo` to `maximo` characters, each of which ISO-8859-1 has and none a control character;
// no blank at an end.
bool ehTexto(std::string_view utf8, std::size_t minimo, std::size_t maximo);

// A day of the calendar, "AAAA-MM-DD", from 2000 to 2099.
bool ehData(std::string_view texto);

// A moment with its zone, "AAAA-MM-DDThh:mm:ss-03:00"; zones in whole hours, -11 to +12.
bool ehMomento(std::string_view texto);

// The same in Unix seconds.
std::optional<std::int64_t> segundosDoMomento(std::string_view texto);

} // namespace zel::envio
