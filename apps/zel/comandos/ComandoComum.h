// SPDX-License-Identifier: MIT
// What the subcommands that use the library have in common: the till's directory made ready, rows
// said to people or programs, and a refusal of the library in its code, meaning and remedy.
#pragma once

#include "comandos/Comando.h"

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zel::aplicativo {

// The data directory that the arguments choose, ending in "/". None, and said, when it is none, or
// its configuration cannot be read; when there is none only if it `cria` one.
std::optional<std::string> prepararDiretorio(const Argumentos &argumentos, bool cria = false);

// The same without calling the library in this process: a child of it does.
std::optional<std::string> prepararDiretorioAParte(const Argumentos &argumentos);

// What is said, in order: the name for programs, the one for people, the value. A row without a
// name is for people alone; one with a value in JSON, which has no label, for programs. A row with
// an empty value is left out.
struct Linha {
    std::string_view nome;
    std::string rotulo;
    std::string valor;
    std::string json = {};
};
void escreverLinhas(const Argumentos &argumentos, const std::vector<Linha> &linhas);
// The same as a JSON object.
std::string emJson(const std::vector<Linha> &linhas);

// Says that the library refused `feito`, a step, key or file, with `codigo`, and answers kComErros:
// on the error output, or as a JSON object with `mais` in it. The rows are said in the text too.
int recusar(std::string_view feito, int codigo, const std::vector<Linha> &mais = {});

// The command line of another subcommand for the same till, to be copied.
std::string comando(const Argumentos &argumentos, std::string_view resto);

// The text given by an option as the library takes it; none, and said, when ISO-8859-1 lacks a
// character of it.
std::optional<std::string> textoDado(std::string_view opcao, const std::string &bytes);

} // namespace zel::aplicativo
