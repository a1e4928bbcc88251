// SPDX-License-Identifier: MIT
#include "negocio/AjusteItem.h"

#include "config/Registro.h"
#include "emcurso/ArquivoPersistencia.h"
#include "emcurso/ZEL_Controle.h"
#include "negocio/Argumento.h"
#include "recusa/Recusa.h"
#include "secao/Moldes.h"
#include "texto/Latin1.h"
#include "texto/Numero.h"
#include "zel_felbor/codigos.h"

#include <string>

namespace zel {

namespace {

constexpr std::string_view elementoDo(Ajuste ajuste) {
    return ajuste == Ajuste::kDesconto ? "vDesc" : "vOutro";
}

// In the words of the log (ISO-8859-1).
constexpr std::string_view nomeDo(Ajuste ajuste) {
    return ajuste == Ajuste::kDesconto ? "desconto" : "acréscimo"_l1;
}

int recusarItemNegativo(int item) {
    return recusar(Motivo::kItemNegativo, {.numero = item});
}

int estadoPermite() {
    return fnCFVerificarStatus_ZEL() == kVendendo ? int{ZEL_OK}
                                                  : recusarNoEstado(Motivo::kAjusteForaDoEstado);
}

int temDocumento(const ST_PersitenceXML_ZEL &documento) {
    return documento.temListaDeVendas() ? int{ZEL_OK} : recusarSemDocumento();
}

double numeroDe(const ST_tagZEL &prod, std::string_view nome) {
    return lerDecimal(prod.valorDe(nome));
}

int ajusteAceito(int item, std::string_view tipo, std::string_view valor) {
    if (const int presentes = exigirTextos({{"tipo", tipo}, {"valor", valor}}); presentes != ZEL_OK)
        return presentes;
    if (item < 0) return recusarItemNegativo(item);
    return lerDecimal(argumentoDecimal(valor)) < 0 ? recusarNegativo("valor", valor) : int{ZEL_OK};
}

// Runs a change of one item, 0 for the last one, and saves the document; the item is as before when
// either fails.
template <class Mudanca>
int mudarItem(ST_PersitenceXML_ZEL &documento, int item, Mudanca mudanca) {
    const int ultimo = documento.quantidadeItens();
    const int numero = item == 0 ? ultimo : item;
    ST_tagZEL *tag = documento.item(numero);
    if (tag == nullptr)
        return recusar(Motivo::kItemInexistente, {.maximo = ultimo, .numero = item});
    ST_tagZEL *prod = tag->getSubTag("prod");
    if (prod == nullptr) return recusar(Motivo::kItemSemProduto, {.numero = numero});
    Mudancas mudancas;
    return ouDesfaz(
        [&] {
            const int resultado = mudanca(ItemVendido{numero, *tag, *prod}, mudancas);
            return resultado == ZEL_OK ? fnPersistEstrutura_ZEL(documento) : resultado;
        },
        [&] { mudancas.desfazer(); });
}

int removerAjusteESalvar(ST_PersitenceXML_ZEL &documento, Ajuste ajuste, int item) {
    if (const int estado = estadoPermite(); estado != ZEL_OK) return estado;
    if (item < 0) return recusarItemNegativo(item);
    if (const int resultado = temDocumento(documento); resultado != ZEL_OK) return resultado;
    return mudarItem(documento, item, [&](const ItemVendido &vendido, Mudancas &mudancas) {
        return removerAjuste(vendido, ajuste, mudancas);
    });
}

int reduzirQuantidade(const ItemVendido &item, double quantidade, Mudancas &mudancas) {
    const double vendida = numeroDe(item.prod, "qCom");
    if (quantidade >= vendida)
        return recusar(Motivo::kCancelamentoExcessivo, {.quantia = quantidade, .limite = vendida});
    // Two decimals from here on, where the sale wrote four.
    const std::string nova = formatarMoeda(vendida - quantidade);
    const double bruto = lerDecimal(nova) * numeroDe(item.prod, "vUnCom");
    const std::string valor = formatarMoeda(fnArredondarTruncar(bruto));
    for (const auto &[nome, texto] :
         {std::pair<std::string_view, const std::string &>{"qCom", nova},
          {"qTrib", nova},
          {"vProd", valor}})
        if (ST_tagZEL *tag = item.prod.getSubTag(nome)) mudancas.trocarValor(*tag, texto);
    return fnAtualizar_TagImposto(item.tag, nova, "", "", mudancas);
}

} // namespace

int fnCFLancarDescontoItem_ZEL_Felbor(ST_PersitenceXML_ZEL &documento, int item,
                                      std::string_view tipo, std::string_view valor) {
    if (const int estado = estadoPermite(); estado != ZEL_OK) return estado;
    if (const int resultado = temDocumento(documento); resultado != ZEL_OK) return resultado;
    if (const int resultado = ajusteAceito(item, tipo, valor); resultado != ZEL_OK)
        return resultado;
    return mudarItem(documento, item, [&](const ItemVendido &vendido, Mudancas &mudancas) {
        return lancarAjuste(vendido, Ajuste::kDesconto, tipo, valor, mudancas);
    });
}

// As the discount, except that the arguments are looked at before the document.
int fnCFLancarAcrescimoItem_ZEL_Felbor(ST_PersitenceXML_ZEL &documento, int item,
                                       std::string_view tipo, std::string_view valor) {
    if (const int estado = estadoPermite(); estado != ZEL_OK) return estado;
    if (const int resultado = ajusteAceito(item, tipo, valor); resultado != ZEL_OK)
        return resultado;
    if (const int resultado = temDocumento(documento); resultado != ZEL_OK) return resultado;
    return mudarItem(documento, item, [&](const ItemVendido &vendido, Mudancas &mudancas) {
        return lancarAjuste(vendido, Ajuste::kAcrescimo, tipo, valor, mudancas);
    });
}

int fnCFCancelarItem_ZEL_Felbor(ST_PersitenceXML_ZEL &documento, int item) {
    if (const int estado = estadoPermite(); estado != ZEL_OK) return estado;
    if (const int resultado = temDocumento(documento); resultado != ZEL_OK) return resultado;
    if (item < 1) return recusar(Motivo::kItemMenorQueUm, {.numero = item});
    return desfazendoNaFalha(documento.vendas, [&] {
        const int resultado = documento.removerItem(item);
        return resultado == ZEL_OK ? fnPersistEstrutura_ZEL(documento) : resultado;
    });
}

int fnCFCancelarItemParcial_ZEL_Felbor(ST_PersitenceXML_ZEL &documento, int item,
                                       std::string_view quantidade) {
    if (const int estado = estadoPermite(); estado != ZEL_OK) return estado;
    const double cancelada = lerDecimal(argumentoDecimal(quantidade));
    if (const int presente = exigirTextos({{"quantidade", quantidade}}); presente != ZEL_OK)
        return presente;
    if (item < 0) return recusarItemNegativo(item);
    if (cancelada < 0) return recusarNegativo("quantidade", quantidade);
    if (const int resultado = temDocumento(documento); resultado != ZEL_OK) return resultado;
    return mudarItem(documento, item, [&](const ItemVendido &vendido, Mudancas &mudancas) {
        return reduzirQuantidade(vendido, cancelada, mudancas);
    });
}

int fnCFCancelarDescontoItem_ZEL_Felbor(ST_PersitenceXML_ZEL &documento, int item) {
    return removerAjusteESalvar(documento, Ajuste::kDesconto, item);
}

int fnCFCancelarAcrescimoItem_ZEL_Felbor(ST_PersitenceXML_ZEL &documento, int item) {
    return removerAjusteESalvar(documento, Ajuste::kAcrescimo, item);
}

double valorBruto(const ST_tagZEL &prod) {
    return fnArredondarTruncar(numeroDe(prod, "qCom") * numeroDe(prod, "vUnCom"));
}

int lancarAjuste(const ItemVendido &item, Ajuste ajuste, std::string_view tipo,
                 std::string_view valor, Mudancas &mudancas) {
    for (const Ajuste tem : {Ajuste::kDesconto, Ajuste::kAcrescimo})
        if (item.prod.getSubTag(elementoDo(tem)) != nullptr)
            return recusar(Motivo::kItemJaAjustado, {.campo = nomeDo(tem), .numero = item.numero});

    const std::string texto = argumentoDecimal(valor);
    // The operation says which one it is, whatever the first character.
    const auto forma = lerTipoAjuste(tipo).forma == FormaAjuste::kPercentual
                           ? FormaAjuste::kPercentual
                           : FormaAjuste::kQuantia;
    const double bruto = valorBruto(item.prod);
    const double quantia =
        forma == FormaAjuste::kPercentual ? bruto * lerDecimal(texto) / 100 : lerDecimal(texto);
    if (bruto - quantia <= 0)
        return recusar(Motivo::kAjusteExcessivo, {.quantia = quantia, .limite = bruto});
    // At most one of the two: either stands where the discount has its place.
    mudancas.incluir(item.prod, lugarNoProduto(elementoDo(Ajuste::kDesconto)),
                     ST_tagZEL(elementoDo(ajuste), formatarMoeda(quantia)));
    return fnAtualizar_TagImposto(item.tag, "", escreverTipoAjuste(ajuste, forma), texto, mudancas);
}

int removerAjuste(const ItemVendido &item, Ajuste ajuste, Mudancas &mudancas) {
    if (!mudancas.retirar(item.prod, elementoDo(ajuste)))
        return recusar(Motivo::kNadaARemover, {.campo = nomeDo(ajuste), .numero = item.numero});
    return fnAtualizar_TagImposto(item.tag, "", "", "", mudancas);
}

} // namespace zel
