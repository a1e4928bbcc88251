// SPDX-License-Identifier: MIT
// zel enviar: one document of the till to the authority, while somebody waits.
#include "comandos/ComandoEnviar.h"
#include "comandos/ComandoDocumento.h"

#include "comandos/Biblioteca.h"
#include "comandos/Interrupcao.h"
#include "comum/ChaveAcesso.h"
#include "leitura/Arquivos.h"
#include "leitura/Terminal.h"
#include "leitura/Texto.h"

#include <algorithm>
#include <iterator>

namespace zel::aplicativo {

namespace {

constexpr int kSegundos = 5, kMaisSegundos = 300;

struct Fim {
    FimDoEnvio fim;
    std::string_view nome;
    Saida saida;
};
constexpr Fim kFins[] = {
    {FimDoEnvio::kFalhou, "falhou", kComErros},
    {FimDoEnvio::kFeito, "feito", kLimpo},
    {FimDoEnvio::kRecusado, "recusado", kSaidaRecusado},
    {FimDoEnvio::kSemResposta, "sem resposta", kSaidaSemResposta},
    {FimDoEnvio::kNaoEnviado, "não enviado", kSaidaNaoEnviado},
};

const Fim &fimDe(const Transmissao &feita) {
    return *std::ranges::find(kFins, feita.fim, &Fim::fim);
}

// What somebody at the till has to know where the answer's own remedy does not say it.
std::string oQueFazer(const Transmissao &feita) {
    const bool online = feita.tipo == "nfce" && !ehOffline(feita);
    switch (feita.fim) {
    case FimDoEnvio::kRecusado:
        // The service reads its configuration once.
        if (feita.remedio.empty() && feita.motivo.find(kNomeDaConfigDoEnvio) != std::string::npos)
            return "depois de corrigi-la, recomece o serviço zel-envio e diga: zel enviar ARQUIVO";
        return feita.remedio;
    case FimDoEnvio::kSemResposta:
        return online ? juntar({"o número ", feita.numero,
                                " não se usa de novo: emita o seguinte em contingência, com "
                                "--substitui ",
                                feita.chave, "; a fila pergunta por este"})
                      : "a fila pergunta por ele";
    case FimDoEnvio::kNaoEnviado:
        return feita.estado == "retirado"
                   ? "nada saiu: emita o mesmo número em contingência, ou envie de novo"
                   : "ficou na fila, e sai quando a linha voltar";
    default:
        return {};
    }
}

int enviar(const Argumentos &argumentos) {
    if (argumentos.palavras.size() != 1) return usoErrado(kEnviar, "enviar leva um ARQUIVO");
    const auto segundos = segundosDados(argumentos);
    if (!segundos) return usoErrado(kEnviar, "--esperar é de 0 a 300 segundos");
    std::string motivo;
    const auto diretorio = escolherDiretorio(argumentos.diretorio, motivo);
    if (!diretorio) return falhar(motivo);
    const std::string &arquivo = argumentos.originais.front();
    auto pedido = pedidoDeTransmissao(argumentos, *diretorio, arquivo);
    if (!pedido) return kComErros;
    pedido->segundos = *segundos;
    pedido->substitui = argumentos.substitui;
    const Interrupcao adiada;
    const Transmissao feita = transmitirPeloEnvio(*pedido);
    const std::string nome = argumento(arquivo.c_str());
    if (feita.fim == FimDoEnvio::kFalhou) return recusarDoEnvio("enviar", nome, feita);
    std::vector<Linha> linhas{{"resultado", "Resultado", resultadoDe(feita)},
                              {"tipo", "Documento", feita.tipo},
                              {"numero", "Número", feita.numero},
                              {"serie", "Série", feita.serie},
                              {"chave", "Chave de acesso", feita.chave}};
    for (Linha &linha : linhasDaResposta(feita))
        linhas.push_back(std::move(linha));
    linhas.push_back({"retorno", "Retorno", argumento(feita.arquivoDoRetorno.c_str())});
    escreverLinhas(argumentos, linhas);
    return saidaDe(feita);
}

} // namespace

std::string semConfigDoEnvio(const std::string &diretorio) {
    return juntar({"não há ", kNomeDaConfigDoEnvio, " em ", argumento(diretorio.c_str()),
                   "\n    Remédio: faça-o com zel documento config, ou diga qual é com --config "
                   "ARQUIVO"});
}

std::optional<int> segundosDados(const Argumentos &argumentos) {
    if (argumentos.esperar.empty()) return kSegundos;
    const auto lidos = lerInteiro(argumentos.esperar);
    if (!lidos || *lidos > kMaisSegundos) return {};
    return static_cast<int>(*lidos);
}

std::optional<PedidoDeTransmissao> pedidoDeTransmissao(const Argumentos &argumentos,
                                                       const std::string &diretorio,
                                                       const std::string &arquivo) {
    PedidoDeTransmissao pedido;
    std::string motivo;
    pedido.config = configDoEnvio(argumentos, diretorio);
    pedido.caixa = diretorio;
    if (pedido.config.empty()) {
        falhar(semConfigDoEnvio(diretorio));
        return {};
    }
    if (lerArquivo(arquivo, kMaximoDocumento, pedido.documento, motivo) != Leitura::kLido) {
        falhar(juntar({argumento(arquivo.c_str()), ": ", motivo}));
        return {};
    }
    PedidoAoEnvio dele{PassoDoEnvio::kAssinar, {}, {}, {}, {}, {}, {}};
    dele.troco = trocar(argumentos.troco, ",", ".");
    completarDoCaixa(diretorio, arquivo, dele);
    pedido.troco = dele.troco;
    return pedido;
}

bool ehOffline(const Transmissao &feita) {
    return ehChaveOffline(feita.chave);
}

std::string resultadoDe(const Transmissao &feita) {
    return feita.fim == FimDoEnvio::kFeito && feita.tipo != "consulta"
               ? feita.desfecho
               : std::string(fimDe(feita).nome);
}

Saida saidaDe(const Transmissao &feita) {
    return fimDe(feita).saida;
}

std::vector<Linha> linhasDaResposta(const Transmissao &feita) {
    const bool feito = feita.fim == FimDoEnvio::kFeito;
    return {{"protocolo", "Protocolo", feita.protocolo},
            {"cStat", "Código da SEFAZ", feita.cStat},
            {"xMotivo", "A SEFAZ diz", feita.xMotivo},
            {"motivo", "Motivo", feito ? "" : feita.motivo},
            {"remedio", "O que fazer", oQueFazer(feita)}};
}

const Comando kEnviar = {
    "enviar",
    "enviar ARQUIVO [--esperar SEGUNDOS] [--substitui CHAVE] [--config zel-envio.toml] [--json]",
    "Transmite um documento do caixa à SEFAZ, e espera a resposta.",
    "ARQUIVO é do caixa: documentosEnvio.xml, uma cópia dele, .ctg ou .ctgCanc. Ele entra na fila\n"
    "como todos; quem o envia é este comando ou o serviço zel-envio, o que chegar primeiro. O\n"
    "mesmo arquivo, enviado outra vez, é o mesmo documento.\n"
    "--esperar SEGUNDOS, de 0 a 300, é quanto se espera pela SEFAZ; sem ela, 5. Com 0 o documento\n"
    "é assinado e fica na fila.\n"
    "--substitui CHAVE diz que o documento, emitido em contingência, está no lugar daquele, cuja\n"
    "resposta não veio: a fila pergunta por ele, e o cancela se foi autorizado.\n"
    "--troco VALOR é o troco de uma NFC-e; o do último documento do caixa é lido dele.\n"
    "--config ARQUIVO é a configuração; sem ela, a zel-envio.toml do diretório do caixa.\n"
    "--diretorio DIR escolhe o diretório de dados.\n\n"
    "Saída: 0 autorizado (ou cancelado, inutilizado, respondido); 2 não se pôde tentar; 3 "
    "recusado,\n"
    "com o motivo e o que fazer; 4 sem resposta: o documento pode estar na SEFAZ, e a fila "
    "pergunta\n"
    "por ele; 5 não enviado: com certeza nada saiu.\n",
    kJson | kDiretorioDado | kConfigDoEnvio | kEsperar | kSubstitui | kTroco,
    enviar,
};

} // namespace zel::aplicativo
