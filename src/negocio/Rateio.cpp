// SPDX-License-Identifier: MIT
#include "negocio/Rateio.h"

#include "negocio/AjusteItem.h"
#include "negocio/Argumento.h"
#include "recusa/Recusa.h"
#include "texto/Latin1.h"
#include "texto/Numero.h"
#include "zel_felbor/codigos.h"

#include <cmath>
#include <optional>
#include <string>
#include <vector>

namespace zel {

namespace {

// What the receipt's adjustment is; none for another character in its type.
using Operacao = std::optional<Ajuste>;

// One item's part in the prorating.
struct ST_StructItemAux {
    ItemVendido item;
    double bruto;   // quantity x unit price, unrounded: its weight
    double limite;  // what it carries must stay below
    double parcela; // its share, as written
    bool temAcrescimo, temDesconto;
    double ajuste; // the surcharge or discount that it has already
};

std::vector<ST_StructItemAux> listarItens(ST_PersitenceXML_ZEL &documento) {
    std::vector<ST_StructItemAux> lista;
    for (int numero = 1; numero <= documento.quantidadeItens(); ++numero) {
        ST_tagZEL &item = *documento.item(numero);
        ST_tagZEL *prod = item.getSubTag("prod");
        if (prod == nullptr) continue;
        const bool acrescimo = prod->getSubTag("vOutro") != nullptr;
        const bool desconto = !acrescimo && prod->getSubTag("vDesc") != nullptr;
        lista.push_back({{numero, item, *prod},
                         lerDecimal(prod->valorDe("qCom")) * lerDecimal(prod->valorDe("vUnCom")),
                         valorBruto(*prod),
                         0,
                         acrescimo,
                         desconto,
                         lerDecimal(prod->valorDe(acrescimo ? "vOutro" : "vDesc"))});
    }
    return lista;
}

// Fills in the shares; what truncation leaves of the amount goes to the first of the largest.
void ratear(std::vector<ST_StructItemAux> &lista, double taxa, double quantia) {
    double soma = 0;
    ST_StructItemAux *maior = nullptr;
    for (ST_StructItemAux &parte : lista) {
        parte.parcela = emCentavos(std::trunc(100 * (parte.bruto * taxa / 100)) / 100);
        soma += parte.parcela;
        if (parte.parcela > (maior != nullptr ? maior->parcela : 0)) maior = &parte;
    }
    if (maior != nullptr && quantia > soma)
        maior->parcela = emCentavos(maior->parcela + (quantia - soma));
}

// What the item carries afterwards: a surcharge, or below zero a discount.
double liquido(const ST_StructItemAux &parte, Operacao operacao) {
    const double atual = parte.temAcrescimo ? parte.ajuste : parte.temDesconto ? -parte.ajuste : 0;
    return emCentavos(operacao == Ajuste::kAcrescimo ? atual + parte.parcela
                                                     : atual - parte.parcela);
}

// True when the receipt's adjustment takes the item's own away and leaves nothing.
bool anula(const ST_StructItemAux &parte, Operacao operacao) {
    const bool contrario = operacao == Ajuste::kAcrescimo ? parte.temDesconto : parte.temAcrescimo;
    return contrario && liquido(parte, operacao) == 0;
}

bool temAjuste(const ST_StructItemAux &parte) {
    return parte.temAcrescimo || parte.temDesconto;
}

// A surcharge must stay below the item's gross value, too. Where nothing can be lost, with an
// adjustment of another kind or a share of nothing on an item without one, the unrounded value
// decides.
bool cabe(const ST_StructItemAux &parte, Operacao operacao) {
    const bool escrita = operacao.has_value();
    if (!temAjuste(parte) && (!escrita || parte.parcela == 0)) return parte.bruto > parte.parcela;
    if (!escrita) return true;
    return anula(parte, operacao) || std::abs(liquido(parte, operacao)) < parte.limite;
}

int recusarParte(const ST_StructItemAux &parte, Operacao operacao) {
    // The share may be of nothing.
    if (temAjuste(parte))
        return recusar(Motivo::kRateioSobreAjuste,
                       {.campo = parte.temDesconto ? "desconto" : "acréscimo"_l1,
                        .numero = parte.item.numero,
                        .quantia = std::abs(liquido(parte, operacao)),
                        .limite = parte.limite});
    return recusar(Motivo::kRateioExcessivo,
                   {.numero = parte.item.numero, .quantia = parte.parcela, .limite = parte.limite});
}

// Replaces the item's adjustment by the net one, even by one of zero when it had none. 1 or the
// code of the change that the item refuses.
int aplicar(const ST_StructItemAux &parte, Operacao operacao, Mudancas &mudancas) {
    int resultado = ZEL_OK;
    if (parte.temAcrescimo) resultado = removerAjuste(parte.item, Ajuste::kAcrescimo, mudancas);
    if (parte.temDesconto) resultado = removerAjuste(parte.item, Ajuste::kDesconto, mudancas);
    if (resultado != ZEL_OK || anula(parte, operacao)) return resultado;
    const double valor = liquido(parte, operacao);
    const bool acrescimo = valor != 0 ? valor > 0 : operacao == Ajuste::kAcrescimo;
    const Ajuste ajuste = acrescimo ? Ajuste::kAcrescimo : Ajuste::kDesconto;
    return lancarAjuste(parte.item, ajuste, escreverTipoAjuste(ajuste, FormaAjuste::kQuantia),
                        formatarMoeda(std::abs(valor)), mudancas);
}

// The same for an item that has its share. One without an adjustment that does not take a share of
// nothing, for it rounds to nothing itself, stays as it was.
int aplicarParcela(const ST_StructItemAux &parte, Operacao operacao, Mudancas &mudancas) {
    if (temAjuste(parte) || parte.parcela != 0) return aplicar(parte, operacao, mudancas);
    const std::size_t antes = mudancas.quantas();
    if (aplicar(parte, operacao, mudancas) != ZEL_OK) mudancas.desfazer(antes);
    return ZEL_OK;
}

} // namespace

int fnRatearDescAcresTotalizacao(ST_PersitenceXML_ZEL &documento, std::string_view tipo,
                                 std::string_view valor, Mudancas &mudancas) {
    const double numero = lerDecimal(argumentoDecimal(valor));
    if (!(numero > 0)) return ZEL_OK;
    const auto [operacao, forma] = lerTipoAjuste(tipo);

    std::vector<ST_StructItemAux> lista = listarItens(documento);
    double bruto = 0;
    for (const ST_StructItemAux &parte : lista)
        bruto += parte.bruto;
    if (bruto == 0) return recusar(Motivo::kRateioSemValor, {.quantia = numero});

    double taxa = 0, quantia = 0;
    if (forma == FormaAjuste::kPercentual) {
        taxa = numero;
        quantia = bruto * numero / 100;
    } else if (forma == FormaAjuste::kQuantia) {
        taxa = 100 * numero / bruto;
        quantia = numero;
    }
    ratear(lista, taxa, quantia);
    for (const ST_StructItemAux &parte : lista)
        if (!cabe(parte, operacao)) return recusarParte(parte, operacao);
    if (!operacao) return ZEL_OK;
    for (const ST_StructItemAux &parte : lista)
        if (aplicarParcela(parte, operacao, mudancas) != ZEL_OK)
            return recusarParte(parte, operacao);
    return ZEL_OK;
}

} // namespace zel
