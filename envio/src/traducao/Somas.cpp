// SPDX-License-Identifier: MIT
#include "traducao/Somas.h"

#include "traducao/Motor.h"

namespace zel::envio {

namespace {

bool entra(const No &det, Quais quais) {
    if (quais == Quais::kTodos) return true;
    const bool servico = static_cast<bool>(det.filho("imposto/ISSQN"));
    return servico == (quais == Quais::kServicos);
}

// vNF = the first ones less the others (Manual de Orientação do Contribuinte 7.0, rule 610).
constexpr std::string_view kSomam[] = {"vProd",  "vST", "vFCPST", "vFrete",   "vSeg",
                                       "vOutro", "vII", "vIPI",   "vIPIDevol"};
constexpr std::string_view kDiminuem = "vDesc";

std::string porQueDifere(const No &icmsTot, Centavos cobrado, Centavos vNF) {
    std::string motivo = "o caixa cobrou " + textoDe(cobrado) + ", os itens somam " + textoDe(vNF);
    const std::string vST = textoDe(centavosDe(icmsTot.filho("vST")));
    const std::string vFCPST = textoDe(centavosDe(icmsTot.filho("vFCPST")));
    if (vFCPST != "0.00") motivo += ", com vFCPST " + vFCPST + ": tire pFCPST de zel-envio.toml";
    if (vST != "0.00")
        motivo += ", com vST " + vST +
                  ", que o caixa diminui em vez de somar: configure no caixa o ICMS retido antes "
                  "(ICMS60 ou ICMSSN500)";
    if (vST == "0.00" && vFCPST == "0.00") motivo += ": o total não é o dos itens; venda de novo";
    return motivo;
}

} // namespace

Centavos valorEm(const No &no, std::string_view caminho) {
    const std::size_t barra = caminho.find('/');
    const std::string_view nome = caminho.substr(0, barra);
    const auto filhos = no.filhos(nome == "*" ? std::string_view() : nome);
    if (filhos.empty()) return 0;
    return barra == caminho.npos ? centavosDe(filhos.front())
                                 : valorEm(filhos.front(), caminho.substr(barra + 1));
}

Centavos somar(const No &infNFe, std::string_view caminho, Quais quais) {
    const bool produtos = caminho == "prod/vProd";
    Centavos soma = 0;
    for (const No &det : infNFe.filhos("det")) {
        if (!entra(det, quais)) continue;
        if (produtos && det.texto("prod/indTot") == "0") continue; // W07: indTot 1 alone
        soma += valorEm(det, caminho);
    }
    return soma;
}

std::optional<std::string> valorDaNota(const Lugar &icmsTot) {
    Centavos valor = somar(icmsTot.contexto.nova, "prod/vProd", Quais::kServicos);
    for (const std::string_view nome : kSomam)
        valor += centavosDe(icmsTot.novo.filho(nome));
    return textoDe(valor - centavosDe(icmsTot.novo.filho(kDiminuem)));
}

void conferirCobrado(const Lugar &total) {
    const No icmsTot = total.novo.filho("ICMSTot");
    const No escrito = icmsTot.filho("vNF");
    const std::string doCaixa = total.antigo.texto("ICMSTot/vNF");
    Centavos cobrado = 0;
    if (!doCaixa.empty()) {
        const auto lido = Decimal::ler(doCaixa);
        const auto centavos = lido ? lido->centavos() : std::nullopt;
        if (!centavos) {
            recusar(total, "ICMSTot/vNF", doCaixa,
                    permitido(kTDec_1302) + "; corrija " + std::string(kDoDocumento));
            return;
        }
        cobrado = *centavos;
    } else {
        for (const No &pag : total.contexto.antiga.filhos("pag"))
            cobrado += centavosDe(pag.filho("vPag"));
    }
    if (!escrito || total.contexto.somasIncertas) return;
    const Centavos vNF = centavosDe(escrito);
    if (vNF == cobrado) return;
    recusar(total, "ICMSTot/vNF", textoDe(cobrado), porQueDifere(icmsTot, cobrado, vNF));
    total.contexto.somasIncertas = true;
}

} // namespace zel::envio
