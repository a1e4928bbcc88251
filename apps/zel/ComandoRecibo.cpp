// SPDX-License-Identifier: MIT
#include "ComandoRecibo.h"

#include "ComandoComum.h"
#include "Terminal.h"
#include "Texto.h"

namespace zel::aplicativo {

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
    const auto diretorio = prepararDiretorio(argumentos);
    if (!diretorio) return {};
    const Recibo recibo =
        obterRecibo(*diretorio, {argumentos.documento, argumentos.retorno,
                                 static_cast<int>(lerInteiro(colunas).value_or(0)), previa});
    if (recibo.texto.empty()) {
        saida = recibo.codigo < 0 ? recusar(argumentos, recibo.erro, recibo.codigo)
                                  : falhar(recibo.erro);
        return {};
    }
    if (!recibo.aviso.empty()) escrever(stderr, juntar({"zel: ", recibo.aviso, "\n"}));
    return recibo;
}

} // namespace zel::aplicativo
