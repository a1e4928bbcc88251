// SPDX-License-Identifier: MIT
#include "leitura/Argumentos.h"

#include "leitura/Terminal.h"
#include "leitura/Texto.h"

#include <algorithm>
#include <iterator>

namespace zel::aplicativo {

namespace {

// An option without a value sets a mark, one with a value fills a text, or adds one to a list.
struct LinhaOpcao {
    std::string_view nome;
    unsigned opcao;
    bool Argumentos::*marca;
    std::string Argumentos::*texto = nullptr;
    std::vector<std::string> Argumentos::*lista = nullptr;
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
    {"--itens", kVenda, nullptr, &Argumentos::itens},
    {"--pagamento", kVenda, nullptr, nullptr, &Argumentos::pagamentos},
    {"--cpf", kVenda, nullptr, &Argumentos::cpf},
    {"--cnpj", kVenda, nullptr, &Argumentos::cnpj},
    {"--estrangeiro", kVenda, nullptr, &Argumentos::estrangeiro},
    {"--ajuste", kVenda, nullptr, &Argumentos::ajuste},
    {"--mensagem", kVenda, nullptr, &Argumentos::mensagem},
    {"--continuar", kVenda, &Argumentos::continuar},
    {"--cancelar", kVenda, &Argumentos::cancelar},
    {"--cortar", kVenda, &Argumentos::cortar},
    {"--documento", kRecibo, nullptr, &Argumentos::documento},
    {"--retorno", kRecibo, nullptr, &Argumentos::retorno},
    {"--colunas", kRecibo, nullptr, &Argumentos::colunas},
    {"--saida", kFigura, nullptr, &Argumentos::saida},
    {"--impressora", kImpressora, nullptr, &Argumentos::impressora},
    {"--perfil", kImpressora, nullptr, &Argumentos::perfil},
    {"--perfis", kImpressora | kRecibo, &Argumentos::perfis},
    {"--espera", kImpressora, nullptr, &Argumentos::espera},
    {"--figura", kImpressora, &Argumentos::figura},
    {"--pdf", kImpressora | kRecibo, nullptr, &Argumentos::pdf},
    {"--justificativa", kJustificativa, nullptr, &Argumentos::justificativa},
    {"--serie", kSerie, nullptr, &Argumentos::serie},
    {"--protocolo", kProtocolo, nullptr, &Argumentos::protocolo},
    {"--config", kConfigDoEnvio, nullptr, &Argumentos::config},
    {"--substituta", kEnvio, nullptr, &Argumentos::substituta},
    {"--data", kEnvio, nullptr, &Argumentos::data},
    {"--troco", kTroco, nullptr, &Argumentos::troco},
    {"--ensaio", kEnvio, &Argumentos::ensaio},
    {"--esperar", kEsperar, nullptr, &Argumentos::esperar},
    {"--substitui", kSubstitui, nullptr, &Argumentos::substitui},
    {"--transmitir", kTransmitir, &Argumentos::transmitir},
    {"--dia", kProcura, nullptr, &Argumentos::dia},
    {"--mes", kProcura, nullptr, &Argumentos::mes},
    {"--consumidor", kProcura, nullptr, &Argumentos::consumidor},
    {"--caixa", kProcura, nullptr, &Argumentos::caixa},
    {"--alguem", kProcura, &Argumentos::alguem},
    {"--passos", kProcura, &Argumentos::passos},
};

bool ehOpcao(std::string_view palavra) {
    return palavra.size() > 1 && palavra[0] == '-' && !ehDigito(palavra[1]);
}

void guardar(Argumentos &argumentos, const LinhaOpcao &opcao, std::string_view valor) {
    if (opcao.lista != nullptr)
        (argumentos.*opcao.lista).emplace_back(valor);
    else
        argumentos.*opcao.texto = valor;
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
        } else if (opcao->marca != nullptr) {
            argumentos.*opcao->marca = true;
        } else if (igual != palavra.npos) {
            guardar(argumentos, *opcao, palavra.substr(igual + 1));
        } else if (i + 1 < dados.size()) {
            guardar(argumentos, *opcao, dados[++i]);
        } else {
            argumentos.erro = juntar({"falta o valor de ", palavra});
        }
    }
    return argumentos;
}

} // namespace zel::aplicativo
