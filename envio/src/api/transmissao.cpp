// SPDX-License-Identifier: MIT
#include "api/Balcao.h"

#include "comum/ChaveAcesso.h"
#include "fluxo/Achados.h"

#include <array>
#include <filesystem>
#include <system_error>

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

// What was sent takes the place of what was read, so that it can be shown, verified and printed.
void tomarMensagem(zel_envio &envio) {
    Recusas ignoradas;
    if (envio.transmitido.mensagem.empty()) return;
    if (auto lido = lerArquivoDoCaixa(envio.transmitido.mensagem, ignoradas))
        envio.emissao.ler(std::move(*lido));
}

} // namespace

std::string zel::envio::caixaDe(const Configuracao &config, std::string_view dada) {
    std::string diretorio(dada);
    if (diretorio.empty())
        return config.caixas.size() == 1 ? config.caixas.front().diretorio : diretorio;
    if (!diretorio.ends_with('/')) diretorio += '/';
    std::error_code nada;
    for (const ConfigCaixa &caixa : config.caixas)
        if (std::filesystem::equivalent(caixa.diretorio, diretorio, nada)) return caixa.diretorio;
    return diretorio;
}

int zel_envio_transmitir(zel_envio *envio, const char *caixa, const char *substitui, int segundos) {
    if (segundos < 0 || segundos > kMaisSegundos) return ZEL_ENVIO_ARGUMENTO;
    return naFila(envio, [&](Fila &fila, Recusas &recusas) {
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
        Balcao balcao(config, fila);
        envio->transmitido =
            transmitir(balcao.meios(), *achado, std::chrono::seconds(segundos), recusas);
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
