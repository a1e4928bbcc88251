// SPDX-License-Identifier: MIT
#include "Metricas.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zel::envio {

namespace {

class Metricas {
public:
    void comecar(std::string_view nome, std::string_view tipo, std::string_view ajuda) {
        nome_ = "zel_envio_" + std::string(nome);
        texto_ += "# HELP " + nome_ + ' ' + std::string(ajuda) + "\n# TYPE " + nome_ + ' ' +
                  std::string(tipo) + '\n';
    }
    // `rotulos`: of values of this program alone, which need no escape.
    void dar(const std::string &rotulos, const std::string &valor, std::string_view fim = {}) {
        texto_ += nome_ + std::string(fim) + (rotulos.empty() ? "" : '{' + rotulos + '}') + ' ' +
                  valor + '\n';
    }
    void dar(const std::string &rotulos, std::int64_t valor, std::string_view fim = {}) {
        dar(rotulos, std::to_string(valor), fim);
    }
    void uma(std::string_view nome, std::string_view ajuda, std::int64_t valor) {
        comecar(nome, "gauge", ajuda);
        dar("", valor);
    }
    const std::string &texto() const { return texto_; }

private:
    std::string nome_, texto_;
};

std::string segundos(std::int64_t milissegundos) {
    std::string resto = std::to_string(milissegundos % 1000);
    resto.insert(0, 3 - resto.size(), '0');
    return std::to_string(milissegundos / 1000) + '.' + resto;
}

std::string rotulo(std::string_view nome, std::string_view valor) {
    return std::string(nome) + "=\"" + std::string(valor) + '"';
}

void respostas(Metricas &metricas, const Contadores &contadores) {
    metricas.comecar("respostas_total", "counter",
                     "Respostas da SEFAZ, por servico e codigo (cStat); codigo 0: nenhuma.");
    for (const auto &[qual, quantas] : contadores.respostas)
        metricas.dar(rotulo("servico", qual.first) + ',' +
                         rotulo("codigo", std::to_string(qual.second)),
                     quantas);
    metricas.comecar("resposta_segundos", "histogram", "Quanto a SEFAZ demorou a responder.");
    for (const auto &[nome, demora] : contadores.demoras) {
        const std::string servico = rotulo("servico", nome);
        std::int64_t ate = 0;
        for (std::size_t i = 0; i < demora.classes.size(); ++i) {
            ate += demora.classes.at(i);
            const std::string le = i < kDemoras.size() ? segundos(kDemoras.at(i)) : "+Inf";
            metricas.dar(servico + ',' + rotulo("le", le), ate, "_bucket");
        }
        metricas.dar(servico, segundos(demora.soma), "_sum");
        metricas.dar(servico, ate, "_count");
    }
}

} // namespace

std::string metricasDe(const Quadro &quadro, const Contadores &contadores) {
    Metricas metricas;
    metricas.comecar("documentos", "gauge", "Documentos na fila, por estado.");
    for (const Contagem &contagem : quadro.contagens)
        metricas.dar(rotulo("estado", nomeDe(contagem.estado)), contagem.quantos);
    const Momento espera =
        quadro.esperando == 0 ? 0 : std::max<Momento>(quadro.agora - quadro.maisAntigo, 0);
    metricas.uma("mais_antigo_segundos", "Ha quanto tempo o documento mais antigo espera.",
                 espera / 1000);
    metricas.uma("precisam_de_alguem", "Documentos recusados ou atrasados; 51: mais de 50.",
                 static_cast<std::int64_t>(quadro.precisam.size()));
    metricas.uma("lacunas", "Faixas de numeros sem nota.",
                 static_cast<std::int64_t>(quadro.lacunas.size()));
    metricas.uma("parado", "1: nada se assina nem se envia.", quadro.parada.empty() ? 0 : 1);
    metricas.uma("fila_legivel", "0: a fila nao pode ser lida.", quadro.falha.empty() ? 1 : 0);
    if (quadro.diasDoCertificado)
        metricas.uma("certificado_dias", "Dias que restam ao certificado; negativo: vencido.",
                     *quadro.diasDoCertificado);
    respostas(metricas, contadores);
    return metricas.texto();
}

} // namespace zel::envio
