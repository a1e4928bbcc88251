// SPDX-License-Identifier: MIT
#include "Quadro.h"

#include "fluxo/Destinos.h"
#include "fluxo/Prazos.h"
#include "fluxo/Relogio.h"
#include "mensagem/Resposta.h"

#include <algorithm>
#include <array>

namespace zel::envio {

namespace {

constexpr std::array<std::string_view, 5> kTipos{"Documento", "Nota", "Cancelamento da nota",
                                                 "Inutilização", "Consulta da nota"};

std::string faixa(std::int64_t primeiro, std::int64_t ultimo) {
    return primeiro == ultimo ? std::to_string(primeiro)
                              : std::to_string(primeiro) + " a " + std::to_string(ultimo);
}

void avisarFila(const Quadro &quadro, std::vector<Aviso> &avisos) {
    if (!quadro.falha.empty()) avisos.push_back({"A fila não pôde ser lida", quadro.falha});
    if (!quadro.parada.empty())
        avisos.push_back({"O envio está parado", quadro.parada,
                          "Resolva e diga: zel envio continuar. As vendas seguem sem conexão."});
    if (!quadro.diasDoCertificado || *quadro.diasDoCertificado > kPoucosDias) return;
    const int dias = *quadro.diasDoCertificado;
    avisos.push_back({dias < 0    ? "O certificado venceu"
                      : dias == 0 ? "O certificado vence hoje"
                      : dias == 1 ? "O certificado vence amanhã"
                                  : "O certificado vence em " + std::to_string(dias) + " dias",
                      "Sem certificado válido nada é assinado nem enviado.",
                      "Renove-o com quem o emitiu e ponha o novo no lugar."});
}

Aviso avisoDe(const Ficha &ficha, Momento agora) {
    Aviso aviso{tituloDe(ficha), ficha.motivo, {}, ficha.id};
    if (ficha.estado == Estado::kRecusado) {
        aviso.titulo += ": recusada";
        return aviso;
    }
    if (ficha.estado == Estado::kRetirado) {
        aviso.titulo += ": vendida, e sem documento";
        aviso.remedio = remedioDaRetirada(ficha);
        return aviso;
    }
    if (acabou(ficha.estado)) {
        aviso.titulo += ": em dúvida";
        return aviso;
    }
    aviso.titulo += ": há " + duracaoLida(agora - ficha.achado) + " sem chegar ao fim";
    if (aviso.motivo.empty()) aviso.motivo = situacaoDe(ficha);
    aviso.remedio = "Confira a internet da loja e as respostas da SEFAZ, abaixo.";
    return aviso;
}

Aviso avisoDe(const Lacuna &lacuna) {
    const bool um = lacuna.primeiro == lacuna.ultimo;
    return {(um ? "Número " : "Números ") + faixa(lacuna.primeiro, lacuna.ultimo) + " da série " +
                std::to_string(lacuna.serie) + (um ? ": sem nota" : ": sem notas"),
            "Nenhuma nota autorizada, nem à espera, tem " +
                std::string(um ? "este número." : "um destes números."),
            "Se o caixa não a tem para enviar, peça a inutilização até o dia 10 do mês seguinte: "
            "zel envio inutilizar"};
}

// Whether a refused note that is said already is the whole of it.
bool dita(const Lacuna &lacuna, const std::vector<Ficha> &fichas) {
    return lacuna.primeiro == lacuna.ultimo &&
           std::any_of(fichas.begin(), fichas.end(), [&](const Ficha &ficha) {
               return ficha.tipo == Tipo::kNfce && ficha.numero == lacuna.primeiro &&
                      ficha.serie == lacuna.serie && ficha.cnpj == lacuna.cnpj &&
                      ficha.tpAmb == lacuna.tpAmb;
           });
}

template <class Lista, class Fazer>
void avisarDe(const Lista &lista, std::vector<Aviso> &avisos, const char *haMais, Fazer fazer) {
    const std::size_t quantos = std::min(lista.size(), kMaisLinhas);
    for (std::size_t i = 0; i < quantos; ++i)
        avisos.push_back(fazer(lista[i]));
    if (quantos < lista.size()) avisos.push_back({haMais, "", "Veja todos com: zel envio estado"});
}

} // namespace

void LeitorDoQuadro::contar(Momento agora) {
    contado_ = {};
    contado_.contagens = fila_.contar();
    for (const Contagem &contagem : contado_.contagens) {
        if (acabou(contagem.estado) || contagem.quantos == 0) continue;
        contado_.maisAntigo = contado_.esperando == 0
                                  ? contagem.maisAntigo
                                  : std::min(contado_.maisAntigo, contagem.maisAntigo);
        contado_.esperando += contagem.quantos;
    }
    Procura deAlguem{.precisaDeAlguem = true, .maximo = kMaisLinhas + 1};
    procurarParaAlguem(deAlguem, config_.avisoHoras, agora);
    contado_.precisam = fila_.procurar(deAlguem);
    for (Ficha &ficha : contado_.precisam)
        if (const std::string prazo = prazoDito(fila_, ficha, config_, agora); !prazo.empty())
            ficha.motivo += (ficha.motivo.empty() ? "" : "; ") + prazo;
    contado_.lacunas = fila_.lacunas();
}

Quadro LeitorDoQuadro::ler(Momento agora, std::optional<int> diasDoCertificado) {
    constexpr int kVezes = 50;
    if (const auto antes = std::chrono::steady_clock::now(); antes >= vale_) {
        contar(agora);
        const auto depois = std::chrono::steady_clock::now();
        vale_ = depois + kVezes * (depois - antes);
    }
    Quadro quadro = contado_;
    quadro.agora = agora;
    quadro.diasDoCertificado = diasDoCertificado;
    quadro.parada = fila_.anotado(kAnotacaoParada);
    quadro.servicos = fila_.servicos();
    quadro.falha = fila_.falha();
    if (!quadro.falha.empty()) vale_ = {};
    return quadro;
}

std::vector<Aviso> avisosDe(const Quadro &quadro) {
    std::vector<Aviso> avisos;
    avisarFila(quadro, avisos);
    avisarDe(quadro.precisam, avisos, "Há mais documentos que precisam de alguém",
             [&](const Ficha &ficha) { return avisoDe(ficha, quadro.agora); });
    std::vector<Lacuna> lacunas = quadro.lacunas;
    std::erase_if(lacunas, [&](const Lacuna &lacuna) { return dita(lacuna, quadro.precisam); });
    avisarDe(lacunas, avisos, "Há mais números sem nota",
             [](const Lacuna &lacuna) { return avisoDe(lacuna); });
    return avisos;
}

std::string tituloDe(const Ficha &ficha) {
    std::string tipo(kTipos.at(static_cast<std::size_t>(ficha.tipo)));
    if (ficha.numero == 0) return tipo;
    return tipo + (ficha.tipo == Tipo::kInutilizacao ? " de " : " ") +
           faixa(ficha.numero, std::max(ficha.numero, ficha.ultimo)) + ", série " +
           std::to_string(ficha.serie);
}

std::string situacaoDe(const Ficha &ficha) {
    std::string estado(kEstados.at(static_cast<std::size_t>(ficha.estado)).pessoa);
    if (ficha.estado != Estado::kEntregue || ficha.desfecho == Desfecho::kNenhum) return estado;
    return estado + ": " + std::string(nomeDe(ficha.desfecho));
}

std::string duracaoLida(Momento milissegundos) {
    struct Unidade {
        Momento tamanho;
        const char *uma, *varias;
    };
    constexpr std::array<Unidade, 4> kUnidades{{{24 * kHora, " dia", " dias"},
                                                {kHora, " hora", " horas"},
                                                {kMinuto, " minuto", " minutos"},
                                                {kSegundo, " segundo", " segundos"}}};
    for (const Unidade &unidade : kUnidades) {
        const Momento quantas = std::max<Momento>(milissegundos, 0) / unidade.tamanho;
        if (quantas > 0)
            return std::to_string(quantas) + (quantas == 1 ? unidade.uma : unidade.varias);
    }
    return "menos de 1 segundo";
}

} // namespace zel::envio
