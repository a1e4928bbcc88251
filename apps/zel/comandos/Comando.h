// SPDX-License-Identifier: MIT
// A subcommand of zel: what it is called, what it takes, what it says of itself, and what it does.
// A new one is a file with its Comando, declared below, and a line in the table of principal.cpp.
#pragma once

#include "leitura/Argumentos.h"

#include <string_view>

namespace zel::aplicativo {

// Exit codes of every subcommand; the last three are of those that transmit.
enum Saida : int {
    kLimpo = 0,
    kComAvisos = 1,
    kComErros = 2,
    kSaidaRecusado = 3,
    kSaidaSemResposta = 4,
    kSaidaNaoEnviado = 5
};

struct Comando {
    std::string_view nome;
    std::string_view uso;    // a line for each form, after "zel "
    std::string_view resumo; // one line
    std::string_view ajuda;  // paragraphs
    unsigned opcoes;         // of Opcao
    int (*executar)(const Argumentos &argumentos);
};

extern const Comando kConferir;
extern const Comando kCodigo;
extern const Comando kConfig;
extern const Comando kEstado;
extern const Comando kVender;
extern const Comando kVer;
extern const Comando kImprimir;
extern const Comando kCancelar;
extern const Comando kInutilizar;
extern const Comando kConsultar;
extern const Comando kDocumento;
extern const Comando kEnviar;
extern const Comando kEnvioDaFila;

// From here on what is wrong is said as a JSON object, on the standard output.
void falarEmJson();
bool falaEmJson();

// Says on the error output what is wrong, and answers kComErros.
int falhar(std::string_view texto);
// The same for a command line that the subcommand does not understand.
int usoErrado(const Comando &comando, std::string_view texto);

void escreverAjuda(const Comando &comando);

} // namespace zel::aplicativo
