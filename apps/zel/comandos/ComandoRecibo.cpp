// SPDX-License-Identifier: MIT
#include "comandos/ComandoRecibo.h"

#include "comandos/BibliotecaCopia.h"
#include "comandos/ComandoComum.h"
#include "comandos/ComandoReciboEnvio.h"
#include "comum/ArquivosDoCaixa.h"
#include "conferencia/ArquivoConfig.h"
#include "leitura/Arquivos.h"
#include "leitura/Terminal.h"
#include "leitura/Texto.h"

namespace zel::aplicativo {

namespace {

// Whether laying the receipt out is to change what the till knows: that is for printing the last
// document, with an answer that says no less of it than the till knows already.
bool guarda(const std::string &diretorio, const PedidoDeRecibo &pedido) {
    if (pedido.previa) return false;
    if (pedido.retorno.empty()) return true;
    std::string bytes, motivo;
    if (lerArquivo(std::string(diretorio).append(arquivos::kConfig), kMaximoConfig, bytes,
                   motivo) != Leitura::kLido)
        return false;
    Relatorio relatorio;
    const ArquivoConfig config(bytes, relatorio);
    return ehDocumentoDe(pedido.documento, config[R"(NFCE\ChaveDeAcesso)"].valor) &&
           (!pedido.semResposta() || config[R"(NFCE\ProtocoloAutorizacao)"].valor.empty());
}

} // namespace

Recibo montarRecibo(const std::string &diretorio, const PedidoDeRecibo &pedido) {
    if (guarda(diretorio, pedido)) return obterRecibo(diretorio, pedido);
    const CopiaDoCaixa copia(diretorio);
    if (!copia.diretorio().empty()) return obterRecibo(copia.diretorio(), pedido);
    Recibo nenhum;
    nenhum.erro = copia.motivo();
    return nenhum;
}

std::optional<Recibo> reciboPedido(const Comando &comando, const Argumentos &argumentos,
                                   bool previa, int &saida) {
    saida = kComErros;
    const std::string &colunas = argumentos.colunas;
    if (!colunas.empty() && colunas != "42" && colunas != "48") {
        usoErrado(comando, juntar({"--colunas é 42 ou 48, não ", argumento(colunas.c_str())}));
        return {};
    }
    if (!argumentos.documento.empty() && argumentos.retorno.empty()) {
        usoErrado(comando, "--documento vai com --retorno ARQUIVO ou --retorno OFFLINE");
        return {};
    }
    const auto diretorio = prepararDiretorioAParte(argumentos);
    if (!diretorio) return {};
    const std::string documento = argumentos.documento.empty()
                                      ? std::string(*diretorio).append(arquivos::kEnvio)
                                      : argumentos.documento;
    PedidoDeRecibo pedido{documento, argumentos.retorno,
                          static_cast<int>(lerInteiro(colunas).value_or(0)), previa};
    std::optional<ReciboDoEnvio> doEnvio;
    if (!pedido.retorno.empty() && ReciboDoEnvio::serve(documento)) {
        doEnvio.emplace(documento, pedido.retorno);
        if (!doEnvio->pronto()) return {};
        pedido.offline = pedido.semResposta();
        pedido.documento = doEnvio->documento();
        pedido.retorno = doEnvio->retorno();
    }
    const Recibo recibo = montarRecibo(*diretorio, pedido);
    if (recibo.texto.empty()) {
        saida = recibo.codigo < 0 ? recusar(recibo.erro, recibo.codigo) : falhar(recibo.erro);
        return {};
    }
    if (!recibo.aviso.empty()) escrever(stderr, juntar({"zel: ", recibo.aviso, "\n"}));
    return recibo;
}

} // namespace zel::aplicativo
