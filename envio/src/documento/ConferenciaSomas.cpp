// SPDX-License-Identifier: MIT
#include "documento/ConferenciaPartes.h"

#include <cstdlib>
#include <optional>

namespace zel::envio {

namespace {

constexpr Centavos kMaiorValor = 999'999'999'999'999; // 13 digits and two decimals

// Group W of MOC 7.0, NT 2015.003 (ICMSUFDest), NT 2016.002 (FCP), NT 2023.001 (single-phase ICMS),
// NT 2025.002 (IS).
constexpr Itens kTodos = Itens::kTodos, kProdutos = Itens::kProdutos, kServicos = Itens::kServicos;
constexpr Soma kSomas[] = {
    {"ICMSTot/vBC", "imposto/ICMS/*/vBC", kTodos, "W03-10, rejeição 531"},
    {"ICMSTot/vICMS", "imposto/ICMS/*/vICMS", kTodos, "W04-10, rejeição 532"},
    {"ICMSTot/vICMSDeson", "imposto/ICMS/*/vICMSDeson", kTodos, "W04a-10, rejeição 795"},
    {"ICMSTot/vFCPUFDest", "imposto/ICMSUFDest/vFCPUFDest", kTodos, "NT 2015.003"},
    {"ICMSTot/vICMSUFDest", "imposto/ICMSUFDest/vICMSUFDest", kTodos, "NT 2015.003"},
    {"ICMSTot/vICMSUFRemet", "imposto/ICMSUFDest/vICMSUFRemet", kTodos, "NT 2015.003"},
    {"ICMSTot/vFCP", "imposto/ICMS/*/vFCP", kTodos, "W04h-10, rejeição 861"},
    {"ICMSTot/vBCST", "imposto/ICMS/*/vBCST", kTodos, "W05-10, rejeição 533"},
    {"ICMSTot/vST", "imposto/ICMS/*/vICMSST", kTodos, "W06-10, rejeição 534"},
    {"ICMSTot/vFCPST", "imposto/ICMS/*/vFCPST", kTodos, "W06a-10, rejeição 862"},
    {"ICMSTot/vFCPSTRet", "imposto/ICMS/*/vFCPSTRet", kTodos, "W06b-10, rejeição 863"},
    {"ICMSTot/vICMSMono", "imposto/ICMS/*/vICMSMono", kTodos, "NT 2023.001"},
    {"ICMSTot/vICMSMonoReten", "imposto/ICMS/*/vICMSMonoReten", kTodos, "NT 2023.001"},
    {"ICMSTot/vICMSMonoRet", "imposto/ICMS/*/vICMSMonoRet", kTodos, "NT 2023.001"},
    {"ICMSTot/vProd", "prod/vProd", kProdutos, "W07-10, rejeição 564"},
    {"ICMSTot/vFrete", "prod/vFrete", kTodos, "W08-10, rejeição 535"},
    {"ICMSTot/vSeg", "prod/vSeg", kTodos, "W09-10, rejeição 536"},
    {"ICMSTot/vDesc", "prod/vDesc", kTodos, "W10-10, rejeição 537"},
    {"ICMSTot/vII", "imposto/II/vII", kTodos, "W11-10, rejeição 601"},
    {"ICMSTot/vIPI", "imposto/IPI/IPITrib/vIPI", kTodos, "W12-10, rejeição 538"},
    {"ICMSTot/vIPIDevol", "impostoDevol/IPI/vIPIDevol", kTodos, "W12a-10, rejeição 864"},
    {"ICMSTot/vPIS", "imposto/PIS/*/vPIS", kProdutos, "W13-10, rejeição 602"},
    {"ICMSTot/vCOFINS", "imposto/COFINS/*/vCOFINS", kProdutos, "W14-10, rejeição 603"},
    {"ICMSTot/vOutro", "prod/vOutro", kTodos, "W15-10, rejeição 604"},
    {"ISSQNtot/vServ", "prod/vProd", kServicos, "W18-10, rejeição 605"},
    {"ISSQNtot/vBC", "imposto/ISSQN/vBC", kServicos, "W19-10, rejeição 606"},
    {"ISSQNtot/vISS", "imposto/ISSQN/vISSQN", kServicos, "W20-10, rejeição 607"},
    {"ISSQNtot/vPIS", "imposto/PIS/*/vPIS", kServicos, "W21-10, rejeição 608"},
    {"ISSQNtot/vCOFINS", "imposto/COFINS/*/vCOFINS", kServicos, "W22-10, rejeição 609"},
    {"ISSQNtot/vDeducao", "imposto/ISSQN/vDeducao", kServicos, "W17"},
    {"ISSQNtot/vOutro", "imposto/ISSQN/vOutro", kServicos, "W17"},
    {"ISSQNtot/vDescIncond", "imposto/ISSQN/vDescIncond", kServicos, "W17"},
    {"ISSQNtot/vDescCond", "imposto/ISSQN/vDescCond", kServicos, "W17"},
    {"ISSQNtot/vISSRet", "imposto/ISSQN/vISSRet", kServicos, "W17"},
    {"ISTot/vIS", "imposto/IS/vIS", kTodos, "NT 2025.002"},
};
// Judged where items show it: many programs write the total alone.
constexpr Soma kTributosAproximados = {"ICMSTot/vTotTrib", "imposto/vTotTrib", kTodos,
                                       "W16a-10, rejeição 685"};

// vNF, rule W16-10: what of the items is added, or taken off.
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
    std::string_view quantidade, preco, regra;
};
constexpr Produto kProdutosDoItem[] = {
    {"prod/qCom", "prod/vUnCom", "rejeição 629"},
    {"prod/qTrib", "prod/vUnTrib", "rejeição 630"},
};

void conferirProduto(const No &det, Valores &valores) {
    const Centavos vProd = valores.em(det, "prod/vProd");
    for (const auto &[quantidade, preco, regra] : kProdutosDoItem) {
        const auto quanto = Decimal::ler(det.texto(quantidade));
        const auto aQuanto = Decimal::ler(det.texto(preco));
        const auto produto = quanto && aQuanto ? quanto->vezes(*aQuanto) : std::nullopt;
        if (!produto || std::abs(*produto - vProd) <= 1) continue;
        if (!valores.exigir(det, "prod/vProd", *produto,
                            det.texto(quantidade) + " x " + det.texto(preco) + " são " +
                                textoDe(*produto) + " (" + std::string(regra) + ')'))
            return;
    }
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
    valores.exigir(total, soma.total, certo,
                   "os itens somam " + textoDe(certo) + " (" + std::string(soma.regra) + ')');
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
                       " (W16-10, rejeição 610)");
    return vNF;
}

void conferirPagamentos(const No &infNFe, Centavos vNF, Valores &valores) {
    const No pag = infNFe.filho("pag");
    Centavos pago = 0;
    for (const No &detPag : primeiros(pag.filhos("detPag"), kMaisPagamentos)) {
        if (detPag.texto("tPag") == "90") return; // no payment: there is nothing to come to
        pago += valores.em(detPag, "vPag");
    }
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
