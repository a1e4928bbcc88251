// SPDX-License-Identifier: MIT
// zel estado: the receipt in progress and the last document.
#include "Comando.h"

#include "Arquivos.h"
#include "Biblioteca.h"
#include "ComandoComum.h"
#include "Cupom.h"
#include "Terminal.h"
#include "Texto.h"

#include <utility>
#include <vector>

namespace zel::aplicativo {

namespace {

std::vector<Linha> linhasDoCupom(const std::string &diretorio, int estado) {
    std::string bytes, motivo, erro;
    if (estado < 1 || estado > 5) return {};
    if (lerArquivo(diretorio + "ArqPersist.bin", kMaximoDocumento, bytes, motivo) != Leitura::kLido)
        return {{"cupom", "Cupom", juntar({"ArqPersist.bin ", motivo})}};
    const auto cupom = lerCupom(bytes, erro);
    if (!cupom) return {{"cupom", "Cupom", juntar({"ArqPersist.bin: ", erro})}};
    std::vector<Linha> linhas{{"itens", "Itens", std::to_string(cupom->itens)},
                              {"total", "Total", formatarMoeda(cupom->total)},
                              {"pago", "Pago", formatarMoeda(cupom->pago)}};
    if (estado == 3 && cupom->total > cupom->pago)
        linhas.push_back({"falta", "Falta pagar", formatarMoeda(cupom->total - cupom->pago)});
    if (estado >= 4)
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
        {"estado", "Estado", juntar({std::to_string(estado), " ", nomeDoEstado(estado)})}};
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
    "6 cancelado), itens, total e pagamentos, e número, série, chave e protocolo do último\n"
    "documento. Não mostra dados do consumidor.\n",
    kJson | kDiretorioDado,
    estado,
};

} // namespace zel::aplicativo
