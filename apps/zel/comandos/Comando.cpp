// SPDX-License-Identifier: MIT
#include "comandos/Comando.h"

#include "leitura/Json.h"
#include "leitura/Terminal.h"
#include "leitura/Texto.h"

namespace zel::aplicativo {

namespace {

std::string usos(const Comando &comando) {
    std::string texto;
    for (const std::string_view uso : dividir(comando.uso, '\n'))
        texto += juntar({"  zel ", uso, "\n"});
    return texto;
}

bool &emJson() {
    static bool json = false;
    return json;
}

// The remedy stands in a text on a line of its own.
int falharEmJson(std::string_view resultado, std::string_view texto) {
    constexpr std::string_view kRemedio = "\n    Remédio: ";
    const std::size_t lugar = texto.find(kRemedio);
    Json json;
    json.abrirObjeto().texto("resultado", resultado).texto("motivo", texto.substr(0, lugar));
    if (lugar != texto.npos) json.texto("remedio", texto.substr(lugar + kRemedio.size()));
    escreverJson(json.fecharObjeto().escrito());
    return kComErros;
}

} // namespace

void falarEmJson() {
    emJson() = true;
}

bool falaEmJson() {
    return emJson();
}

int falhar(std::string_view texto) {
    if (emJson()) return falharEmJson("falhou", texto);
    escrever(stderr, juntar({"zel: ", texto, "\n"}));
    return kComErros;
}

int usoErrado(const Comando &comando, std::string_view texto) {
    if (emJson()) return falharEmJson("uso errado", texto);
    return falhar(
        juntar({texto, "\nUso:\n", usos(comando), "Mais: zel ", comando.nome, " --help"}));
}

void escreverAjuda(const Comando &comando) {
    escrever(juntar({comando.resumo, "\n\nUso:\n", usos(comando), "\n", comando.ajuda}));
}

} // namespace zel::aplicativo
