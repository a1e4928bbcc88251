// SPDX-License-Identifier: MIT
// The command line, read: the words of a subcommand and the options that it takes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zel::aplicativo {

// Options that a subcommand may take. All take --help.
enum Opcao : unsigned {
    kJson = 1,
    kDiretorioDado = 2,  // --diretorio DIR
    kEsquema = 4,        // --esquema PASTA
    kMostrarSegredo = 8, // --mostrar-segredo
    kAjudaAchados = 16,  // --ajuda-achados
};

struct Argumentos {
    std::vector<std::string> palavras;  // UTF-8
    std::vector<std::string> originais; // the same as given, for names of files
    bool ajuda = false;
    bool json = false;
    bool mostrarSegredo = false;
    bool ajudaAchados = false;
    std::string diretorio;
    std::string esquema;
    std::string erro; // what is wrong with the command line; empty when nothing is
};

// Reads what follows the subcommand's name. "--" ends the options, and so that a code can be given,
// "-" and a digit begin a word.
Argumentos lerArgumentos(const std::vector<const char *> &dados, unsigned aceitas);

} // namespace zel::aplicativo
