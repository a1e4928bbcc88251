// SPDX-License-Identifier: MIT
#include "negocio/AjusteItem.h"

#include "ZEL_FelborFramework.h"
#include "config/Arredondamento.h"
#include "documento/ZEL_ArquivoPersistencia.h"
#include "documento/ZEL_Controle.h"
#include "documento/ZEL_Persistencia.h"
#include "imposto/ZEL_TrataImposto.h"
#include "negocio/Argumento.h"
#include "util/Numero.h"

#include <string>

namespace zel {

namespace {

constexpr int kPosicaoDoAjuste = 13; // in the product group, counted from 0

constexpr std::string_view elementoDo(Ajuste ajuste) {
    return ajuste == Ajuste::kDesconto ? "vDesc" : "vOutro";
}

int estadoPermite() {
    return fnCFVerificarStatus_ZEL() == kVendendo ? ZEL_OK : ZEL_ESTADO_INVALIDO;
}

int temDocumento() {
    return G_stXML_Persistencia.temListaDeVendas() ? ZEL_OK : ZEL_ARQUIVO_INDISPONIVEL;
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
    if (tipo.empty() || valor.empty() || item < 0) return ZEL_ARGUMENTO_INVALIDO;
    return lerDecimal(argumentoDecimal(valor)) < 0 ? ZEL_ARGUMENTO_INVALIDO : ZEL_OK;
}

// Runs a change of one item and saves the document; the item is as before when either fails.
template <class Mudanca>
int mudarItem(int item, Mudanca mudanca) {
    ST_tagZEL *alvo = G_stXML_Persistencia.item(numeroDoItem(item));
    if (alvo == nullptr) return ZEL_ITEM_INEXISTENTE;
    return desfazendoNaFalha(*alvo, [&] {
        const int resultado = mudanca();
        return resultado == ZEL_OK ? fnPersistEstrutura_ZEL() : resultado;
    });
}

int removerAjusteESalvar(Ajuste ajuste, int item) {
    if (estadoPermite() != ZEL_OK) return ZEL_ESTADO_INVALIDO;
    if (item < 0) return ZEL_ARGUMENTO_INVALIDO;
    if (temDocumento() != ZEL_OK) return ZEL_ARQUIVO_INDISPONIVEL;
    return mudarItem(item, [&] { return removerAjuste(ajuste, item); });
}

int reduzirQuantidade(int item, double quantidade) {
    const int numero = numeroDoItem(item);
    ST_tagZEL *prod = produtoDo(numero);
    if (prod == nullptr) return ZEL_ITEM_INEXISTENTE;
    const double vendida = numeroDe(*prod, "qCom");
    if (quantidade >= vendida) return ZEL_CANCELAMENTO_EXCESSIVO;
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
    if (estadoPermite() != ZEL_OK) return ZEL_ESTADO_INVALIDO;
    if (temDocumento() != ZEL_OK) return ZEL_ARQUIVO_INDISPONIVEL;
    if (const int resultado = ajusteAceito(item, tipo, valor); resultado != ZEL_OK)
        return resultado;
    return mudarItem(item, [&] { return lancarAjuste(Ajuste::kDesconto, item, tipo, valor); });
}

// As the discount, except that the arguments are looked at before the document.
int fnCFLancarAcrescimoItem_ZEL_Felbor(int item, std::string_view tipo, std::string_view valor) {
    if (estadoPermite() != ZEL_OK) return ZEL_ESTADO_INVALIDO;
    if (const int resultado = ajusteAceito(item, tipo, valor); resultado != ZEL_OK)
        return resultado;
    if (temDocumento() != ZEL_OK) return ZEL_ARQUIVO_INDISPONIVEL;
    return mudarItem(item, [&] { return lancarAjuste(Ajuste::kAcrescimo, item, tipo, valor); });
}

int fnCFCancelarItem_ZEL_Felbor(int item) {
    if (estadoPermite() != ZEL_OK) return ZEL_ESTADO_INVALIDO;
    if (temDocumento() != ZEL_OK) return ZEL_ARQUIVO_INDISPONIVEL;
    if (item < 1) return ZEL_ARGUMENTO_INVALIDO;
    return desfazendoNaFalha(G_stXML_Persistencia.vendas, [&] {
        const int resultado = G_stXML_Persistencia.removerItem(item);
        return resultado == ZEL_OK ? fnPersistEstrutura_ZEL() : resultado;
    });
}

int fnCFCancelarItemParcial_ZEL_Felbor(int item, std::string_view quantidade) {
    if (estadoPermite() != ZEL_OK) return ZEL_ESTADO_INVALIDO;
    const double cancelada = lerDecimal(argumentoDecimal(quantidade));
    if (quantidade.empty() || item < 0 || cancelada < 0) return ZEL_ARGUMENTO_INVALIDO;
    if (temDocumento() != ZEL_OK) return ZEL_ARQUIVO_INDISPONIVEL;
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
    if (prod == nullptr) return ZEL_ITEM_INEXISTENTE;
    if (prod->getSubTag("vDesc") != nullptr || prod->getSubTag("vOutro") != nullptr)
        return ZEL_ITEM_JA_AJUSTADO;

    const std::string texto = argumentoDecimal(valor);
    const bool percentual = tipo.size() > 1 && tipo[1] == '%';
    const double bruto = valorBruto(*prod);
    const double quantia = percentual ? bruto * lerDecimal(texto) / 100 : lerDecimal(texto);
    if (bruto - quantia <= 0) return ZEL_AJUSTE_EXCESSIVO;
    prod->addSubTagAt(kPosicaoDoAjuste, ST_tagZEL(elementoDo(ajuste), formatarMoeda(quantia)));

    // The base follows the operation, whatever the first character of the type given.
    const std::string operacao = std::string(ajuste == Ajuste::kDesconto ? "D" : "A");
    return fnAtualizar_TagImposto(numero, "", operacao + (percentual ? '%' : '$'), texto);
}

int removerAjuste(Ajuste ajuste, int item) {
    const int numero = numeroDoItem(item);
    ST_tagZEL *prod = produtoDo(numero);
    if (prod == nullptr) return ZEL_ITEM_INEXISTENTE;
    if (!prod->removerSubTag(elementoDo(ajuste))) return ZEL_NADA_A_REMOVER;
    return fnAtualizar_TagImposto(numero, "", "", "");
}

} // namespace zel
