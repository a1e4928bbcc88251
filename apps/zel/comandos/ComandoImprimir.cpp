// SPDX-License-Identifier: MIT
// zel imprimir: a receipt to a printer, in bounded time.
#include "comandos/ComandoComum.h"
#include "comandos/ComandoRecibo.h"

#include "comandos/Papel.h"
#include "leitura/Arquivos.h"
#include "leitura/Json.h"
#include "leitura/Terminal.h"
#include "leitura/Texto.h"

#include <algorithm>

namespace zel::aplicativo {

namespace {

constexpr long long kEspera = 10000; // milliseconds
constexpr long long kMaiorEspera = 600000;

int listarPerfis(const Argumentos &argumentos) {
    Json json;
    json.abrirLista();
    std::string texto;
    for (const std::string &nome : nomesDosPerfis()) {
        json.texto({}, nome);
        texto += nome + "\n";
    }
    argumentos.json ? escreverJson(json.fecharLista().escrito()) : escrever(texto);
    return kLimpo;
}

int naoImprimiu(const Argumentos &argumentos, const std::string &destino,
                const RespostaDoPapel &resposta) {
    if (argumentos.json) {
        Json json;
        json.abrirObjeto()
            .texto("resultado", "falhou")
            .texto("impressora", destino)
            .numero("codigo", resposta.codigo)
            .texto("motivo", resposta.descricao)
            .texto("enviados", std::to_string(resposta.enviados))
            .texto("estado", resposta.estado);
        escreverJson(json.fecharObjeto().escrito());
        return kComErros;
    }
    std::string texto = juntar({destino, ": ", resposta.descricao});
    if (resposta.enviados > 0)
        texto += "\nParte do cupom pode ter saído: confira o papel antes de imprimir outra vez.";
    return falhar(texto);
}

bool pareceEndereco(std::string_view destino) {
    const std::string_view nome = destino.substr(0, destino.find(':'));
    return destino.find_first_of(".:") != destino.npos && !nome.empty() &&
           std::ranges::all_of(nome, [](char c) {
               return ehDigito(c) || c == '.' || c == '-' || (c >= 'a' && c <= 'z') ||
                      (c >= 'A' && c <= 'Z');
           });
}

// Why nothing can be sent there; empty when it can. What was meant for a printer must not end in a
// file of its name.
std::string erroDoDestino(const std::string &destino) {
    constexpr std::string_view kRede = "tcp://";
    const std::string nome = argumento(destino.c_str());
    if (destino.starts_with(kRede)) return {};
    if (destino.find('/') == destino.npos)
        return juntar({nome, ": não é uma impressora nem um arquivo: uma impressora da rede é ",
                       kRede, pareceEndereco(destino) ? nome : "10.0.0.5",
                       ", um dispositivo é como /dev/usb/lp0, e um arquivo leva uma barra, como "
                       "./cupom.bin"});
    const std::string alvo = ligacaoSemAlvo(destino);
    if (alvo.empty()) return {};
    return juntar({nome, ": é uma ligação para ", argumento(alvo.c_str()),
                   ", que não existe: a impressora está ligada?"});
}

// What is wrong with the arguments; empty when nothing is.
std::string erroDoPedido(const Argumentos &argumentos, Impressao &impressao) {
    if (!argumentos.palavras.empty()) return "imprimir não leva argumentos";
    if (argumentos.impressora.empty() && argumentos.pdf.empty())
        return "falta --impressora DESTINO, ou --pdf ARQUIVO";
    return lerImpressora(argumentos, impressao);
}

int enviar(const Argumentos &argumentos, const TextoDeCupom &cupom, const Impressao &impressao,
           std::vector<Linha> &linhas) {
    const std::string destino = argumento(argumentos.impressora.c_str());
    const RespostaDoPapel resposta = imprimirCupom(cupom, impressao);
    if (resposta.codigo <= 0) return naoImprimiu(argumentos, destino, resposta);
    linhas = {{"resultado", "Resultado", "impresso"},
              {"impressora", "Impressora", destino},
              {"enviados", "Bytes enviados", std::to_string(resposta.enviados)},
              {"estado", "Estado dela", resposta.estado}};
    return kLimpo;
}

int imprimir(const Argumentos &argumentos) {
    if (argumentos.perfis) return listarPerfis(argumentos);
    Impressao impressao;
    if (const std::string erro = erroDoPedido(argumentos, impressao); !erro.empty())
        return usoErrado(kImprimir, erro);
    int saida = 0;
    const auto recibo = reciboPedido(kImprimir, argumentos, false, saida);
    if (!recibo) return saida;
    const TextoDeCupom cupom{recibo->texto, recibo->colunas};
    const std::string pdf = argumento(argumentos.pdf.c_str());
    if (!pdf.empty())
        if (const auto gravado = gravarPdf(cupom, argumentos.pdf); gravado.codigo <= 0)
            return falhar(juntar({pdf, ": ", gravado.descricao}));
    std::vector<Linha> linhas{{"resultado", "Resultado", "gravado"}};
    if (!argumentos.impressora.empty())
        if (const int erro = enviar(argumentos, cupom, impressao, linhas); erro != kLimpo)
            return erro;
    if (!pdf.empty()) linhas.push_back({"pdf", "PDF", pdf});
    escreverLinhas(argumentos, linhas);
    return kLimpo;
}

} // namespace

std::string lerImpressora(const Argumentos &argumentos, Impressao &impressao) {
    const auto espera =
        argumentos.espera.empty() ? kEspera : lerInteiro(argumentos.espera).value_or(0);
    if (espera < 1 || espera > kMaiorEspera) return "--espera é de 1 a 600000 milissegundos";
    impressao = {argumentos.impressora, argumentos.perfil, static_cast<int>(espera),
                 argumentos.figura};
    return argumentos.impressora.empty() ? "" : erroDoDestino(argumentos.impressora);
}

const Comando kImprimir = {
    "imprimir",
    "imprimir --impressora DESTINO [--perfil NOME] [--figura] [--espera MS]\n"
    "imprimir --pdf ARQUIVO [--impressora DESTINO]\n"
    "imprimir --impressora DESTINO [--documento ARQUIVO] --retorno ARQUIVO|OFFLINE\n"
    "imprimir --perfis [--json]",
    "Imprime o último cupom, em tempo limitado.",
    "DESTINO é um dispositivo, como /dev/usb/lp0, uma impressora da rede, como\n"
    "tcp://10.0.0.5 ou tcp://10.0.0.5:9100, ou um arquivo, que recebe os bytes e leva uma barra\n"
    "no nome, como ./cupom.bin.\n"
    "--perfil NOME diz que impressora é (--perfis mostra os nomes); com uma / em NOME, é um\n"
    "arquivo de perfil. Sem ele, a genérica de 80 mm.\n"
    "--figura imprime a figura do papel, ponto a ponto, onde as letras da impressora não servem.\n"
    "--pdf ARQUIVO grava o mesmo papel como PDF, antes de imprimir ou em vez disso.\n"
    "--espera MS limita o tempo em milissegundos; sem ela, 10000. Nele cabe a pergunta pelo\n"
    "estado: a uma impressora que diz estar sem papel, aberta ou fora de linha nada se envia.\n\n"
    "O último cupom é o que a biblioteca montou por último. Em produção só se\n"
    "imprime um que a SEFAZ autorizou, ou de contingência: para o de uma venda nova, --retorno\n"
    "ARQUIVO é a resposta que o componente de envio deixou. --retorno OFFLINE monta o cupom sem\n"
    "ela, para um ensaio.\n"
    "--documento ARQUIVO é o documento, senão documentosEnvio.xml. Do último documento o caixa\n"
    "guarda o cupom e o protocolo; o de outro é impresso e não muda nada nele. De um assinado do\n"
    "leiaute 4.00 (zel documento assinar) o QR Code é o dele, e --retorno traz o protNFe.\n"
    "--colunas 42 ou 48 é a largura do cupom.\n"
    "--diretorio DIR escolhe o diretório de dados.\n",
    kJson | kDiretorioDado | kRecibo | kImpressora,
    imprimir,
};

} // namespace zel::aplicativo
