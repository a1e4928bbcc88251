// SPDX-License-Identifier: MIT
#include "negocio/Venda.h"

#include "config/Registro.h"
#include "emcurso/ArquivoPersistencia.h"
#include "emcurso/ZEL_Controle.h"
#include "imposto/ZEL_TrataImposto.h"
#include "negocio/Argumento.h"
#include "recusa/Recusa.h"
#include "secao/Conformidade.h"
#include "secao/Moldes.h"
#include "secao/Secao.h"
#include "texto/Numero.h"
#include "zel_felbor/codigos.h"

namespace zel {

namespace {

// The numbers of a sale, read once.
struct Numeros {
    std::string quantidade;    // four decimals
    std::string valorUnitario; // as it will stand in the document
    std::string tipo;
    std::string valorAjuste;
    std::string valorBruto; // two decimals
};

// An inline adjustment: element and amount; no element for none.
struct AjusteInline {
    std::string_view nome;
    std::string valor;
};

// ZEL_OK, or ZEL_ARGUMENTO_INVALIDO for a number that no document can carry.
int lerNumeros(const DadosVenda &dados, Numeros &numeros) {
    const double quantidade = lerDecimal(argumentoDecimal(dados.quantidade));
    numeros.quantidade = formatarDecimal(quantidade, 4);
    numeros.valorUnitario = fnRetirarZerosLeft(argumentoDecimal(dados.valorUnitario));
    numeros.tipo = argumentoCortado(dados.tipoAjuste, 2);
    numeros.valorAjuste = argumentoDecimal(dados.valorAjuste);
    if (quantidade < 0) return recusarNegativo("quantidade", dados.quantidade);
    if (lerDecimal(numeros.valorAjuste) < 0)
        return recusarNegativo("valorAjuste", dados.valorAjuste);
    if (!numeros.valorUnitario.empty() && !ehDecimalPuro(numeros.valorUnitario))
        return recusar(Motivo::kNaoEhDecimal,
                       {.campo = "valorUnitario", .dado = dados.valorUnitario});
    const double bruto = lerDecimal(numeros.quantidade) * lerDecimal(numeros.valorUnitario);
    numeros.valorBruto = formatarMoeda(fnArredondarTruncar(bruto));
    return ZEL_OK;
}

// ZEL_OK; ZEL_ARGUMENTO_INVALIDO an amount that is no plain decimal, for its text stands in the
// document as given; ZEL_AJUSTE_EXCESSIVO.
int calcularAjuste(const Numeros &numeros, AjusteInline &ajuste) {
    const double valor = lerDecimal(numeros.valorAjuste);
    const auto [operacao, forma] = lerTipoAjuste(numeros.tipo);
    if (valor == 0 || !operacao || !forma) return ZEL_OK;
    const double bruto = lerDecimal(numeros.valorBruto);
    if (forma == FormaAjuste::kQuantia && !ehDecimalPuro(numeros.valorAjuste))
        return recusar(Motivo::kNaoEhDecimal,
                       {.campo = "valorAjuste", .dado = numeros.valorAjuste});
    // Spelt so where an item is sold; the section check gives it the layout's spelling, "vDesc".
    ajuste.nome = operacao == Ajuste::kDesconto ? "Vdesc" : "vOutro";
    ajuste.valor = forma == FormaAjuste::kPercentual ? formatarMoeda(bruto * valor / 100)
                                                     : numeros.valorAjuste;
    // The surcharge is held to the same bound as the discount.
    const double quantia = lerDecimal(ajuste.valor);
    return bruto - quantia <= 0
               ? recusar(Motivo::kAjusteExcessivo, {.quantia = quantia, .limite = bruto})
               : int{ZEL_OK};
}

// Cut to `maximo` characters, more than the section allows, so that what is longer is refused
// there.
std::string ouConfigurado(std::string_view argumento, std::size_t maximo, Chave chave) {
    const std::string simples = argumentoCortado(argumento, maximo);
    return simples.empty() ? valorXml(valorConfig(chave)) : escaparXml(simples);
}

ST_tagZEL montarProduto(const DadosVenda &dados, const Numeros &numeros,
                        const AjusteInline &ajuste) {
    const std::string unidade = escaparXml(argumentoCortado(dados.unidade, kMaiorUnidade));
    ST_tagZEL prod("prod");
    prod.reservar(elementosDoProduto());
    prod.addSubTag("cProd", escaparXml(argumentoCortado(dados.codigo, kMaiorTexto)))
        .addSubTag("cEAN", " ")
        .addSubTag("xProd", escaparXml(argumentoCortado(dados.descricao, kMaiorDescricao)))
        .addSubTag("NCM", ouConfigurado(dados.ncm, 9, R"(PROD\NCM)"_chave))
        .addSubTag("CFOP", ouConfigurado(dados.cfop, 6, R"(PROD\CFOP)"_chave))
        .addSubTag("uCom", unidade)
        .addSubTag("qCom", numeros.quantidade)
        .addSubTag("vUnCom", numeros.valorUnitario)
        .addSubTag("vProd", numeros.valorBruto)
        .addSubTag("cEANTrib", " ")
        .addSubTag("uTrib", unidade)
        .addSubTag("qTrib", numeros.quantidade)
        .addSubTag("vUnTrib", numeros.valorUnitario);
    if (!ajuste.nome.empty()) prod.addSubTag(ajuste.nome, ajuste.valor);
    prod.addSubTag("indTot", valorXml(valorConfig(R"(PROD\indTot)"_chave)));
    return prod;
}

int podeVender(const ST_PersitenceXML_ZEL &documento) {
    if (documento.quantidadeItens() >= kMaximoItens)
        return recusar(Motivo::kItensDemais, {.numero = kMaximoItens});
    if (const int resultado = fnVerificarSePosso_ZEL(Operacao::kVender); resultado != ZEL_OK)
        return resultado;
    return documento.temListaDeVendas() ? int{ZEL_OK} : recusarSemDocumento();
}

// Adds a checked item to the document and saves it with the state that it leads to.
int guardarItem(ST_PersitenceXML_ZEL &documento, ST_tagZEL item) {
    item.valor = formatarInteiro(documento.quantidadeItens() + 1);
    documento.fnAdicionarTagZEL(Secao::kVenda, std::move(item));
    const Alteracao estado = alteracaoEstado(kVendendo);
    const std::size_t mudancas = G_EstadoCFe == kVendendo ? 0 : 1;
    return ouDesfaz(
        [&] {
            return persistirUltimo(documento, Secao::kVenda, {&estado, mudancas});
        },
        [&] { documento.vendas->pop_back(); });
}

} // namespace

int fnCFVender_ZEL_Felbor(ST_PersitenceXML_ZEL &documento, ST_tagImpostoConfTemp &presets,
                          const DadosVenda &dados) {
    if (const int resultado = fnXML_CarregarXML_ZEL(); resultado != ZEL_OK) return resultado;
    Numeros numeros;
    if (const int resultado = lerNumeros(dados, numeros); resultado != ZEL_OK) return resultado;
    AjusteInline ajuste;
    if (const int resultado = calcularAjuste(numeros, ajuste); resultado != ZEL_OK)
        return resultado;

    const std::string base = fnCalcularValorBC(numeros.quantidade, numeros.valorUnitario,
                                               numeros.tipo, numeros.valorAjuste);
    ST_tagZEL item = newST_tagZEL(false, nomeSecao(Secao::kVenda));
    ST_tagZEL imposto("imposto");
    const int tributado =
        fnTratarImposto(presets, trocarVirgula(argumentoCortado(dados.aliquota, 15)), base,
                        numeros.quantidade, imposto);
    if (tributado != ZEL_OK) return tributado;

    item.addSubTag(montarProduto(dados, numeros, ajuste)).addSubTag(std::move(imposto));
    if (const int resultado = podeVender(documento); resultado != ZEL_OK) return resultado;
    if (const int resultado = verificarSecao(Secao::kVenda, item); resultado != ZEL_OK)
        return resultado;
    if (const int resultado = guardarItem(documento, std::move(item)); resultado != ZEL_OK)
        return resultado;
    ZEL_TIPO_DESC_ACREC = numeros.tipo;
    fnZerarConfTempICMS(presets);
    fnZerarConfTempPIS(presets);
    fnZerarConfTempCONFINS(presets);
    return ZEL_OK;
}

int fnCFVenderXml_ZEL_Felbor(ST_PersitenceXML_ZEL &documento, std::string_view texto) {
    return fnCFeVenderTAG_ZEL(documento, texto);
}

int fnCFeVenderTAG_ZEL(ST_PersitenceXML_ZEL &documento, std::string_view texto) {
    if (const int resultado = podeVender(documento); resultado != ZEL_OK) return resultado;
    ST_tagZEL item;
    if (const int resultado = fnVerificarFormatarTAG_ZEL(Secao::kVenda, texto, item);
        resultado != ZEL_OK)
        return resultado;
    return guardarItem(documento, std::move(item));
}

} // namespace zel
