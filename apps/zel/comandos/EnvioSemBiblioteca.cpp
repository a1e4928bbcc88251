// SPDX-License-Identifier: MIT
#include "comandos/Envio.h"

namespace zel::aplicativo {

namespace {

template <class Resposta = RespostaDoEnvio>
Resposta sem() {
    Resposta resposta;
    resposta.descricao =
        "este zel foi montado sem libzel-envio, que faz os documentos que a SEFAZ recebe";
    return resposta;
}

} // namespace

RespostaDoEnvio pedirAoEnvio(const PedidoAoEnvio &) {
    return sem();
}

RespostaDoEnvio primeiraConfiguracaoDoEnvio(const std::string &, const ArquivosDoEnvio &) {
    return sem();
}

RespostaDoEnvio certificadoDeEnsaio(const std::string &, const std::string &, const std::string &) {
    return sem();
}

RespostaDoEnvio prepararImpressao(const std::string &, const std::string *) {
    return sem();
}

Transmissao transmitirPeloEnvio(const PedidoDeTransmissao &) {
    return sem<Transmissao>();
}

RespostaDaFila perguntarAFila(const PerguntaAFila &) {
    return sem<RespostaDaFila>();
}

} // namespace zel::aplicativo
