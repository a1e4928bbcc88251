// SPDX-License-Identifier: MIT
#include "comandos/Envio.h"

namespace zel::aplicativo {

namespace {

RespostaDoEnvio sem() {
    RespostaDoEnvio resposta;
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

} // namespace zel::aplicativo
