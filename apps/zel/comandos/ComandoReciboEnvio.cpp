// SPDX-License-Identifier: MIT
#include "comandos/ComandoReciboEnvio.h"

#include "comandos/BibliotecaRecibo.h"
#include "comandos/ComandoDocumento.h"
#include "leitura/Arquivos.h"
#include "leitura/Terminal.h"
#include "leitura/Texto.h"

namespace zel::aplicativo {

namespace {

bool lerOuDizer(const std::string &arquivo, std::string &bytes) {
    std::string motivo;
    if (lerArquivo(arquivo, kMaximoDocumento, bytes, motivo) == Leitura::kLido) return true;
    falhar(juntar({argumento(arquivo.c_str()), ": ", motivo}));
    return false;
}

} // namespace

bool ReciboDoEnvio::serve(const std::string &documento) {
    std::string bytes, motivo;
    return lerArquivo(documento, kMaximoDocumento, bytes, motivo) == Leitura::kLido &&
           bytes.find("<infNFeSupl") != bytes.npos && bytes.find("<detPag") != bytes.npos;
}

ReciboDoEnvio::ReciboDoEnvio(const std::string &documento, const std::string &retorno) {
    std::string bytes, resposta;
    const bool semResposta = retorno == kSemRetorno;
    if (!lerOuDizer(documento, bytes)) return;
    if (!semResposta && !lerOuDizer(retorno, resposta)) return;
    if (semResposta && bytes.find("<tpEmis>9</tpEmis>") == bytes.npos) {
        falhar(juntar({argumento(documento.c_str()),
                       ": não é de contingência, e só com a resposta da SEFAZ tem cupom: --retorno "
                       "ARQUIVO"}));
        return;
    }
    const RespostaDoEnvio feita = prepararImpressao(bytes, semResposta ? nullptr : &resposta);
    if (!feita.feito()) {
        recusarDoEnvio("imprimir", argumento(documento.c_str()), feita);
        return;
    }
    std::string erro = pasta_.motivo();
    if (erro.empty()) erro = gravarInteiro(this->documento(), feita.bytes);
    if (erro.empty()) erro = gravarInteiro(this->retorno(), feita.retorno);
    pronto_ = erro.empty();
    if (!pronto_) falhar(erro);
}

} // namespace zel::aplicativo
