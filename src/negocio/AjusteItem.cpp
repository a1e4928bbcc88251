// SPDX-License-Identifier: MIT
#include "negocio/AjusteItem.h"

#include "ZEL_FelborFramework.h"
#include "config/Arredondamento.h"
#include "documento/ZEL_ArquivoPersistencia.h"
#include "documento/ZEL_Controle.h"
#include "documento/ZEL_Persistencia.h"
#include "imposto/ZEL_TrataImposto.h"
#include "negocio/Argumento.h"
#include "util/Latin1.h"
#include "util/Numero.h"
#include "util/Recusa.h"

#include <string>

namespace zel {

namespace {

constexpr int kPosicaoDoAjuste = 13; // in the product group, counted from 0

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

int temDocumento() {
    return G_stXML_Persistencia.temListaDeVendas() ? int{ZEL_OK} : recusarSemDocumento();
}

// The item's number with 0 resolved to the last one; 0 when there is no such item.
int numeroDoItem(int item) {
    const int ultimo = G_stXML_Persistencia.quantidadeItens();
    if (item == 0) return ultimo;
    return item <= ultimo ? item : 0;
}

ST_tagZEL *produtoDo(int numero) {
    ST_tagZEL *item = G_stXML_Persistencia.item(numero);
    return item != nullptr ? item->getSubTag("prod") : nullptr;
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

// Runs a change of one item and saves the document; the item is as before when either fails.
template <class Mudanca>
int mudarItem(int item, Mudanca mudanca) {
    ST_tagZEL *alvo = G_stXML_Persistencia.item(numeroDoItem(item));
    if (alvo == nullptr)
        return recusar(Motivo::kItemInexistente,
                       {.maximo = G_stXML_Persistencia.quantidadeItens(), .numero = item});
    return desfazendoNaFalha(*alvo, [&] {
        const int resultado = mudanca();
        return resultado == ZEL_OK ? fnPersistEstrutura_ZEL() : resultado;
    });
}

int removerAjusteESalvar(Ajuste ajuste, int item) {
    if (const int estado = estadoPermite(); estado != ZEL_OK) return estado;
    if (item < 0) return recusarItemNegativo(item);
    if (const int documento = temDocumento(); documento != ZEL_OK) return documento;
    return mudarItem(item, [&] { return removerAjuste(ajuste, item); });
}

int reduzirQuantidade(int item, double quantidade) {
    const int numero = numeroDoItem(item);
    ST_tagZEL *prod = produtoDo(numero);
    if (prod == nullptr) return recusar(Motivo::kItemSemProduto, {.numero = numero});
    const double vendida = numeroDe(*prod, "qCom");
    if (quantidade >= vendida)
        return recusar(Motivo::kCancelamentoExcessivo, {.quantia = quantidade, .limite = vendida});
    // Two decimals from here on, where the sale wrote four.
    const std::string nova = formatarMoeda(vendida - quantidade);
    const double bruto = lerDecimal(nova) * numeroDe(*prod, "vUnCom");
    const std::string valor = formatarMoeda(fnArredondarTruncar(bruto));
    for (const auto &[nome, texto] :
         {std::pair<std::string_view, const std::string &>{"qCom", nova},
          {"qTrib", nova},
          {"vProd", valor}})
        if (ST_tagZEL *tag = prod->getSubTag(nome)) tag->setValor(texto);
    return fnAtualizar_TagImposto(numero, nova, "", "");
}

} // namespace

int fnCFLancarDescontoItem_ZEL_Felbor(int item, std::string_view tipo, std::string_view valor) {
    if (const int estado = estadoPermite(); estado != ZEL_OK) return estado;
    if (const int documento = temDocumento(); documento != ZEL_OK) return documento;
    if (const int resultado = ajusteAceito(item, tipo, valor); resultado != ZEL_OK)
        return resultado;
    return mudarItem(item, [&] { return lancarAjuste(Ajuste::kDesconto, item, tipo, valor); });
}

// As the discount, except that the arguments are looked at before the document.
int fnCFLancarAcrescimoItem_ZEL_Felbor(int item, std::string_view tipo, std::string_view valor) {
    if (const int estado = estadoPermite(); estado != ZEL_OK) return estado;
    if (const int resultado = ajusteAceito(item, tipo, valor); resultado != ZEL_OK)
        return resultado;
    if (const int documento = temDocumento(); documento != ZEL_OK) return documento;
    return mudarItem(item, [&] { return lancarAjuste(Ajuste::kAcrescimo, item, tipo, valor); });
}

int fnCFCancelarItem_ZEL_Felbor(int item) {
    if (const int estado = estadoPermite(); estado != ZEL_OK) return estado;
    if (const int documento = temDocumento(); documento != ZEL_OK) return documento;
    if (item < 1) return recusar(Motivo::kItemMenorQueUm, {.numero = item});
    return desfazendoNaFalha(G_stXML_Persistencia.vendas, [&] {
        const int resultado = G_stXML_Persistencia.removerItem(item);
        return resultado == ZEL_OK ? fnPersistEstrutura_ZEL() : resultado;
    });
}

int fnCFCancelarItemParcial_ZEL_Felbor(int item, std::string_view quantidade) {
    if (const int estado = estadoPermite(); estado != ZEL_OK) return estado;
    const double cancelada = lerDecimal(argumentoDecimal(quantidade));
    if (const int presente = exigirTextos({{"quantidade", quantidade}}); presente != ZEL_OK)
        return presente;
    if (item < 0) return recusarItemNegativo(item);
    if (cancelada < 0) return recusarNegativo("quantidade", quantidade);
    if (const int documento = temDocumento(); documento != ZEL_OK) return documento;
    return mudarItem(item, [&] { return reduzirQuantidade(item, cancelada); });
}

int fnCFCancelarDescontoItem_ZEL_Felbor(int item) {
    return removerAjusteESalvar(Ajuste::kDesconto, item);
}

int fnCFCancelarAcrescimoItem_ZEL_Felbor(int item) {
    return removerAjusteESalvar(Ajuste::kAcrescimo, item);
}

double valorBruto(const ST_tagZEL &prod) {
    return fnArredondarTruncar(numeroDe(prod, "qCom") * numeroDe(prod, "vUnCom"));
}

int lancarAjuste(Ajuste ajuste, int item, std::string_view tipo, std::string_view valor) {
    const int numero = numeroDoItem(item);
    ST_tagZEL *prod = produtoDo(numero);
    if (prod == nullptr) return recusar(Motivo::kItemSemProduto, {.numero = numero});
    for (const Ajuste tem : {Ajuste::kDesconto, Ajuste::kAcrescimo})
        if (prod->getSubTag(elementoDo(tem)) != nullptr)
            return recusar(Motivo::kItemJaAjustado, {.campo = nomeDo(tem), .numero = numero});

    const std::string texto = argumentoDecimal(valor);
    const bool percentual = tipo.size() > 1 && tipo[1] == '%';
    const double bruto = valorBruto(*prod);
    const double quantia = percentual ? bruto * lerDecimal(texto) / 100 : lerDecimal(texto);
    if (bruto - quantia <= 0)
        return recusar(Motivo::kAjusteExcessivo, {.quantia = quantia, .limite = bruto});
    prod->addSubTagAt(kPosicaoDoAjuste, ST_tagZEL(elementoDo(ajuste), formatarMoeda(quantia)));

    // The base follows the operation, whatever the first character of the type given.
    const std::string operacao = std::string(ajuste == Ajuste::kDesconto ? "D" : "A");
    return fnAtualizar_TagImposto(numero, "", operacao + (percentual ? '%' : '$'), texto);
}

int removerAjuste(Ajuste ajuste, int item) {
    const int numero = numeroDoItem(item);
    ST_tagZEL *prod = produtoDo(numero);
    if (prod == nullptr) return recusar(Motivo::kItemSemProduto, {.numero = numero});
    if (!prod->removerSubTag(elementoDo(ajuste)))
        return recusar(Motivo::kNadaARemover, {.campo = nomeDo(ajuste), .numero = numero});
    return fnAtualizar_TagImposto(numero, "", "", "");
}

} // namespace zel
