// SPDX-License-Identifier: MIT
// zel estado: the receipt in progress and the last document.
#include "comandos/Comando.h"

#include "comandos/Biblioteca.h"
#include "comandos/ComandoCupom.h"
#include "comum/EstadoDoCupom.h"
#include "leitura/Arquivos.h"
#include "leitura/Terminal.h"
#include "leitura/Texto.h"

#include <utility>
#include <vector>

namespace zel::aplicativo {

namespace {

std::vector<Linha> linhasDoCupom(const std::string &diretorio, int estado) {
    std::string erro;
    if (!emAndamento(estado) && estado != kEncerrado) return {};
    const auto cupom = cupomNoDisco(diretorio, erro);
    if (!cupom) return {{"cupom", "Cupom", juntar({"ArqPersist.bin: ", erro})}};
    std::vector<Linha> linhas = emAndamento(estado) ? linhasDoCupom(*cupom) : resumoDoCupom(*cupom);
    // Before the totals are made nothing is due.
    if (estado < kTotalizado)
        std::erase_if(linhas, [](const Linha &l) { return l.nome == "falta"; });
    if (estado >= kPagamento)
        linhas.push_back({"troco", "Troco", configuracao(R"(CONFIGURACAO\TrocoUltimaNFCe)")});
    return linhas;
}

std::vector<Linha> linhasDoUltimo() {
    const std::string chave = configuracao(R"(NFCE\ChaveDeAcesso)");
    if (chave.empty()) return {{"ultimo", "Último documento", "nenhum"}};
    const std::string protocolo = configuracao(R"(NFCE\ProtocoloAutorizacao)");
    return {{"numero", "Último número", configuracao(R"(IDE\nNF)")},
            {"serie", "Série", configuracao(R"(IDE\Serie)")},
            {"chave", "Chave de acesso", chave},
            {"protocolo", "Protocolo",
             protocolo.empty() ? "nenhum; guarda-se ao imprimir" : protocolo}};
}

std::vector<Linha> linhas(const std::string &diretorio) {
    const int estado = estadoDoCupom();
    std::vector<Linha> todas{
        {"diretorio", "Diretório", argumento(diretorio.c_str())},
        {"ambiente", "Ambiente",
         configuracao(R"(CONFIGURACAO\TipoAmbiente)") == "1" ? "produção" : "homologação"},
        {"caixa", "Caixa", cupomComOutroProcesso(diretorio) ? "aberto" : "fechado"},
        {"estado", "Estado", digitoENome(estado)}};
    for (auto &mais : {linhasDoCupom(diretorio, estado), linhasDoUltimo()})
        todas.insert(todas.end(), mais.begin(), mais.end());
    return todas;
}

int estado(const Argumentos &argumentos) {
    if (!argumentos.palavras.empty()) return usoErrado(kEstado, "estado não leva argumentos");
    const auto diretorio = prepararDiretorio(argumentos);
    if (!diretorio) return kComErros;
    escreverLinhas(argumentos, linhas(*diretorio));
    return kLimpo;
}

} // namespace

const Comando kEstado = {
    "estado",
    "estado [--diretorio DIR] [--json]",
    "Mostra o cupom em andamento e o último documento.",
    "Estado do cupom (0 nenhum, 1 aberto, 2 vendendo, 3 totalizado, 4 pago, 5 encerrado,\n"
    "6 cancelado). Do cupom em andamento, o consumidor, cada item e cada pagamento, o total e o\n"
    "que falta; do último documento, número, série, chave e protocolo.\n",
    kJson | kDiretorioDado,
    estado,
};

} // namespace zel::aplicativo
