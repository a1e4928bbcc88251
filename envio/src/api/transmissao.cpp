// SPDX-License-Identifier: MIT
#include "api/Alca.h"

#include "comum/ChaveAcesso.h"
#include "fluxo/Achados.h"
#include "fluxo/Destinos.h"
#include "rede/Rede.h"

#include <array>
#include <limits>

using namespace zel::envio;

namespace {

constexpr int kMaisSegundos = 300;

struct Fim {
    Espera espera;
    int codigo;
};
constexpr std::array<Fim, 5> kFins{{{Espera::kFeito, ZEL_ENVIO_OK},
                                    {Espera::kRecusado, ZEL_ENVIO_RECUSADO},
                                    {Espera::kSemResposta, ZEL_ENVIO_SEM_RESPOSTA},
                                    {Espera::kNaoEnviado, ZEL_ENVIO_NAO_ENVIADO},
                                    {Espera::kFila, ZEL_ENVIO_FILA}}};

int codigoDe(Espera espera) {
    for (const auto &fim : kFins)
        if (fim.espera == espera) return fim.codigo;
    return ZEL_ENVIO_FILA;
}

// The directory as the configuration names it, so that the service and this call mean one till.
std::string caixaDe(const Configuracao &config, std::string_view caixa) {
    std::string diretorio(caixa);
    if (diretorio.empty() && config.caixas.size() == 1) return config.caixas.front().diretorio;
    if (!diretorio.empty() && !diretorio.ends_with('/')) diretorio += '/';
    return diretorio;
}

// What was sent takes the place of what was read, so that it can be shown, verified and printed.
void tomarMensagem(zel_envio &envio) {
    Recusas ignoradas;
    if (envio.transmitido.mensagem.empty()) return;
    if (auto lido = lerArquivoDoCaixa(envio.transmitido.mensagem, ignoradas))
        envio.emissao.ler(std::move(*lido));
}

} // namespace

int zel_envio_transmitir(zel_envio *envio, const char *caixa, const char *substitui, int segundos) {
    if (segundos < 0 || segundos > kMaisSegundos) return ZEL_ENVIO_ARGUMENTO;
    return responder(envio, [&](Recusas &recusas) {
        if (envio->lido.empty()) return int{ZEL_ENVIO_ORDEM};
        const Configuracao &config = envio->emissao.config();
        auto achado = acharEm(envio->lido, recusas);
        if (!achado) return int{ZEL_ENVIO_ILEGIVEL};
        achado->caixa = caixaDe(config, vista(caixa));
        achado->origem = "transmitir";
        achado->troco = envio->troco;
        if (const auto chave = vista(substitui); !chave.empty()) {
            if (!zel::ehChave(chave))
                return recusas.juntar("substitui", chave, "uma chave tem 44 dígitos"),
                       int{ZEL_ENVIO_ARGUMENTO};
            achado->substitui = chave;
        }
        if (achado->caixa.empty())
            return recusas.juntar("caixa", "", "diga o diretório do caixa, ou um só em [[caixas]]"),
                   int{ZEL_ENVIO_ARGUMENTO};
        const auto fila = Fila::abrir(filaDe(config), recusas);
        if (!fila) return int{ZEL_ENVIO_FILA};
        Oficina oficina(config, 1);
        Linha linha;
        const Relogio relogio;
        Recusas doCertificado; // the flow says them when it comes to signing
        Rede rede(config.rede, oficina.certificado(doCertificado));
        envio->transmitido = transmitir({config, oficina, linha, relogio, *fila, rede}, *achado,
                                        std::chrono::seconds(segundos), recusas);
        tomarMensagem(*envio);
        const int codigo = codigoDe(envio->transmitido.espera);
        if (codigo != ZEL_ENVIO_OK && recusas.nenhuma())
            recusas.juntar("documento", envio->transmitido.ficha.chave,
                           envio->transmitido.ficha.motivo);
        return codigo;
    });
}

int zel_envio_resposta(zel_envio *envio, char **bytes, size_t *tamanho) {
    if (bytes == nullptr || tamanho == nullptr) return ZEL_ENVIO_ARGUMENTO;
    return responder(envio, [&](Recusas &) {
        if (envio->transmitido.elemento.empty()) return int{ZEL_ENVIO_ORDEM};
        return entregar(envio->transmitido.elemento, bytes, tamanho);
    });
}
