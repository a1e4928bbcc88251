// SPDX-License-Identifier: MIT
#include "comandos/EnvioAlca.h"

#include "leitura/Texto.h"

#include <algorithm>
#include <iterator>

namespace zel::aplicativo {

namespace {

// The library describes without accents; those of its texts that need some, as the command says
// them.
struct ComAcentos {
    int codigo;
    std::string_view texto;
};
constexpr ComAcentos kComAcentos[] = {
    {ZEL_ENVIO_MEMORIA, "falta memória"},
    {ZEL_ENVIO_CONFIGURACAO, "a configuração, ou um arquivo que ela cita"},
    {ZEL_ENVIO_ILEGIVEL, "não é um documento que se conheça"},
    {ZEL_ENVIO_TRADUCAO, "há o que não se pode dizer no leiaute 4.00"},
    {ZEL_ENVIO_REPROVADO, "a conferência achou erros"},
    {ZEL_ENVIO_ORDEM, "falta um passo antes deste"},
    {ZEL_ENVIO_SEM_RESPOSTA, "nenhuma resposta veio"},
    {ZEL_ENVIO_FILA, "a fila dos documentos não pode ser usada"},
};

std::string descrever(int codigo) {
    const auto linha = std::ranges::find(kComAcentos, codigo, &ComAcentos::codigo);
    return std::string(linha != std::end(kComAcentos) ? linha->texto : zel_envio_descrever(codigo));
}

int preparar(zel_envio *envio, const PedidoAoEnvio &pedido) {
    int codigo = ZEL_ENVIO_OK;
    if (!pedido.config.empty()) codigo = zel_envio_configurar(envio, pedido.config.c_str());
    if (codigo > 0) codigo = zel_envio_ler(envio, pedido.documento.data(), pedido.documento.size());
    if (codigo > 0)
        codigo = zel_envio_completar(envio, pedido.protocolo.c_str(), pedido.substituta.c_str(),
                                     pedido.data.c_str(), pedido.troco.c_str());
    return codigo;
}

int executar(zel_envio *envio, PassoDoEnvio passo, std::string &bytes) {
    const auto mensagem = [&](char **dados, std::size_t *tamanho) {
        return zel_envio_mensagem(envio, dados, tamanho);
    };
    int codigo = ZEL_ENVIO_OK;
    switch (passo) {
    case PassoDoEnvio::kTraduzir:
        codigo = zel_envio_traduzir(envio);
        return codigo > 0 ? receber(bytes, mensagem) : codigo;
    case PassoDoEnvio::kAssinar:
        codigo = zel_envio_assinar(envio);
        return codigo > 0 ? receber(bytes, mensagem) : codigo;
    case PassoDoEnvio::kVerificar:
        return zel_envio_verificar(envio);
    case PassoDoEnvio::kMostrar:
        return receber(bytes, [&](char **dados, std::size_t *tamanho) {
            return zel_envio_mostrar(envio, dados, tamanho);
        });
    }
    return ZEL_ENVIO_ARGUMENTO;
}

} // namespace

std::string valorDe(const Alca &envio, const char *nome) {
    const char *valor = zel_envio_valor(envio.get(), nome);
    return valor == nullptr ? "" : valor;
}

RespostaDoEnvio resposta(const Alca &envio, int codigo) {
    RespostaDoEnvio resposta;
    resposta.codigo = envio ? codigo : ZEL_ENVIO_MEMORIA;
    if (resposta.feito()) return resposta;
    resposta.descricao = descrever(resposta.codigo);
    const char *campo = "", *valor = "", *motivo = "";
    for (std::size_t i = 0; zel_envio_recusa(envio.get(), i, &campo, &valor, &motivo) > 0; ++i)
        resposta.recusas.push_back({campo, valor, motivo});
    return resposta;
}

RespostaDoEnvio pedirAoEnvio(const PedidoAoEnvio &pedido) {
    const Alca envio(zel_envio_novo());
    std::string bytes;
    int codigo = preparar(envio.get(), pedido);
    if (codigo > 0) codigo = executar(envio.get(), pedido.passo, bytes);
    RespostaDoEnvio feita = resposta(envio, codigo);
    if (feita.feito() && pedido.passo == PassoDoEnvio::kVerificar)
        for (const std::string_view linha : dividir(zel_envio_detalhe(envio.get()), '\n'))
            feita.olhado.emplace_back(linha);
    feita.bytes = std::move(bytes);
    feita.tipo = valorDe(envio, "tipo");
    feita.chave = valorDe(envio, "chave");
    // A consultation is not signed.
    if (feita.feito() && pedido.passo == PassoDoEnvio::kAssinar &&
        zel_envio_tipo(envio.get()) != ZEL_ENVIO_CONSULTA) {
        feita.certificado = valorDe(envio, "certificado.nome");
        feita.dias = valorDe(envio, "certificado.dias");
    }
    return feita;
}

RespostaDoEnvio primeiraConfiguracaoDoEnvio(const std::string &caixa,
                                            const ArquivosDoEnvio &arquivos) {
    const Alca envio(zel_envio_novo());
    std::string bytes;
    const int codigo = receber(bytes, [&](char **dados, std::size_t *tamanho) {
        return zel_envio_primeira_configuracao(envio.get(), caixa.data(), caixa.size(),
                                               arquivos.certificado.c_str(), arquivos.senha.c_str(),
                                               arquivos.csc.c_str(), dados, tamanho);
    });
    RespostaDoEnvio feita = resposta(envio, codigo);
    feita.bytes = std::move(bytes);
    return feita;
}

RespostaDoEnvio certificadoDeEnsaio(const std::string &nome, const std::string &cnpj,
                                    const std::string &senha) {
    const Alca envio(zel_envio_novo());
    std::string bytes;
    const int codigo = receber(bytes, [&](char **dados, std::size_t *tamanho) {
        return zel_envio_certificado_de_ensaio(envio.get(), nome.c_str(), cnpj.c_str(),
                                               senha.c_str(), dados, tamanho);
    });
    RespostaDoEnvio feita = resposta(envio, codigo);
    feita.bytes = std::move(bytes);
    return feita;
}

int receberImpressao(const Alca &envio, const std::string *dela, std::string &documento,
                     std::string &retorno) {
    return receber(documento, [&](char **dados, std::size_t *tamanho) {
        char *outros = nullptr;
        std::size_t tamanhoDeles = 0;
        const int feito = zel_envio_impressao(envio.get(), dela == nullptr ? nullptr : dela->data(),
                                              dela == nullptr ? 0 : dela->size(), dados, tamanho,
                                              &outros, &tamanhoDeles);
        const std::unique_ptr<char, Liberar> dono(outros);
        if (feito > 0) retorno.assign(outros, tamanhoDeles);
        return feito;
    });
}

RespostaDoEnvio prepararImpressao(const std::string &documento, const std::string *dela) {
    const Alca envio(zel_envio_novo());
    std::string bytes, retorno;
    int codigo = zel_envio_ler(envio.get(), documento.data(), documento.size());
    if (codigo > 0) codigo = receberImpressao(envio, dela, bytes, retorno);
    RespostaDoEnvio feita = resposta(envio, codigo);
    feita.bytes = std::move(bytes);
    feita.retorno = std::move(retorno);
    return feita;
}

} // namespace zel::aplicativo
