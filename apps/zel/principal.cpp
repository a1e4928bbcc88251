// SPDX-License-Identifier: MIT
// The command zel: looks after a till from the command line. Each subcommand stands in a file of
// its own.
#include "comandos/Comando.h"
#include "leitura/Terminal.h"
#include "leitura/Texto.h"

#include "ZEL_FelborFramework.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <iterator>

namespace zel::aplicativo {

namespace {

constexpr const Comando *kComandos[] = {
    &kConferir, &kCodigo,     &kConfig,    &kEstado,    &kVender, &kVer,        &kImprimir,
    &kCancelar, &kInutilizar, &kConsultar, &kDocumento, &kEnviar, &kEnvioDaFila};

std::string ajudaGeral() {
    std::string texto = "zel: cuida de um caixa com NFC-e pela linha de comando.\n\nUso:\n"
                        "  zel COMANDO [argumentos]\n\nComandos:\n";
    for (const Comando *comando : kComandos)
        texto += juntar({"  ", comando->nome, std::string(12 - comando->nome.size(), ' '),
                         comando->resumo, "\n"});
    return texto + "\nAjuda de um comando: zel COMANDO --help\nVersão: zel --version\n\n"
                   "Saída: 0 nada a dizer, 1 há avisos, 2 há erros ou o uso está errado; de quem "
                   "transmite\n"
                   "também 3 recusado, 4 sem resposta, 5 não enviado.\n"
                   "O diretório de dados é o de --diretorio, senão o de ZEL_DIRETORIO, senão o da "
                   "biblioteca.\n";
}

int executar(const Comando &comando, const std::vector<const char *> &dados) {
    const Argumentos argumentos = lerArgumentos(dados, comando.opcoes);
    if (!argumentos.erro.empty()) return usoErrado(comando, argumentos.erro);
    if (argumentos.ajuda) {
        escreverAjuda(comando);
        return kLimpo;
    }
    return comando.executar(argumentos);
}

int principal(const std::vector<const char *> &dados) {
    if (dados.empty()) {
        escrever(stderr, ajudaGeral());
        return kComErros;
    }
    const std::string_view nome = dados.front();
    if (nome == "--help" || nome == "-h" || nome == "--ajuda") {
        escrever(ajudaGeral());
        return kLimpo;
    }
    if (nome == "--version" || nome == "--versao") {
        escrever("zel " ZEL_VERSAO "\n");
        return kLimpo;
    }
    if (std::ranges::find(dados, std::string_view("--json")) != dados.end()) falarEmJson();
    const auto comando = std::ranges::find(kComandos, nome, &Comando::nome);
    if (comando != std::end(kComandos))
        return executar(**comando, {dados.begin() + 1, dados.end()});
    return falhar(
        juntar({"comando desconhecido: ", argumento(dados.front()), "\nOs comandos: zel --help"}));
}

} // namespace

} // namespace zel::aplicativo

int main(int quantos, char **argumentos) {
    using namespace zel::aplicativo;
    try {
        const int saida = principal({argumentos + std::min(1, quantos), argumentos + quantos});
        // What could not be written was not said.
        return std::fflush(stdout) == 0 && std::ferror(stdout) == 0 ? saida : int{kComErros};
    } catch (const std::exception &) {
        return falhar("faltou memória");
    }
}
