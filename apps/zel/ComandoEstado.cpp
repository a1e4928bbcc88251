// SPDX-License-Identifier: MIT
// zel estado: the receipt in progress and the last document.
#include "Comando.h"

#include "Arquivos.h"
#include "Biblioteca.h"
#include "Codigos.h"
#include "Cupom.h"
#include "Json.h"
#include "Terminal.h"
#include "Texto.h"

#include "ZEL_FelborFramework.h"

#include <utility>
#include <vector>

namespace zel::aplicativo {

namespace {

// What is said, in order: the name for programs, the one for people, the value.
struct Linha {
    std::string_view nome;
    std::string_view rotulo;
    std::string valor;
};

std::string config(std::string_view caminho) {
    int codigo = 0;
    return lerConfig(caminho, codigo).value_or("");
}

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
        linhas.push_back({"troco", "Troco", config(R"(CONFIGURACAO\TrocoUltimaNFCe)")});
    return linhas;
}

std::vector<Linha> linhasDoUltimo() {
    const std::string chave = config(R"(NFCE\ChaveDeAcesso)");
    if (chave.empty()) return {{"ultimo", "Último documento", "nenhum"}};
    const std::string protocolo = config(R"(NFCE\ProtocoloAutorizacao)");
    return {{"numero", "Último número", config(R"(IDE\nNF)")},
            {"serie", "Série", config(R"(IDE\Serie)")},
            {"chave", "Chave de acesso", chave},
            {"protocolo", "Protocolo",
             protocolo.empty() ? "nenhum; guarda-se ao imprimir" : protocolo}};
}

std::vector<Linha> linhas(const std::string &diretorio) {
    const int estado = estadoDoCupom();
    std::vector<Linha> todas{
        {"diretorio", "Diretório", argumento(diretorio.c_str())},
        {"ambiente", "Ambiente",
         config(R"(CONFIGURACAO\TipoAmbiente)") == "1" ? "produção" : "homologação"},
        {"caixa", "Caixa", cupomComOutroProcesso(diretorio) ? "aberto" : "fechado"},
        {"estado", "Estado", juntar({std::to_string(estado), " ", nomeDoEstado(estado)})}};
    for (auto &mais : {linhasDoCupom(diretorio, estado), linhasDoUltimo()})
        todas.insert(todas.end(), mais.begin(), mais.end());
    return todas;
}

int estado(const Argumentos &argumentos) {
    if (!argumentos.palavras.empty()) return usoErrado(kEstado, "estado não leva argumentos");
    const auto diretorio = escolherDiretorio(argumentos.diretorio);
    if (!diretorio)
        return falhar(juntar({argumento(argumentos.diretorio.c_str()), ": não é um diretório"}));
    if (!temConfig(*diretorio))
        return falhar(juntar({"não há ZEL_Framework.xml em ", argumento(diretorio->c_str())}));
    Json json;
    json.abrirObjeto();
    std::string texto;
    for (const Linha &linha : linhas(*diretorio)) {
        json.texto(linha.nome, linha.valor);
        texto += juntar({linha.rotulo, ":", std::string(18 - comprimento(linha.rotulo), ' '),
                         linha.valor, "\n"});
    }
    argumentos.json ? escreverJson(json.fecharObjeto().escrito()) : escrever(texto);
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
