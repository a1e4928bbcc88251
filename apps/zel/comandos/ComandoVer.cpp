// SPDX-License-Identifier: MIT
// zel ver: the picture of a receipt, in a file or on the screen.
#include "comandos/ComandoComum.h"
#include "comandos/ComandoRecibo.h"

#include "comandos/Papel.h"
#include "leitura/Terminal.h"
#include "leitura/Texto.h"

#include <cstdlib>
#include <cstring>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace zel::aplicativo {

namespace {

constexpr const char *kAbridor = "xdg-open";
constexpr useconds_t kPasso = 100000; // microseconds
constexpr int kPassos = 20;

bool temVariavel(const char *nome) {
    const char *valor = std::getenv(nome);
    return valor != nullptr && *valor != '\0';
}

bool temTela() {
    return temVariavel("DISPLAY") || temVariavel("WAYLAND_DISPLAY");
}

// A file that only the user reads, for the program that shows it: a receipt names its consumer.
std::string arquivoParaTela() {
    if (temVariavel("XDG_RUNTIME_DIR"))
        return juntar({std::getenv("XDG_RUNTIME_DIR"), "/zel-cupom.png"});
    std::string pasta =
        juntar({temVariavel("TMPDIR") ? std::getenv("TMPDIR") : "/tmp", "/zel-cupom-XXXXXX"});
    return ::mkdtemp(pasta.data()) == nullptr ? "" : pasta + "/cupom.png";
}

// Why the picture cannot be shown; empty when it is. A viewer that goes on is not waited for.
std::string mostrar(const std::string &arquivo) {
    std::string nome = kAbridor, caminho = arquivo;
    char *argumentos[] = {nome.data(), caminho.data(), nullptr};
    pid_t processo = 0;
    if (const int erro = ::posix_spawnp(&processo, kAbridor, nullptr, nullptr, argumentos, environ);
        erro != 0)
        return juntar({kAbridor, ": ", std::strerror(erro)});
    for (int i = 0; i < kPassos; ++i) {
        int estado = 0;
        if (::waitpid(processo, &estado, WNOHANG) == processo)
            return WIFEXITED(estado) && WEXITSTATUS(estado) == 0
                       ? ""
                       : juntar({kAbridor, " não pôde abrir a figura"});
        ::usleep(kPasso);
    }
    return {};
}

int ver(const Argumentos &argumentos) {
    if (!argumentos.palavras.empty()) return usoErrado(kVer, "ver não leva argumentos");
    const bool tela = argumentos.saida.empty();
    if (tela && !temTela())
        return falhar("não há tela (DISPLAY, WAYLAND_DISPLAY); grave a figura com --saida ARQUIVO");
    int saida = 0;
    const auto recibo = reciboPedido(kVer, argumentos, true, saida);
    if (!recibo) return saida;
    const std::string arquivo = tela ? arquivoParaTela() : argumentos.saida;
    const std::string nome = argumento(arquivo.c_str());
    const RespostaDoPapel figura = gravarFigura({recibo->texto, recibo->colunas}, arquivo);
    if (figura.codigo <= 0) return falhar(juntar({nome, ": ", figura.descricao}));
    if (tela)
        if (const std::string erro = mostrar(arquivo); !erro.empty())
            return falhar(juntar({erro, "; a figura está em ", nome}));
    escreverLinhas(argumentos, {{"figura", "Figura", nome},
                                {"colunas", "Colunas", std::to_string(recibo->colunas)}});
    return kLimpo;
}

} // namespace

const Comando kVer = {
    "ver",
    "ver [--saida ARQUIVO] [--colunas 42|48]\n"
    "ver [--documento ARQUIVO] --retorno ARQUIVO|OFFLINE [--saida ARQUIVO] [--colunas 42|48]",
    "Mostra o último cupom como a figura do seu papel.",
    "Sem --saida abre a figura na tela, com xdg-open; com ela grava ARQUIVO, que é SVG ou PDF\n"
    "se o nome termina em .svg ou .pdf, e PNG se não.\n\n"
    "O último cupom é o que a biblioteca montou por último. Se o último documento ainda não\n"
    "tem o seu, ele é montado sem a resposta da SEFAZ, só para ver.\n"
    "--retorno ARQUIVO monta o cupom com a resposta que o componente de envio deixou; OFFLINE,\n"
    "sem ela. --documento ARQUIVO é o documento, senão documentosEnvio.xml. Ver não muda nada no\n"
    "diretório do caixa.\n"
    "--colunas 42 ou 48 é a largura do cupom.\n"
    "--diretorio DIR escolhe o diretório de dados.\n",
    kJson | kDiretorioDado | kRecibo | kFigura,
    ver,
};

} // namespace zel::aplicativo
