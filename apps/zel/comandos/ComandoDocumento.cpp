// SPDX-License-Identifier: MIT
// zel documento: what the till wrote as the tax authority takes it, and the first configuration of
// the side that sends.
#include "comandos/ComandoDocumento.h"

#include "comandos/ComandoComum.h"
#include "comum/ArquivosDoCaixa.h"

#include "comandos/Biblioteca.h"
#include "comandos/BibliotecaRecibo.h"
#include "conferencia/ArquivoConfig.h"
#include "leitura/Arquivos.h"
#include "leitura/Json.h"
#include "leitura/Terminal.h"
#include "leitura/Texto.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace zel::aplicativo {

namespace {

constexpr long long kPoucosDias = 30; // of a certificate

struct Acao {
    std::string_view nome;
    PassoDoEnvio passo;
    std::string_view feito;
};
constexpr Acao kAcoes[] = {
    {"traduzir", PassoDoEnvio::kTraduzir, "traduzido"},
    {"assinar", PassoDoEnvio::kAssinar, "assinado"},
    {"verificar", PassoDoEnvio::kVerificar, "aprovado"},
    {"mostrar", PassoDoEnvio::kMostrar, "mostrado"},
};

// False, and said, when something that the step needs cannot be had.
bool prepararPedido(const Argumentos &argumentos, PedidoAoEnvio &pedido, bool &completo) {
    const std::string &arquivo = argumentos.originais.back();
    std::string motivo;
    const auto diretorio = escolherDiretorio(argumentos.diretorio, motivo);
    if (!diretorio) return falhar(motivo), false;
    if (lerArquivo(arquivo, kMaximoDocumento, pedido.documento, motivo) != Leitura::kLido)
        return falhar(juntar({argumento(arquivo.c_str()), ": ", motivo})), false;
    if (pedido.passo == PassoDoEnvio::kMostrar) return true; // as it stands
    pedido.config = configDoEnvio(argumentos, *diretorio);
    pedido.protocolo = argumentos.protocolo;
    pedido.substituta = argumentos.substituta;
    pedido.data = argumentos.data;
    pedido.troco = trocar(argumentos.troco, ",", ".");
    completo = completarDoCaixa(*diretorio, arquivo, pedido);
    return true;
}

std::string avisoDe(const RespostaDoEnvio &resposta, const Acao &acao, bool completo) {
    if (!completo && resposta.tipo == "nfce" && acao.passo != PassoDoEnvio::kVerificar)
        return "há outro cupom no caixa, e o troco deste documento não se sabe mais: se houve um, "
               "diga-o com --troco VALOR";
    const auto dias = lerInteiro(resposta.dias);
    if (!dias || *dias > kPoucosDias) return {};
    return juntar({"o certificado vence em ", resposta.dias, " dias: providencie outro"});
}

// The message goes out as it is: what signs it counts every byte.
void escreverBytes(const RespostaDoEnvio &resposta, PassoDoEnvio passo) {
    if (passo == PassoDoEnvio::kMostrar) {
        escrever(resposta.bytes);
        return;
    }
    std::fwrite(resposta.bytes.data(), 1, resposta.bytes.size(), stdout);
    if (!resposta.bytes.ends_with('\n')) std::fputc('\n', stdout);
}

Linha olhadoEmJson(const RespostaDoEnvio &resposta) {
    Json json;
    json.abrirLista();
    for (const std::string &linha : resposta.olhado)
        json.texto({}, linha);
    return {"conferido", {}, {}, resposta.olhado.empty() ? "" : json.fecharLista().escrito()};
}

int dizerFeito(const Argumentos &argumentos, const Acao &acao, const RespostaDoEnvio &resposta,
               const std::string &aviso) {
    const int saida = aviso.empty() ? kLimpo : kComAvisos;
    const bool noTerminal = argumentos.saida.empty() && !resposta.bytes.empty();
    if (noTerminal && !argumentos.json) {
        escreverBytes(resposta, acao.passo);
        if (!aviso.empty()) escrever(stderr, juntar({"zel: ", aviso, "\n"}));
        return saida;
    }
    std::vector<Linha> linhas{
        {"resultado", "Resultado", std::string(acao.feito)},
        {"tipo", "Documento", resposta.tipo},
        {"chave", "Chave de acesso", resposta.chave},
        {"certificado", "Certificado", resposta.certificado},
        {"dias", "Dias que restam", resposta.dias},
        {"arquivo", "Arquivo", argumento(argumentos.saida.c_str())},
        {"aviso", "Aviso", aviso},
        olhadoEmJson(resposta),
    };
    for (const std::string &linha : resposta.olhado)
        linhas.push_back({{}, "Conferido", linha});
    if (noTerminal)
        linhas.push_back(
            {acao.passo == PassoDoEnvio::kMostrar ? "texto" : "mensagem", {}, resposta.bytes});
    escreverLinhas(argumentos, linhas);
    return saida;
}

int executar(const Argumentos &argumentos, const Acao &acao) {
    PedidoAoEnvio pedido{acao.passo, {}, {}, {}, {}, {}, {}};
    bool completo = true;
    if (!prepararPedido(argumentos, pedido, completo)) return kComErros;
    const RespostaDoEnvio resposta = pedirAoEnvio(pedido);
    if (!resposta.feito())
        return recusarDoEnvio(acao.nome, argumento(argumentos.originais.back().c_str()), resposta);
    if (!argumentos.saida.empty())
        if (const std::string erro = gravarInteiro(argumentos.saida, resposta.bytes); !erro.empty())
            return falhar(erro);
    return dizerFeito(argumentos, acao, resposta, avisoDe(resposta, acao, completo));
}

int documento(const Argumentos &argumentos) {
    if (argumentos.palavras.empty()) return usoErrado(kDocumento, "falta o que fazer");
    const std::string &nome = argumentos.palavras.front();
    if (nome == "config") return configurarEnvio(argumentos);
    const auto acao = std::ranges::find(kAcoes, nome, &Acao::nome);
    if (acao == std::end(kAcoes))
        return usoErrado(kDocumento, juntar({nome, ": não é o que um documento pode"}));
    if (argumentos.palavras.size() != 2)
        return usoErrado(kDocumento, juntar({nome, " leva um ARQUIVO"}));
    if (argumentos.ensaio) return usoErrado(kDocumento, "--ensaio vai com config");
    if (acao->passo == PassoDoEnvio::kVerificar && !argumentos.saida.empty())
        return usoErrado(kDocumento, "verificar não grava nada");
    return executar(argumentos, *acao);
}

} // namespace

std::string configDoEnvio(const Argumentos &argumentos, const std::string &diretorio) {
    std::string dele = diretorio + std::string(kNomeDaConfigDoEnvio);
    if (!argumentos.config.empty() || olhar(dele).tipo == TipoArquivo::kNenhum)
        return argumentos.config;
    return dele;
}

bool completarDoCaixa(const std::string &diretorio, const std::string &arquivo,
                      PedidoAoEnvio &pedido) {
    constexpr std::string_view kEncerrado = "5";
    std::string bytes, motivo;
    if (lerArquivo(std::string(diretorio).append(arquivos::kConfig), kMaximoConfig, bytes,
                   motivo) != Leitura::kLido)
        return true;
    Relatorio relatorio;
    const ArquivoConfig config(bytes, relatorio);
    if (!ehDocumentoDe(arquivo, config[R"(NFCE\ChaveDeAcesso)"].valor)) return true;
    if (pedido.protocolo.empty()) pedido.protocolo = config[R"(NFCE\ProtocoloAutorizacao)"].valor;
    if (!pedido.troco.empty()) return true;
    if (config[R"(CONFIGURACAO\estadoCFe)"].valor != kEncerrado) return false;
    pedido.troco = trocar(config[R"(CONFIGURACAO\TrocoUltimaNFCe)"].valor, ",", ".");
    return true;
}

const Comando kDocumento = {
    "documento",
    "documento traduzir|assinar ARQUIVO [--config zel-envio.toml] [--saida ARQUIVO] [--json]\n"
    "documento verificar ARQUIVO [--config zel-envio.toml] [--json]\n"
    "documento mostrar ARQUIVO [--saida ARQUIVO] [--json]\n"
    "documento config [--saida zel-envio.toml] [--ensaio] [--json]",
    "Faz dos arquivos do caixa os documentos que a SEFAZ recebe, e os confere.",
    "ARQUIVO é do caixa (documentosEnvio.xml, uma cópia dele, .ctg, .ctgCanc), ou um documento do\n"
    "leiaute 4.00.\n"
    "traduzir faz dele a mensagem do leiaute 4.00, sem assinatura. assinar a assina, e a uma\n"
    "NFC-e dá o QR Code. Sem --saida ela vai para a saída padrão.\n"
    "verificar olha uma NFC-e do leiaute 4.00, deste caixa ou não: assinatura, chave, QR Code,\n"
    "esquema e somas; de um cancelamento ou inutilização, assinatura, Id, campos e esquema.\n"
    "mostrar escreve o documento como se lê.\n"
    "config escreve o primeiro zel-envio.toml, com comentários, a partir da configuração do\n"
    "caixa; sem --saida, no diretório dele. O que já existe não é mudado. --ensaio faz junto\n"
    "certificado-ensaio.pfx, com a senha em senha-ensaio.txt, e csc-ensaio.txt com o CSC do\n"
    "caixa: o que ele assina se verifica, e nenhuma SEFAZ o aceita.\n\n"
    "--config ARQUIVO é a configuração; sem ela, a zel-envio.toml do diretório do caixa.\n"
    "--protocolo NÚMERO é o da autorização do documento a cancelar; --substituta CHAVE, o\n"
    "documento que ficou no lugar dele; --data AAAA-MM-DD, o dia de uma inutilização; --troco\n"
    "VALOR, o de uma NFC-e. Do último documento do caixa o troco e o protocolo são lidos da\n"
    "configuração dele.\n"
    "--diretorio DIR escolhe o diretório de dados.\n",
    kJson | kDiretorioDado | kFigura | kProtocolo | kEnvio | kConfigDoEnvio | kTroco,
    documento,
};

} // namespace zel::aplicativo
