// SPDX-License-Identifier: MIT
#include "Comando.h"

#include "Terminal.h"
#include "Texto.h"

namespace zel::aplicativo {

namespace {

std::string usos(const Comando &comando) {
    std::string texto;
    for (const std::string_view uso : dividir(comando.uso, '\n'))
        texto += juntar({"  zel ", uso, "\n"});
    return texto;
}

} // namespace

int falhar(std::string_view texto) {
    escrever(stderr, juntar({"zel: ", texto, "\n"}));
    return kComErros;
}

int usoErrado(const Comando &comando, std::string_view texto) {
    return falhar(
        juntar({texto, "\nUso:\n", usos(comando), "Mais: zel ", comando.nome, " --help"}));
}

void escreverAjuda(const Comando &comando) {
    escrever(juntar({comando.resumo, "\n\nUso:\n", usos(comando), "\n", comando.ajuda}));
}

} // namespace zel::aplicativo
