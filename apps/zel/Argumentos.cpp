// SPDX-License-Identifier: MIT
#include "Argumentos.h"

#include "Terminal.h"
#include "Texto.h"

#include <algorithm>
#include <iterator>

namespace zel::aplicativo {

namespace {

// An option without a value sets a mark, one with a value fills a text.
struct LinhaOpcao {
    std::string_view nome;
    unsigned opcao;
    bool Argumentos::*marca;
    std::string Argumentos::*texto = nullptr;
};

constexpr LinhaOpcao kOpcoes[] = {
    {"--help", 0, &Argumentos::ajuda},
    {"-h", 0, &Argumentos::ajuda},
    {"--ajuda", 0, &Argumentos::ajuda},
    {"--json", kJson, &Argumentos::json},
    {"--mostrar-segredo", kMostrarSegredo, &Argumentos::mostrarSegredo},
    {"--ajuda-achados", kAjudaAchados, &Argumentos::ajudaAchados},
    {"--diretorio", kDiretorioDado, nullptr, &Argumentos::diretorio},
    {"--esquema", kEsquema, nullptr, &Argumentos::esquema},
};

bool ehOpcao(std::string_view palavra) {
    return palavra.size() > 1 && palavra[0] == '-' && !ehDigito(palavra[1]);
}

} // namespace

Argumentos lerArgumentos(const std::vector<const char *> &dados, unsigned aceitas) {
    Argumentos argumentos;
    bool acabaram = false;
    for (std::size_t i = 0; i < dados.size(); ++i) {
        const std::string_view palavra = dados[i];
        if (!acabaram && palavra == "--") {
            acabaram = true;
            continue;
        }
        if (acabaram || !ehOpcao(palavra)) {
            argumentos.palavras.push_back(argumento(dados[i]));
            argumentos.originais.emplace_back(palavra);
            continue;
        }
        // "--diretorio=DIR" and "--diretorio DIR" are the same.
        const std::size_t igual = palavra.find('=');
        const auto opcao = std::ranges::find(kOpcoes, palavra.substr(0, igual), &LinhaOpcao::nome);
        if (opcao == std::end(kOpcoes) || (opcao->opcao & ~aceitas) != 0) {
            argumentos.erro = juntar({"opção desconhecida: ", argumento(dados[i])});
        } else if (opcao->texto == nullptr) {
            argumentos.*opcao->marca = true;
        } else if (igual != palavra.npos) {
            argumentos.*opcao->texto = palavra.substr(igual + 1);
        } else if (i + 1 < dados.size()) {
            argumentos.*opcao->texto = dados[++i];
        } else {
            argumentos.erro = juntar({"falta o valor de ", palavra});
        }
    }
    return argumentos;
}

} // namespace zel::aplicativo
