// SPDX-License-Identifier: MIT
// The library as the subcommands use it: where its data directory is, values by path, state.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zel::aplicativo {

// The data directory, ending in "/": the one given, made the library's own by ZEL_DIRETORIO, or
// else the library's choice. None, with the reason and the remedy in `motivo`, when the one given
// or ZEL_DIRETORIO is no directory, or ZEL_DIRETORIO is relative: the library would ignore it.
std::optional<std::string> escolherDiretorio(const std::string &dado, std::string &motivo);

// Whether the directory has a configuration file: the library would create one.
bool temConfig(const std::string &diretorio);

// The value of a key, UTF-8. None when there is no such key; `codigo` receives the library's
// answer.
std::optional<std::string> lerConfig(std::string_view caminho, int &codigo);
// The same, empty for none.
std::string configuracao(std::string_view caminho);

// Stores a value given in ISO-8859-1; answers the library's code.
int gravarConfig(std::string_view caminho, const std::string &latin1);

int estadoDoCupom();

} // namespace zel::aplicativo
