// SPDX-License-Identifier: MIT
#include "comandos/VendaTransmitida.h"

#include "comandos/Biblioteca.h"
#include "comandos/ComandoDocumento.h"
#include "comandos/ComandoEnviar.h"
#include "comandos/ComandoRecibo.h"
#include "comandos/Papel.h"
#include "comandos/PastaPassageira.h"
#include "comum/ArquivosDoCaixa.h"
#include "leitura/Terminal.h"
#include "leitura/Texto.h"

#include "ZEL_FelborFramework.h"

#include <utility>

namespace zel::aplicativo {

namespace {

constexpr std::string_view kTpEmis = R"(IDE\tpEmis)", kJustificativaOffline = R"(IDE\xJust)";
constexpr const char *kOnline = "1", *kOffline = "9";
// Kinds of a reissue: the next number in the place of one that nobody knows of, or the same number
// where certainly nothing went out.
constexpr int kNumeroSeguinte = 3, kMesmoNumero = 5;

void avisar(VendaTransmitida &venda, std::string aviso) {
    if (venda.saida == kLimpo) venda.saida = kComAvisos;
    venda.linhas.push_back({"aviso", "Aviso", std::move(aviso)});
}

Recibo montarDe(const std::string &diretorio, const Transmissao &feita, bool offline) {
    const PastaPassageira pasta;
    Recibo nenhum;
    nenhum.erro = feita.documento.empty() ? "não há documento assinado" : pasta.motivo();
    const std::string documento = pasta.caminho() + "documento.xml",
                      retorno = pasta.caminho() + "retorno.xml";
    if (nenhum.erro.empty()) nenhum.erro = gravarInteiro(documento, feita.documento);
    if (nenhum.erro.empty()) nenhum.erro = gravarInteiro(retorno, feita.aoLado);
    return nenhum.erro.empty() ? montarRecibo(diretorio, {documento, retorno, 0, false, offline})
                               : nenhum;
}

// The receipt to the printer that was given; without one the till keeps it for zel imprimir.
void fazerRecibo(const Argumentos &argumentos, const std::string &diretorio,
                 const Transmissao &feita, bool offline, VendaTransmitida &venda) {
    const Recibo recibo = montarDe(diretorio, feita, offline);
    if (recibo.texto.empty())
        return avisar(venda, juntar({"o cupom não foi feito: ", recibo.erro}));
    if (argumentos.impressora.empty()) {
        venda.linhas.push_back(
            {"cupom", "Para imprimir", comando(argumentos, "imprimir --impressora DESTINO")});
        return;
    }
    Impressao impressao;
    lerImpressora(argumentos, impressao);
    const RespostaDoPapel papel = imprimirCupom({recibo.texto, recibo.colunas}, impressao);
    const std::string destino = argumento(argumentos.impressora.c_str());
    if (papel.codigo > 0)
        venda.linhas.push_back({"impressora", "Impresso em", destino});
    else
        avisar(venda, juntar({destino, ": ", papel.descricao, "; para imprimir: ",
                              comando(argumentos, "imprimir --impressora DESTINO")}));
}

Transmissao transmitir(const Argumentos &argumentos, const std::string &diretorio, int segundos,
                       const std::string &substitui) {
    auto pedido =
        pedidoDeTransmissao(argumentos, diretorio, std::string(diretorio).append(arquivos::kEnvio));
    if (!pedido) return {};
    pedido->segundos = segundos;
    pedido->substitui = substitui;
    return transmitirPeloEnvio(*pedido);
}

// Issues the last document again, offline; the next sale is online again. The library's code.
int emitirOffline(int tipo) {
    constexpr std::size_t kMenorJustificativa = 15;
    int codigo = ZEL_OK;
    if (comprimento(configuracao(kJustificativaOffline)) < kMenorJustificativa)
        codigo = gravarConfig(kJustificativaOffline, "Sem comunicacao com a SEFAZ");
    if (codigo >= ZEL_OK) codigo = gravarConfig(kTpEmis, kOffline);
    if (codigo >= ZEL_OK) codigo = aCFContingenciaUltimaNota_ZEL(tipo, nullptr);
    const int volta = gravarConfig(kTpEmis, kOnline);
    return codigo < ZEL_OK ? codigo : volta;
}

std::string porqueDe(const Transmissao &feita) {
    std::string texto = feita.motivo.empty() ? feita.descricao : feita.motivo;
    for (const RecusaDoEnvio &recusa : feita.recusas)
        if (texto.find(recusa.motivo) == texto.npos)
            texto += juntar({"; ", recusa.campo, ": ", recusa.motivo});
    return texto;
}

// The sale stands, and nothing is known to be on its way.
VendaTransmitida naoTransmitida(const Argumentos &argumentos, const std::string &diretorio,
                                const Transmissao &feita) {
    const std::string arquivo =
        juntar({"'", trocar(argumento(diretorio.c_str()), "'", R"('\'')"), arquivos::kEnvio, "'"});
    return {kComErros,
            "não transmitido",
            {{"motivo", "Motivo", porqueDe(feita)},
             {"remedio", "O que fazer",
              juntar({"resolva e diga: ", comando(argumentos, juntar({"enviar ", arquivo}))})}}};
}

// A document that was issued offline is sold; what is left is its delivery.
VendaTransmitida vendidaOffline(const Argumentos &argumentos, const std::string &diretorio,
                                const Transmissao &feita, const std::string &porque) {
    VendaTransmitida venda{kComAvisos, "offline", {{"motivo", "Sem a SEFAZ", porque}}};
    fazerRecibo(argumentos, diretorio, feita, true, venda);
    avisar(venda, "o documento está na fila, e é transmitido quando a linha voltar");
    return venda;
}

// The certificate keeps everything back, or is the service's alone: unsigned there is no receipt
// that would hold.
VendaTransmitida vendidaSemCupom(const Argumentos &argumentos, const Transmissao &feita) {
    const std::string motivo = porqueDe(feita);
    VendaTransmitida venda{kComAvisos, "parado", {{"motivo", "Motivo", motivo}}};
    const std::string quando = motivo.find("envio parado") == motivo.npos
                                   ? "quando o serviço zel-envio o assinar"
                                   : "depois de " + comando(argumentos, "envio continuar");
    avisar(venda, juntar({"não há cupom: o documento está na fila, sem assinatura, e sai ", quando,
                          "; então se imprime do retorno"}));
    return venda;
}

bool semAssinatura(const Transmissao &feita) {
    return feita.fim == FimDoEnvio::kNaoEnviado &&
           (feita.estado == "achado" || feita.estado == "traduzido");
}

VendaTransmitida respondida(const Argumentos &argumentos, const std::string &diretorio,
                            const Transmissao &feita) {
    VendaTransmitida venda{saidaDe(feita), resultadoDe(feita), linhasDaResposta(feita)};
    if (feita.fim == FimDoEnvio::kFeito) fazerRecibo(argumentos, diretorio, feita, false, venda);
    return venda;
}

VendaTransmitida porOffline(const Argumentos &argumentos, const std::string &diretorio,
                            const Transmissao &primeira) {
    const bool perdida = primeira.fim == FimDoEnvio::kSemResposta;
    const int codigo = emitirOffline(perdida ? kNumeroSeguinte : kMesmoNumero);
    if (codigo < ZEL_OK) {
        VendaTransmitida venda = naoTransmitida(argumentos, diretorio, primeira);
        avisar(venda,
               juntar({"a emissão em contingência foi recusada: código ", std::to_string(codigo)}));
        return venda;
    }
    // The line is known to be down: it is signed, and goes out later.
    const Transmissao feita =
        transmitir(argumentos, diretorio, 0, perdida ? primeira.chave : std::string());
    if (feita.fim == FimDoEnvio::kFeito || feita.fim == FimDoEnvio::kRecusado)
        return respondida(argumentos, diretorio, feita);
    if (feita.fim == FimDoEnvio::kFalhou) return naoTransmitida(argumentos, diretorio, feita);
    if (semAssinatura(feita)) return vendidaSemCupom(argumentos, feita);
    return vendidaOffline(argumentos, diretorio, feita, porqueDe(primeira));
}

} // namespace

std::string erroDaTransmissao(const Argumentos &argumentos) {
    if (!argumentos.transmitir)
        return argumentos.esperar.empty() && argumentos.config.empty() &&
                       argumentos.impressora.empty()
                   ? ""
                   : "--esperar, --config e --impressora vão com --transmitir";
    if (segundosDados(argumentos).value_or(0) == 0) return "--esperar é de 1 a 300 segundos";
    Impressao impressao;
    return argumentos.impressora.empty() ? "" : lerImpressora(argumentos, impressao);
}

bool prepararTransmissao(const Argumentos &argumentos, const std::string &diretorio) {
    const std::string config = configDoEnvio(argumentos, diretorio);
    if (config.empty()) return falhar(semConfigDoEnvio(diretorio)), false;
    const RespostaDaFila fila =
        perguntarAFila({Pergunta::kProcurar, config, "maximo=1\n", {}, {}, {}});
    if (!fila.feito()) return recusarDoEnvio("transmitir", argumento(config.c_str()), fila), false;
    if (configuracao(kTpEmis) == kOnline) return true;
    const int codigo = gravarConfig(kTpEmis, kOnline);
    return codigo >= ZEL_OK || (recusar("gravar IDE\\tpEmis", codigo), false);
}

VendaTransmitida transmitirVenda(const Argumentos &argumentos, const std::string &diretorio) {
    const Transmissao feita =
        transmitir(argumentos, diretorio, segundosDados(argumentos).value_or(0), {});
    switch (feita.fim) {
    case FimDoEnvio::kFeito:
    case FimDoEnvio::kRecusado:
        return respondida(argumentos, diretorio, feita);
    case FimDoEnvio::kSemResposta:
    case FimDoEnvio::kNaoEnviado:
        // A receipt that was begun offline is what it is.
        if (ehOffline(feita) && semAssinatura(feita)) return vendidaSemCupom(argumentos, feita);
        if (ehOffline(feita)) return vendidaOffline(argumentos, diretorio, feita, porqueDe(feita));
        return porOffline(argumentos, diretorio, feita);
    case FimDoEnvio::kFalhou:
        break;
    }
    return naoTransmitida(argumentos, diretorio, feita);
}

} // namespace zel::aplicativo
