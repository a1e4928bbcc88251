// SPDX-License-Identifier: MIT
// Payments (group YA): the till's forms as the configuration has them, cards, change.
#include "base/Decimal.h"
#include "base/Texto.h"
#include "traducao/Motor.h"
#include "traducao/Regras.h"

#include <algorithm>

namespace zel::envio::regra {

namespace {

constexpr std::string_view kOutros = "99";
constexpr std::string_view kComCartao[] = {"03", "04", "17"};
constexpr std::string_view kIntegrado = "1", kNaoIntegrado = "2";

const ConfigPagamento &configDe(const Lugar &detPag) {
    static const ConfigPagamento kNada;
    const auto &pagamentos = detPag.contexto.config.pagamentos;
    const auto achado = pagamentos.find(aparar(detPag.antigo.texto("tPag")));
    return achado == pagamentos.end() ? kNada : achado->second;
}

// What the till knows of a card stands before what is configured for every sale.
std::string doCartao(const Lugar &card, std::string_view nome,
                     std::string ConfigPagamento::*configurado) {
    std::string doCaixa = aparar(card.antigo.texto(nome));
    return doCaixa.empty() ? configDe(*card.acima).*configurado : doCaixa;
}

} // namespace

Texto tPag(const Lugar &detPag) {
    const ConfigPagamento &config = configDe(detPag);
    return config.tPag.empty() ? aparar(detPag.antigo.texto("tPag")) : config.tPag;
}

bool outraForma(const Lugar &detPag) {
    return detPag.novo.texto("tPag") == kOutros;
}

Texto xPag(const Lugar &detPag) {
    const ConfigPagamento &config = configDe(detPag);
    if (!config.xPag.empty()) return config.xPag;
    return recusar(detPag, "xPag", "",
                   "falta: o pagamento 99 diz o que é; configure xPag desta forma em [pagamentos] "
                   "de zel-envio.toml");
}

// The last one is what the till cut.
Texto vPag(const Lugar &detPag) {
    std::string valor = aparar(detPag.antigo.texto("vPag"));
    const Centavos troco = detPag.contexto.nota.troco;
    if (troco <= 0 || detPag.antigo != detPag.contexto.ultimoPagamento) return valor;
    const auto numero = Decimal::ler(valor);
    const auto centavos = numero ? numero->centavos() : std::nullopt;
    return centavos ? textoDe(*centavos + troco) : valor;
}

bool comCartao(const Lugar &detPag) {
    const std::string forma = detPag.novo.texto("tPag");
    return detPag.antigo.filho("card") || !configDe(detPag).tpIntegra.empty() ||
           std::find(std::begin(kComCartao), std::end(kComCartao), forma) != std::end(kComCartao);
}

Texto tpIntegra(const Lugar &card) {
    std::string dito = doCartao(card, "tpIntegra", &ConfigPagamento::tpIntegra);
    return dito.empty() ? std::string(kNaoIntegrado) : dito;
}
Texto cardCNPJ(const Lugar &card) {
    return doCartao(card, "CNPJ", &ConfigPagamento::CNPJ);
}
Texto tBand(const Lugar &card) {
    return doCartao(card, "tBand", &ConfigPagamento::tBand);
}
Texto cAut(const Lugar &card) {
    return doCartao(card, "cAut", &ConfigPagamento::cAut);
}

void integradoCompleto(const Lugar &card) {
    if (card.novo.texto("tpIntegra") != kIntegrado) return;
    for (const std::string_view nome : {"CNPJ", "tBand", "cAut"})
        if (!card.novo.filho(nome))
            recusar(card, nome, "",
                    "falta: tpIntegra 1 pede CNPJ, tBand e cAut desta forma em [pagamentos] de "
                    "zel-envio.toml; sem TEF é tpIntegra 2");
}

bool comTroco(const Lugar &pag) {
    return pag.contexto.nota.troco > 0;
}
Texto vTroco(const Lugar &pag) {
    return textoDe(pag.contexto.nota.troco);
}

// Rules 865, 866 and 869.
void conferirPago(const Lugar &pag) {
    const No vNF = pag.contexto.nova.filho("total/ICMSTot/vNF");
    if (!vNF || pag.contexto.somasIncertas) return;
    Centavos pago = 0;
    for (const No &detPag : pag.novo.filhos("detPag"))
        pago += centavosDe(detPag.filho("vPag"));
    pago -= centavosDe(pag.novo.filho("vTroco"));
    if (pago != centavosDe(vNF))
        recusar(pag, "vPag", textoDe(pago),
                "os pagamentos, sem o troco, não completam vNF, " + vNF.texto() +
                    ": venda de novo, com pagamentos que somem o total");
}

} // namespace zel::envio::regra
