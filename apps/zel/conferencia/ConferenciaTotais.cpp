// SPDX-License-Identifier: MIT
#include "conferencia/ConferenciaDocumento.h"

#include "comum/Centavo.h"
#include "leitura/Texto.h"

#include <cmath>
#include <vector>

namespace zel::aplicativo {

namespace {

// Sums of cents, in binary.
// An item's value may be rounded or truncated.
constexpr double kCentavo = 0.01;

double ler(std::string_view texto) {
    return lerDecimal(texto).value_or(0);
}

bool diferem(double a, double b, double folga = kMeioCentavo) {
    return std::abs(a - b) >= folga;
}

// A total of ICMSTot and the elements of the items that add up to it: Manual de Orientação do
// Contribuinte 6.0 (September 2015), Anexo I, group W.
struct Soma {
    std::string_view total;
    std::string_view grupo; // child of det
    std::string_view elemento;
};

constexpr Soma kSomas[] = {
    {"vProd", "prod", "vProd"},    {"vDesc", "prod", "vDesc"},    {"vOutro", "prod", "vOutro"},
    {"vBC", "imposto", "vBC"},     {"vICMS", "imposto", "vICMS"}, {"vBCST", "imposto", "vBCST"},
    {"vST", "imposto", "vICMSST"}, {"vPIS", "imposto", "vPIS"},   {"vCOFINS", "imposto", "vCOFINS"},
};

// What an item has under that name: a product's own element, or that of its tax group. The bases of
// PIS and COFINS have no total.
double parcela(const NoXml &item, const Soma &soma) {
    const NoXml *grupo = item.filho(soma.grupo);
    if (grupo == nullptr) return 0;
    if (soma.grupo == "prod") return ler(grupo->valor(soma.elemento));
    const std::string_view tributo = soma.total == "vPIS"      ? "PIS"
                                     : soma.total == "vCOFINS" ? "COFINS"
                                                               : "ICMS";
    const NoXml *imposto = grupo->filho(tributo);
    return imposto == nullptr || imposto->filhos.empty()
               ? 0
               : ler(imposto->filhos.front().valor(soma.elemento));
}

std::vector<const NoXml *> filhos(const NoXml &no, std::string_view nome) {
    std::vector<const NoXml *> achados;
    for (const NoXml &filho : no.filhos)
        if (filho.nome == nome) achados.push_back(&filho);
    return achados;
}

void conferirSomas(const std::vector<const NoXml *> &itens, const NoXml &total,
                   Relatorio &relatorio) {
    for (const Soma &soma : kSomas) {
        double esperado = 0;
        for (const NoXml *item : itens)
            esperado += parcela(*item, soma);
        const NoXml *elemento = total.filho(soma.total);
        if (elemento == nullptr || !diferem(ler(elemento->texto), esperado)) continue;
        relatorio.registrar(
            {"soma-difere", juntar({"total/ICMSTot/", soma.total}), elemento->linha,
             juntar({"é ", elemento->texto, ", mas os itens somam ", formatarMoeda(esperado)}),
             "O documento foi mudado depois de montado, ou um item dado em XML traz "
             "imposto que a biblioteca não soma."});
    }
}

void conferirItem(const NoXml &item, Relatorio &relatorio) {
    const double esperado = ler(item.valor("prod/qCom")) * ler(item.valor("prod/vUnCom"));
    const std::string_view valor = item.valor("prod/vProd");
    if (!diferem(ler(valor), esperado, kCentavo)) return;
    const std::string *numero = item.atributo("nItem");
    relatorio.registrar(
        {"item-valor", juntar({"item ", numero == nullptr ? "?" : *numero, ", vProd"}), item.linha,
         juntar({"é ", valor, ", mas ", item.valor("prod/qCom"), " x ", item.valor("prod/vUnCom"),
                 " são ", formatarMoeda(esperado)}),
         "Corrija o item: vProd é qCom vezes vUnCom, com duas casas."});
}

void conferirFormula(const NoXml &total, Relatorio &relatorio) {
    const double substituicao = ler(total.valor("vST"));
    const double esperado = ler(total.valor("vProd")) + ler(total.valor("vOutro")) -
                            (ler(total.valor("vDesc")) + substituicao);
    if (diferem(ler(total.valor("vNF")), esperado))
        relatorio.registrar(
            {"total-formula", "total/ICMSTot/vNF", total.linha,
             juntar({"é ", total.valor("vNF"), ", mas vProd + vOutro - (vDesc + vST) são ",
                     formatarMoeda(esperado)}),
             "O documento foi mudado depois de montado; emita-o de novo."});
    if (substituicao > 0)
        relatorio.registrar(
            {"total-substituicao", "total/ICMSTot/vST", total.linha,
             juntar({"é ", total.valor("vST"), ": a biblioteca o subtrai de vNF, a SEFAZ o soma"}),
             "Confirme com o contador se a nota será aceita (rejeição 610)."});
}

} // namespace

void conferirTotais(const NoXml &infNFe, Relatorio &relatorio) {
    const auto itens = filhos(infNFe, "det");
    if (itens.empty())
        relatorio.registrar({"elemento-ausente", "det", infNFe.linha, "não há nenhum item",
                             "O documento foi cortado ou mudado; emita-o de novo."});
    for (const NoXml *item : itens)
        conferirItem(*item, relatorio);

    const NoXml *totais = infNFe.filho("total");
    const NoXml *total = totais != nullptr ? totais->filho("ICMSTot") : nullptr;
    if (total == nullptr) {
        relatorio.registrar(
            {"elemento-ausente", "total/ICMSTot", infNFe.linha,
             "falta: o leiaute o exige, também numa nota só de serviços",
             "Venda os serviços numa nota que termine com uma mercadoria, ou fora da "
             "NFC-e."});
        return;
    }
    conferirSomas(itens, *total, relatorio);
    conferirFormula(*total, relatorio);

    double pago = 0;
    for (const NoXml *pagamento : filhos(infNFe, "pag"))
        pago += ler(pagamento->valor("vPag"));
    if (diferem(pago, ler(total->valor("vNF"))))
        relatorio.registrar({"pagamento-difere", "pag", total->linha,
                             juntar({"os pagamentos somam ", formatarMoeda(pago), ", o total é ",
                                     total->valor("vNF")}),
                             "O documento foi mudado depois de montado; emita-o de novo."});
}

} // namespace zel::aplicativo
