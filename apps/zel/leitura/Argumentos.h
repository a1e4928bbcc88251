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
    kVenda = 32,         // --itens, --pagamento, --cpf, --ajuste, --mensagem, --continuar...
    kRecibo = 64,        // --documento, --retorno, --colunas
    kFigura = 128,       // --saida ARQUIVO
    kImpressora = 256,   // --impressora, --perfil, --perfis, --espera, --figura, --pdf
    kJustificativa = 512,
    kSerie = 1024,
    kProtocolo = 2048,
    kEnvio = 4096,         // --substituta, --data, --ensaio
    kConfigDoEnvio = 8192, // --config
    kTroco = 16384,
    kEsperar = 32768,   // --esperar SEGUNDOS
    kSubstitui = 65536, // --substitui CHAVE
    kTransmitir = 131072,
    kProcura = 262144, // --dia, --mes, --consumidor, --caixa, --alguem, --passos
};

struct Argumentos {
    std::vector<std::string> palavras;  // UTF-8
    std::vector<std::string> originais; // the same as given, for names of files
    bool ajuda = false;
    bool json = false;
    bool mostrarSegredo = false;
    bool ajudaAchados = false;
    bool continuar = false;
    bool cancelar = false;
    bool cortar = false;
    bool perfis = false;
    bool figura = false;
    bool ensaio = false;
    bool transmitir = false;
    bool alguem = false;
    bool passos = false;
    // As given; argumento() makes UTF-8 of those that are no names of files.
    std::string diretorio;
    std::string esquema;
    std::string itens;
    std::string cpf;
    std::string cnpj;
    std::string estrangeiro;
    std::string ajuste;
    std::string mensagem;
    std::string documento;
    std::string retorno;
    std::string colunas;
    std::string saida;
    std::string impressora;
    std::string perfil;
    std::string espera;
    std::string pdf;
    std::string justificativa;
    std::string serie;
    std::string protocolo;
    std::string config;
    std::string substituta;
    std::string data;
    std::string troco;
    std::string esperar;
    std::string substitui;
    std::string dia;
    std::string mes;
    std::string consumidor;
    std::string caixa;
    std::vector<std::string> pagamentos;
    std::string erro; // what is wrong with the command line; empty when nothing is
};

// Reads what follows the subcommand's name. "--" ends the options, and so that a code can be given,
// "-" and a digit begin a word.
Argumentos lerArgumentos(const std::vector<const char *> &dados, unsigned aceitas);

} // namespace zel::aplicativo
