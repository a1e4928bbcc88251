// SPDX-License-Identifier: MIT
#include "documento/ConferenciaPartes.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <optional>

namespace zel::envio {

namespace {

constexpr Centavos kMaiorValor = 999'999'999'999'999; // 13 digits and two decimals

// Group W of MOC 7.0, NT 2015.003 (ICMSUFDest), NT 2016.002 (FCP), NT 2023.001 (single-phase ICMS),
// NT 2025.002 (IS).
constexpr Itens kTodos = Itens::kTodos, kProdutos = Itens::kProdutos, kServicos = Itens::kServicos;
constexpr Soma kSomas[] = {
    {"ICMSTot/vBC", "imposto/ICMS/*/vBC", kTodos},
    {"ICMSTot/vICMS", "imposto/ICMS/*/vICMS", kTodos},
    {"ICMSTot/vICMSDeson", "imposto/ICMS/*/vICMSDeson", kTodos},
    {"ICMSTot/vFCPUFDest", "imposto/ICMSUFDest/vFCPUFDest", kTodos},
    {"ICMSTot/vICMSUFDest", "imposto/ICMSUFDest/vICMSUFDest", kTodos},
    {"ICMSTot/vICMSUFRemet", "imposto/ICMSUFDest/vICMSUFRemet", kTodos},
    {"ICMSTot/vFCP", "imposto/ICMS/*/vFCP", kTodos},
    {"ICMSTot/vBCST", "imposto/ICMS/*/vBCST", kTodos},
    {"ICMSTot/vST", "imposto/ICMS/*/vICMSST", kTodos},
    {"ICMSTot/vFCPST", "imposto/ICMS/*/vFCPST", kTodos},
    {"ICMSTot/vFCPSTRet", "imposto/ICMS/*/vFCPSTRet", kTodos},
    {"ICMSTot/vICMSMono", "imposto/ICMS/*/vICMSMono", kTodos},
    {"ICMSTot/vICMSMonoReten", "imposto/ICMS/*/vICMSMonoReten", kTodos},
    {"ICMSTot/vICMSMonoRet", "imposto/ICMS/*/vICMSMonoRet", kTodos},
    {"ICMSTot/vProd", "prod/vProd", kProdutos},
    {"ICMSTot/vFrete", "prod/vFrete", kTodos},
    {"ICMSTot/vSeg", "prod/vSeg", kTodos},
    {"ICMSTot/vDesc", "prod/vDesc", kTodos},
    {"ICMSTot/vII", "imposto/II/vII", kTodos},
    {"ICMSTot/vIPI", "imposto/IPI/IPITrib/vIPI", kTodos},
    {"ICMSTot/vIPIDevol", "impostoDevol/IPI/vIPIDevol", kTodos},
    {"ICMSTot/vPIS", "imposto/PIS/*/vPIS", kProdutos},
    {"ICMSTot/vCOFINS", "imposto/COFINS/*/vCOFINS", kProdutos},
    {"ICMSTot/vOutro", "prod/vOutro", kTodos},
    {"ISSQNtot/vServ", "prod/vProd", kServicos},
    {"ISSQNtot/vBC", "imposto/ISSQN/vBC", kServicos},
    {"ISSQNtot/vISS", "imposto/ISSQN/vISSQN", kServicos},
    {"ISSQNtot/vPIS", "imposto/PIS/*/vPIS", kServicos},
    {"ISSQNtot/vCOFINS", "imposto/COFINS/*/vCOFINS", kServicos},
    {"ISSQNtot/vDeducao", "imposto/ISSQN/vDeducao", kServicos},
    {"ISSQNtot/vOutro", "imposto/ISSQN/vOutro", kServicos},
    {"ISSQNtot/vDescIncond", "imposto/ISSQN/vDescIncond", kServicos},
    {"ISSQNtot/vDescCond", "imposto/ISSQN/vDescCond", kServicos},
    {"ISSQNtot/vISSRet", "imposto/ISSQN/vISSRet", kServicos},
    {"ISTot/vIS", "imposto/IS/vIS", kTodos},
};
// Judged where items show it: many programs write the total alone.
constexpr Soma kTributosAproximados = {"ICMSTot/vTotTrib", "imposto/vTotTrib", kTodos};

// vNF, rule 610: what of the items is added, or taken off.
struct Parcela {
    std::string_view item;
    int sinal;
    std::string_view indicador; // counts where this element of the item is 1; empty: always
};
constexpr Parcela kValorDaNota[] = {
    {"prod/vDesc", -1, ""},
    {"imposto/ICMS/*/vICMSDeson", -1, "imposto/ICMS/*/indDeduzDeson"},
    {"imposto/ICMS/*/vICMSST", 1, ""},
    {"imposto/ICMS/*/vFCPST", 1, ""},
    {"imposto/ICMS/*/vICMSMonoReten", 1, ""},
    {"prod/vFrete", 1, ""},
    {"prod/vSeg", 1, ""},
    {"prod/vOutro", 1, ""},
    {"imposto/II/vII", 1, ""},
    {"imposto/IPI/IPITrib/vIPI", 1, ""},
    {"impostoDevol/IPI/vIPIDevol", 1, ""},
    {"imposto/PISST/vPIS", 1, "imposto/PISST/indSomaPISST"},
    {"imposto/COFINSST/vCOFINS", 1, "imposto/COFINSST/indSomaCOFINSST"},
};

// The element at the end of a path in which "*" is any one element.
No em(const No &no, std::string_view caminho) {
    const std::size_t estrela = caminho.find("*/");
    if (estrela == caminho.npos) return no.filho(caminho);
    const auto filhos = no.filho(caminho.substr(0, estrela - 1)).filhos();
    return filhos.empty() ? No() : filhos.front().filho(caminho.substr(estrela + 2));
}

bool entra(const No &det, Itens quais) {
    return quais == Itens::kTodos ||
           static_cast<bool>(det.filho("imposto/ISSQN")) == (quais == Itens::kServicos);
}

Centavos valorDaNota(const std::vector<No> &itens, Valores &valores) {
    Centavos soma = 0;
    for (const No &det : itens) {
        if (det.texto("prod/indTot") != "0") soma += valores.em(det, "prod/vProd");
        for (const auto &[item, sinal, indicador] : kValorDaNota)
            if (indicador.empty() || em(det, indicador).texto() == "1")
                soma += sinal * valores.em(det, item);
    }
    return soma;
}

// Quantity times price; the authority lets a cent pass. MOC 7.0, group I.
struct Produto {
    std::string_view quantidade, preco;
};
constexpr Produto kProdutosDoItem[] = {
    {"prod/qCom", "prod/vUnCom"},
    {"prod/qTrib", "prod/vUnTrib"},
};

void conferirProduto(const No &det, Valores &valores) {
    const Centavos vProd = valores.em(det, "prod/vProd");
    for (const auto &[quantidade, preco] : kProdutosDoItem) {
        const auto quanto = Decimal::ler(det.texto(quantidade));
        const auto aQuanto = Decimal::ler(det.texto(preco));
        const auto produto = quanto && aQuanto ? quanto->vezes(*aQuanto) : std::nullopt;
        if (!produto || std::abs(*produto - vProd) <= 1) continue;
        if (!valores.exigir(det, "prod/vProd", *produto,
                            det.texto(quantidade) + " x " + det.texto(preco) + " são " +
                                textoDe(*produto)))
            return;
    }
}

// Group YA: what the form of a payment asks for.
constexpr std::string_view kSemPagamento = "90", kOutra = "99", kIntegrado = "1";
constexpr std::string_view kComCartao[] = {"03", "04", "17"};

void conferirForma(const No &detPag, bool comOutras, Valores &valores) {
    const std::string tPag = detPag.texto("tPag");
    const auto exigir = [&](std::string_view caminho, const char *motivo) {
        if (detPag.texto(caminho).empty()) valores.diferir(detPag, caminho, "", motivo);
    };
    if (tPag == kSemPagamento && comOutras)
        valores.diferir(detPag, "tPag", tPag, "é sem pagamento, e há outros pagamentos");
    if (tPag == kOutra) exigir("xPag", "falta: o pagamento 99 diz o que é");
    if (std::ranges::find(kComCartao, tPag) != std::end(kComCartao))
        exigir("card/tpIntegra", "falta: cartão e PIX dizem se são integrados (1) ou não (2)");
    if (detPag.texto("card/tpIntegra") == kIntegrado)
        for (const std::string_view nome : {"card/CNPJ", "card/tBand", "card/cAut"})
            exigir(nome, "falta: um pagamento integrado tem CNPJ, tBand e cAut");
}

} // namespace

Centavos Valores::em(const No &no, std::string_view caminho) {
    const No lugar = envio::em(no, caminho);
    if (!lugar) return 0;
    const auto lido = Decimal::ler(lugar.texto());
    const auto centavos = lido ? lido->centavos() : std::nullopt;
    if (centavos && *centavos <= kMaiorValor) return *centavos;
    recusar(lugar, "não é um valor de até 13 dígitos e duas casas");
    return 0;
}

Decimal Valores::taxa(const No &no, std::string_view caminho) {
    const No lugar = no.filho(caminho);
    if (!lugar) return {};
    const auto lido = Decimal::ler(lugar.texto());
    if (lido && lido->texto(0, 4, 3)) return *lido;
    recusar(lugar, "não é uma alíquota de até três dígitos e quatro casas");
    return {};
}

bool Valores::exigir(const No &no, std::string_view caminho, Centavos certo,
                     const std::string &motivo) {
    const Centavos valor = em(no, caminho);
    if (valor == certo) return true;
    diferir(no, caminho, no.filho(caminho) ? textoDe(valor) : "", motivo);
    return false;
}

void Valores::diferir(const No &no, std::string_view caminho, const std::string &valor,
                      const std::string &motivo) {
    if (ilegiveis_.empty()) recusas_.juntar(lugarDe(no, caminho), valor, motivo);
}

void Valores::recusar(const No &no, std::string_view motivo) {
    if (ilegiveis_.insert(no.cru()).second) recusas_.juntar(no.caminho(), no.texto(), motivo);
}

std::vector<No> primeiros(std::vector<No> nos, std::size_t quantos) {
    if (nos.size() > quantos) nos.resize(quantos);
    return nos;
}

std::string lugarDe(const No &no, std::string_view caminho) {
    const No lugar = no.filho(caminho);
    return lugar ? lugar.caminho() : no.caminho() + '/' + std::string(caminho);
}

Centavos somar(const std::vector<No> &itens, const Soma &soma, Valores &valores) {
    const bool produtos = soma.item == "prod/vProd";
    Centavos total = 0;
    for (const No &det : itens)
        if (entra(det, soma.quais) && !(produtos && det.texto("prod/indTot") == "0"))
            total += valores.em(det, soma.item);
    return total;
}

void conferirSoma(const No &total, const std::vector<No> &itens, const Soma &soma,
                  Valores &valores) {
    const Centavos certo = somar(itens, soma, valores);
    valores.exigir(total, soma.total, certo, "os itens somam " + textoDe(certo));
}

Centavos conferirSomas(const No &infNFe, const std::vector<No> &itens, Valores &valores) {
    const No total = infNFe.filho("total");
    for (const No &det : itens)
        conferirProduto(det, valores);
    for (const Soma &soma : kSomas)
        conferirSoma(total, itens, soma, valores);
    if (somar(itens, kTributosAproximados, valores) != 0)
        conferirSoma(total, itens, kTributosAproximados, valores);
    const Centavos vNF = valorDaNota(itens, valores);
    valores.exigir(total, "ICMSTot/vNF", vNF,
                   "produtos e serviços, menos descontos, mais o que se soma, são " + textoDe(vNF) +
                       " (rejeição 610)");
    return vNF;
}

void conferirPagamentos(const No &infNFe, Centavos vNF, Valores &valores) {
    const No pag = infNFe.filho("pag");
    const auto pagamentos = primeiros(pag.filhos("detPag"), kMaisPagamentos);
    Centavos pago = 0;
    for (const No &detPag : pagamentos) {
        conferirForma(detPag, pagamentos.size() > 1, valores);
        pago += valores.em(detPag, "vPag");
    }
    // No payment: there is nothing to come to.
    if (pagamentos.size() == 1 && pagamentos.front().texto("tPag") == kSemPagamento) return;
    const Centavos troco = valores.em(pag, "vTroco"), sobra = pago - vNF;
    const std::string vPag = "os pagamentos somam " + textoDe(pago);
    if (sobra < 0)
        valores.diferir(pag, "", textoDe(pago),
                        "os pagamentos não chegam ao valor da nota, " + textoDe(vNF) +
                            " (rejeição 865)");
    else if (sobra > 0 && troco == 0)
        valores.diferir(pag, "vTroco", "",
                        vPag + " e a nota é de " + textoDe(vNF) + ": falta o troco (rejeição 866)");
    else if (troco != sobra)
        valores.diferir(pag, "vTroco", textoDe(troco),
                        vPag + " e a nota é de " + textoDe(vNF) + ": o troco é " + textoDe(sobra) +
                            " (rejeição 869)");
}

} // namespace zel::envio
