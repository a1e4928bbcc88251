// SPDX-License-Identifier: MIT
#include "negocio/Pagamento.h"

#include "emcurso/ArquivoPersistencia.h"
#include "emcurso/ZEL_Controle.h"
#include "imposto/Somas.h"
#include "negocio/Argumento.h"
#include "recusa/Recusa.h"
#include "secao/Conformidade.h"
#include "texto/Codigos.h"
#include "texto/Numero.h"
#include "zel_felbor/codigos.h"

#include <vector>

namespace zel {

namespace {

constexpr Chave kTroco = R"(CONFIGURACAO\TrocoUltimaNFCe)"_chave;

std::string codigoDaForma(std::string_view forma) {
    return fnRetornaCodigoFormaPgto(textoSimples(forma));
}

double totalAPagar(const ST_PersitenceXML_ZEL &documento) {
    return lerDecimal(totalDoCupom(documento));
}

// True when the stored payments, in cents, reach the total.
bool totalCoberto(const ST_PersitenceXML_ZEL &documento) {
    return emCentavos(totalPago(documento)) >= totalAPagar(documento);
}

// Saves the payment line last added, with the state that it leads to when it completes the total.
int salvarPagamento(const ST_PersitenceXML_ZEL &documento, std::span<const Alteracao> alteracoes) {
    std::vector<Alteracao> todas(alteracoes.begin(), alteracoes.end());
    if (totalCoberto(documento)) todas.push_back(alteracaoEstado(kPagamento));
    return persistirUltimo(documento, Secao::kPagamento, todas);
}

} // namespace

int fnCFEfetuarPagamento_ZEL_Felbor(ST_PersitenceXML_ZEL &documento, std::string_view forma,
                                    std::string_view valor) {
    if (const int resultado = fnVerificarSePosso_ZEL(Operacao::kPagar); resultado != ZEL_OK)
        return resultado;
    if (!documento.temListaDeVendas()) return recusarSemDocumento();
    const double dado = lerDecimal(argumentoDecimal(valor));
    if (dado < 0) return recusarNegativo("valor", valor);
    if (const int resultado = fnXML_CarregarXML_ZEL(); resultado != ZEL_OK) return resultado;

    const double total = totalAPagar(documento);
    const double pago = totalPago(documento);
    Alteracao troco{kTroco, "0"};
    if (totalCoberto(documento)) {
        const int resultado = alterarConfig({&troco, 1});
        return resultado == ZEL_OK ? recusar(Motivo::kJaPago, {.quantia = pago, .limite = total})
                                   : resultado;
    }
    double pagamento = emCentavos(dado);
    const double resto = total - pago;
    // A change that is binary dust is no change.
    const double excesso = pagamento == 0 ? 0 : emCentavos(pagamento + pago - total);
    if (excesso > 0) troco.valor = formatarMoeda(excesso);
    if (troco.valor.size() > stZELTAGs[kTroco.indice].tamanho)
        return recusar(Motivo::kTrocoGrande, {.campo = "valor", .dado = valor});
    // Not what was given less the change: of a large number there are no cents left.
    if (pagamento == 0 || excesso > 0) pagamento = resto;
    ST_tagZEL pag("pag");
    pag.addSubTag("tPag", codigoDaForma(forma)).addSubTag("vPag", formatarMoeda(pagamento));
    return fnCFeEfetuarPagamentoTAG_ZEL(documento, std::move(pag), {&troco, 1});
}

int fnCFEstornarPagamento_ZEL_Felbor(ST_PersitenceXML_ZEL &documento, std::string_view forma,
                                     std::string_view novaForma, std::string_view valor) {
    if (fnCFVerificarStatus_ZEL() != kPagamento)
        return recusarNoEstado(Motivo::kEstornoForaDoEstado);
    const double procurado = lerDecimal(argumentoDecimal(valor));
    if (const int presentes =
            exigirTextos({{"formaAtual", forma}, {"formaNova", novaForma}, {"valor", valor}});
        presentes != ZEL_OK)
        return presentes;
    if (procurado < 0) return recusarNegativo("valor", valor);
    if (!documento.temListaDeVendas()) return recusarSemDocumento();
    if (!documento.pagamentos) return recusar(Motivo::kSemLista);

    std::vector<ST_tagZEL> &pagamentos = *documento.pagamentos;
    const std::string codigo = codigoDaForma(forma);
    const double troco = lerDecimal(valorConfig(kTroco));
    for (ST_tagZEL &pagamento : pagamentos) {
        const bool ultimo = &pagamento == &pagamentos.back();
        const std::string texto = formatarMoeda(ultimo ? procurado - troco : procurado);
        ST_tagZEL *pag = pagamento.getSubTag(0);
        if (pag == nullptr || pag->valorDe("tPag") != codigo || pag->valorDe("vPag") != texto)
            continue;
        return desfazendoNaFalha(pagamento, [&] {
            pag->getSubTag("tPag")->setValor(codigoDaForma(novaForma));
            return fnPersistEstrutura_ZEL(documento);
        });
    }
    return recusar(Motivo::kPagamentoInexistente, {.campo = codigo, .dado = valor});
}

int fnCFeEfetuarPagamentoTAG_ZEL(ST_PersitenceXML_ZEL &documento, ST_tagZEL pag,
                                 std::span<const Alteracao> alteracoes) {
    ST_tagZEL raiz = newST_tagZEL(false, nomeSecao(Secao::kPagamento));
    raiz.addSubTag(std::move(pag));
    if (const int resultado = verificarSecao(Secao::kPagamento, raiz); resultado != ZEL_OK)
        return resultado;
    const auto &pagamentos = documento.pagamentos;
    const std::size_t sequencia = pagamentos ? pagamentos->size() : 0;
    raiz.valor = formatarInteiro(static_cast<long long>(sequencia), 3);
    documento.fnAdicionarTagZEL(Secao::kPagamento, std::move(raiz));
    return ouDesfaz([&] { return salvarPagamento(documento, alteracoes); },
                    [&] { documento.pagamentos->pop_back(); });
}

} // namespace zel
