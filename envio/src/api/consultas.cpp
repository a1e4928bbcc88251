// SPDX-License-Identifier: MIT
// What a person and a program ask of the queue.
#include "api/Balcao.h"
#include "api/FilaEmJson.h"

#include "base/Texto.h"
#include "comum/ChaveAcesso.h"
#include "comum/Digitos.h"
#include "fluxo/Destinos.h"
#include "fluxo/Relogio.h"
#include "guarda/Guarda.h"
#include "mensagem/Lote.h"

#include <algorithm>
#include <charconv>
#include <iterator>

using namespace zel::envio;

namespace {

constexpr int kMaisSegundos = 300;
constexpr std::size_t kMaisLinhas = 100000;

struct Pedido {
    Procura procura;
    bool passos = false;
};

template <class T>
bool lerNumero(std::string_view texto, T &numero) {
    const char *fim = texto.data() + texto.size();
    return std::from_chars(texto.data(), fim, numero).ptr == fim && !texto.empty() && numero > 0;
}

bool lerEstado(Pedido &pedido, std::string_view valor) {
    const auto *estado = std::find_if(kEstados.begin(), kEstados.end(),
                                      [&](const NomeEstado &este) { return este.nome == valor; });
    if (estado == kEstados.end()) return false;
    pedido.procura.estados.push_back(estado->estado);
    return true;
}

// A criterion takes its value, or says that it cannot.
struct Criterio {
    std::string_view nome, forma;
    bool (*ler)(Pedido &, std::string_view);
};
constexpr Criterio kCriterios[] = {
    {"numero", "é um número a partir de 1",
     [](Pedido &p, std::string_view v) { return lerNumero(v, p.procura.numero); }},
    {"chave", "uma chave tem 44 dígitos",
     [](Pedido &p, std::string_view v) { return p.procura.chave = v, zel::ehChave(v); }},
    {"dia", "escreve-se AAAA-MM-DD",
     [](Pedido &p, std::string_view v) { return p.procura.dia = v, ehData(v); }},
    {"mes", "escreve-se AAAA-MM",
     [](Pedido &p, std::string_view v) {
         return p.procura.mes = v, ehData(std::string(v) + "-01");
     }},
    {"consumidor", "falta o documento dele",
     [](Pedido &p, std::string_view v) { return p.procura.consumidor = v, !v.empty(); }},
    {"caixa", "é o diretório dele",
     [](Pedido &p, std::string_view v) { return p.procura.caixa = v, !v.empty(); }},
    {"estado", "não é um estado da fila", lerEstado},
    {"alguem", "não leva valor",
     [](Pedido &p, std::string_view v) { return p.procura.precisaDeAlguem = true, v.empty(); }},
    {"passos", "não leva valor",
     [](Pedido &p, std::string_view v) { return p.passos = true, v.empty(); }},
    {"maximo", "é de 1 a 100000",
     [](Pedido &p, std::string_view v) {
         return lerNumero(v, p.procura.maximo) && p.procura.maximo <= kMaisLinhas;
     }},
};

bool lerCriterio(std::string_view linha, Pedido &pedido, Recusas &recusas) {
    const auto igual =
        static_cast<std::size_t>(std::find(linha.begin(), linha.end(), '=') - linha.begin());
    const std::string_view nome = linha.substr(0, igual);
    const std::string_view valor = linha.substr(std::min(igual + 1, linha.size()));
    const auto *criterio = std::find_if(std::begin(kCriterios), std::end(kCriterios),
                                        [&](const Criterio &este) { return este.nome == nome; });
    if (criterio == std::end(kCriterios))
        return recusas.juntar(nome, valor, "não é algo que se procure");
    return criterio->ler(pedido, valor) || recusas.juntar(nome, valor, criterio->forma);
}

Pedido lerPedido(std::string_view criterios, Recusas &recusas) {
    Pedido pedido;
    while (!criterios.empty()) {
        const std::size_t fim = std::min(criterios.find('\n'), criterios.size());
        if (fim > 0) lerCriterio(criterios.substr(0, fim), pedido, recusas);
        criterios.remove_prefix(std::min(fim + 1, criterios.size()));
    }
    return pedido;
}

// Nothing is given of a queue that could not be read to its end.
int dar(Fila &fila, const Json &json, Recusas &recusas, char **bytes, std::size_t *tamanho) {
    if (const std::string falha = fila.falha(); !falha.empty())
        return recusas.juntar("fila", "", falha), int{ZEL_ENVIO_FILA};
    return entregar(escrita(json), bytes, tamanho);
}

// The last answer of the status service there; none when it was never asked.
std::optional<ServicoVisto> estadoVisto(Fila &fila, std::string_view cUF, int tpAmb) {
    const auto vistos = fila.servicos();
    const auto visto = std::find_if(vistos.begin(), vistos.end(), [&](const ServicoVisto &este) {
        return este.cUF == cUF && este.tpAmb == tpAmb &&
               este.servico == metodoDe(Servico::kStatusServico).servico;
    });
    return visto == vistos.end() ? std::nullopt : std::optional(*visto);
}

int perguntarServico(zel_envio &envio, Fila &fila, std::string_view cUF, int tpAmb, int segundos,
                     Json &json, Recusas &recusas) {
    Balcao balcao(envio.emissao.config(), fila);
    const bool opera =
        Fluxo(balcao.meios()).perguntarServico(cUF, tpAmb, std::chrono::seconds(segundos));
    const auto visto = estadoVisto(fila, cUF, tpAmb);
    if (!visto) {
        recusas.juntar("servico", cUF, "não há endereço do serviço deste estado e ambiente");
        return ZEL_ENVIO_NAO_ENVIADO;
    }
    json = servicoEmJson(*visto);
    if (opera) return ZEL_ENVIO_OK;
    recusas.juntar("servico", visto->cStat == 0 ? "" : std::to_string(visto->cStat),
                   visto->xMotivo.empty() ? "não respondeu" : visto->xMotivo);
    return visto->cStat == 0 ? ZEL_ENVIO_SEM_RESPOSTA : ZEL_ENVIO_RECUSADO;
}

} // namespace

int zel_envio_estado(zel_envio *envio, char **json, size_t *tamanho) {
    if (json == nullptr || tamanho == nullptr) return ZEL_ENVIO_ARGUMENTO;
    return naFila(envio, [&](Fila &fila, Recusas &recusas) {
        Recusas doCertificado;
        const auto certificado = envio->emissao.certificado(doCertificado);
        return dar(fila,
                   estadoDaFila(envio->emissao.config(), fila, certificado.get(), doCertificado,
                                Relogio().agora()),
                   recusas, json, tamanho);
    });
}

int zel_envio_procurar(zel_envio *envio, const char *criterios, char **json, size_t *tamanho) {
    if (json == nullptr || tamanho == nullptr) return ZEL_ENVIO_ARGUMENTO;
    return naFila(envio, [&](Fila &fila, Recusas &recusas) {
        const Configuracao &config = envio->emissao.config();
        Pedido pedido = lerPedido(vista(criterios), recusas);
        if (!recusas.nenhuma()) return int{ZEL_ENVIO_ARGUMENTO};
        if (!pedido.procura.caixa.empty())
            pedido.procura.caixa = caixaDe(config, pedido.procura.caixa);
        const Momento agora = Relogio().agora();
        procurarParaAlguem(pedido.procura, config.fila.avisoHoras, agora);
        const auto escrever = pedido.procura.precisaDeAlguem ? fichaDeAlguem : fichaEmJson;
        Json linhas = Json::array();
        for (const Ficha &ficha : fila.procurar(pedido.procura)) {
            linhas.push_back(escrever(fila, ficha, config.fila, agora));
            if (pedido.passos) linhas.back()["passos"] = passosEmJson(fila, ficha.id);
        }
        return dar(fila, linhas, recusas, json, tamanho);
    });
}

int zel_envio_exportar(zel_envio *envio, const char *mes, const char *arquivo, size_t *quantos) {
    if (vista(mes).empty() || vista(arquivo).empty()) return ZEL_ENVIO_ARGUMENTO;
    return naFila(envio, [&](Fila &fila, Recusas &recusas) {
        const auto feitos =
            exportarMes(fila, guardadosDe(envio->emissao.config()), mes, arquivo, recusas);
        if (!feitos) return int{ZEL_ENVIO_ARGUMENTO};
        if (quantos != nullptr) *quantos = static_cast<std::size_t>(*feitos);
        return int{ZEL_ENVIO_OK};
    });
}

int zel_envio_continuar(zel_envio *envio) {
    return naFila(envio, [&](Fila &fila, Recusas &recusas) {
        continuar(fila);
        const std::string falha = fila.falha();
        if (falha.empty()) return int{ZEL_ENVIO_OK};
        return recusas.juntar("fila", "", falha), int{ZEL_ENVIO_FILA};
    });
}

int zel_envio_servico(zel_envio *envio, const char *cUF, int ambiente, int segundos, char **json,
                      size_t *tamanho) {
    constexpr std::size_t kDigitosDaUf = 2;
    if (json == nullptr || tamanho == nullptr || ambiente < 1 || ambiente > 2 || segundos < 1 ||
        segundos > kMaisSegundos)
        return ZEL_ENVIO_ARGUMENTO;
    return naFila(envio, [&](Fila &fila, Recusas &recusas) {
        const std::string_view dada = vista(cUF);
        const std::string uf(dada.empty() ? envio->emissao.config().cUF : dada);
        if (uf.size() != kDigitosDaUf || !zel::soDigitos(uf))
            return recusas.juntar("cUF", uf,
                                  "são os dois dígitos do estado no IBGE; diga-os em "
                                  "zel-envio.toml: cUF"),
                   int{ZEL_ENVIO_ARGUMENTO};
        Json visto;
        const int codigo = perguntarServico(*envio, fila, uf, ambiente, segundos, visto, recusas);
        return codigo == ZEL_ENVIO_OK ? dar(fila, visto, recusas, json, tamanho) : codigo;
    });
}
