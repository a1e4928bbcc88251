// SPDX-License-Identifier: MIT
// What the command reads from and writes to the terminal. The user's locale says how: UTF-8 when
// that is its character set, ISO-8859-1 otherwise. A locale without one ("C", "POSIX", a name that
// is unknown) is UTF-8 from the first text in it that is UTF-8 and not ASCII. Whatever would steer
// the terminal (control characters from a file that is looked at) is written as "?".
#pragma once

#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

namespace zel::aplicativo {

// An argument of the command line as UTF-8. In a locale of UTF-8, bytes that are none are taken as
// ISO-8859-1: a script may hold them.
std::string argumento(const char *bytes);

// A line of the standard input as UTF-8, without its end.
std::optional<std::string> lerLinha();

// Writes a UTF-8 text of any number of lines in the terminal's character set.
void escrever(std::FILE *arquivo, std::string_view utf8);
inline void escrever(std::string_view utf8) {
    escrever(stdout, utf8);
}

// Writes a JSON text: UTF-8 in any locale, and a line end.
void escreverJson(std::string_view json);

} // namespace zel::aplicativo
