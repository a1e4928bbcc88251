#include "negocio/Rateio.h"

#include "ZEL_FelborFramework.h"
#include "documento/ZEL_Persistencia.h"
#include "negocio/AjusteItem.h"
#include "negocio/Argumento.h"
#include "util/Numero.h"

#include <cmath>
#include <string>
#include <vector>

namespace zel {

namespace {

// One item's part in the prorating.
struct ST_StructItemAux {
    int item;       // its number in the document, from 1
    double bruto;   // quantity x unit price, unrounded
    double parcela; // its share, as written
    bool temAcrescimo, temDesconto;
    double ajuste; // the surcharge or discount that it has already
};

std::vector<ST_StructItemAux> listarItens() {
    std::vector<ST_StructItemAux> lista;
    for (int item = 1; item <= G_stXML_Persistencia.quantidadeItens(); ++item) {
        const ST_tagZEL *prod = G_stXML_Persistencia.item(item)->getSubTag("prod");
        if (prod == nullptr) continue;
        const bool acrescimo = prod->getSubTag("vOutro") != nullptr;
        const bool desconto = !acrescimo && prod->getSubTag("vDesc") != nullptr;
        lista.push_back(
            {item, lerDecimal(prod->valorDe("qCom")) * lerDecimal(prod->valorDe("vUnCom")), 0,
             acrescimo, desconto, lerDecimal(prod->valorDe(acrescimo ? "vOutro" : "vDesc"))});
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

// What the item would carry afterwards must stay below its gross value, a surcharge too.
bool cabe(const ST_StructItemAux &parte, char operacao) {
    if (parte.temAcrescimo) {
        if (operacao == 'A') return parte.bruto - (parte.ajuste + parte.parcela) > 0;
        if (operacao == 'D') return parte.bruto - (parte.ajuste - parte.parcela) > 0;
        return true;
    }
    if (parte.temDesconto) {
        if (operacao == 'D') return parte.bruto - (parte.ajuste + parte.parcela) > 0;
        if (operacao == 'A') return parte.bruto - (parte.parcela - parte.ajuste) > 0;
        return true;
    }
    return parte.bruto - parte.parcela > 0;
}

// Replaces the item's adjustment by the net one. One that the receipt's adjustment cancels out
// goes; otherwise even a share of zero is written. Results are not looked at.
void aplicar(const ST_StructItemAux &parte, char operacao) {
    const double sinal = operacao == 'A' ? 1 : -1;
    const double atual = parte.temAcrescimo ? parte.ajuste : parte.temDesconto ? -parte.ajuste : 0;
    const double liquido = emCentavos(atual + sinal * parte.parcela);
    if (parte.temAcrescimo) removerAjuste(Ajuste::kAcrescimo, parte.item);
    if (parte.temDesconto) removerAjuste(Ajuste::kDesconto, parte.item);
    const bool contrario = operacao == 'A' ? parte.temDesconto : parte.temAcrescimo;
    if (contrario && liquido == 0) return;
    const bool acrescimo = liquido != 0 ? liquido > 0 : operacao == 'A';
    lancarAjuste(acrescimo ? Ajuste::kAcrescimo : Ajuste::kDesconto, parte.item,
                 acrescimo ? "A$" : "D$", formatarMoeda(std::abs(liquido)));
}

} // namespace

int fnRatearDescAcresTotalizacao(std::string_view tipo, std::string_view valor) {
    const double numero = lerDecimal(argumentoDecimal(valor));
    if (!(numero > 0)) return ZEL_OK;
    const char operacao = tipo.empty() ? '\0' : tipo[0];
    const char forma = tipo.size() > 1 ? tipo[1] : '\0';

    std::vector<ST_StructItemAux> lista = listarItens();
    double bruto = 0;
    for (const ST_StructItemAux &parte : lista)
        bruto += parte.bruto;
    if (bruto == 0) return ZEL_AJUSTE_EXCESSIVO;

    const double taxa = forma == '%' ? numero : forma == '$' ? 100 * numero / bruto : 0;
    const double quantia = forma == '%' ? bruto * numero / 100 : forma == '$' ? numero : 0;
    ratear(lista, taxa, quantia);
    for (const ST_StructItemAux &parte : lista)
        if (!cabe(parte, operacao)) return ZEL_AJUSTE_EXCESSIVO;
    if (operacao != 'A' && operacao != 'D') return ZEL_OK;
    for (const ST_StructItemAux &parte : lista)
        aplicar(parte, operacao);
    return ZEL_OK;
}

} // namespace zel
