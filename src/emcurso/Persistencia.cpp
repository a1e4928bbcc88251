// SPDX-License-Identifier: MIT
#include "emcurso/Persistencia.h"

#include "recusa/Recusa.h"
#include "texto/Numero.h"
#include "zel_felbor/codigos.h"

namespace zel {

int ST_PersitenceXML_ZEL::fnAdicionarTagZEL(Secao secao, ST_tagZEL raiz) {
    if (!vendas) vendas.emplace().reserve(kMaximoItens);
    if (!pagamentos) pagamentos.emplace();
    switch (secao) {
    case Secao::kAbertura:
        abertura = std::move(raiz);
        break;
    case Secao::kVenda:
        vendas->push_back(std::move(raiz));
        break;
    case Secao::kTotalizacao:
        totalizacao = std::move(raiz);
        break;
    case Secao::kPagamento:
        pagamentos->push_back(std::move(raiz));
        break;
    case Secao::kTransporte:
        transporte = std::move(raiz);
        break;
    case Secao::kEncerramento:
        encerramento = std::move(raiz);
        break;
    }
    return ZEL_OK;
}

int ST_PersitenceXML_ZEL::removerItem(int numero) {
    if (!vendas) return recusar(Motivo::kSemLista);
    const int indice = numero == 0 ? quantidadeItens() - 1 : numero - 1;
    if (indice < 0 || indice >= quantidadeItens())
        return recusar(Motivo::kItemForaDaLista, {.maximo = quantidadeItens(), .numero = numero});
    auto seguinte = vendas->erase(vendas->begin() + indice);
    for (; seguinte != vendas->end(); ++seguinte)
        seguinte->setValor(formatarInteiro(lerInteiro(seguinte->valor.value_or("")) - 1));
    return ZEL_OK;
}

void ST_PersitenceXML_ZEL::fnLimpar() {
    *this = {};
}

ST_tagZEL *ST_PersitenceXML_ZEL::item(int numero) {
    if (numero < 1 || numero > quantidadeItens()) return nullptr;
    return &(*vendas)[static_cast<std::size_t>(numero - 1)];
}

} // namespace zel
