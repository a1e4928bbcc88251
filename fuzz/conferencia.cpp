// SPDX-License-Identifier: MIT
// The readers of the command zel, which look at whatever stands in a directory. What it takes for a
// configuration value must be what the library takes; documents, receipts and items to be sold are
// only looked at.
// The first byte chooses.
#include "Alvo.h"

#include "apoio/ComoABiblioteca.h"
#include "conferencia/ConferenciaConfig.h"
#include "conferencia/ConferenciaDocumento.h"
#include "leitura/Cupom.h"
#include "leitura/Venda.h"

using namespace zel::aplicativo;
using zel::ehDigito;

namespace {

// What is read of a file of items is what the library takes.
void conferirItens(std::string_view texto) {
    std::vector<ItemVenda> itens;
    lerItens(texto, itens);
    exigir(itens.size() <= 999);
    for (const ItemVenda &item : itens) {
        exigir(!item.codigo.empty() && item.codigo.size() <= 60);
        exigir(!item.descricao.empty() && item.descricao.size() <= 120);
        exigir(!item.preco.empty() && item.preco.size() <= 15 && ehDigito(item.preco.back()));
        exigir(item.unidade.size() <= 6 && item.aliquota.size() <= 15 &&
               item.ajuste.tipo.empty() == item.ajuste.valor.empty());
    }
}

} // namespace

void jogar(std::string_view texto) {
    Relatorio relatorio;
    std::string erro;
    switch (tirarNumero(texto, 3)) {
    case 0: {
        const ArquivoConfig config(texto, relatorio);
        exigir(diferencaDaBiblioteca(config, texto).empty());
        if (config.temRaiz()) conferirConfig(config, relatorio);
        break;
    }
    case 1:
        conferirDocumento(texto, "", relatorio);
        break;
    default:
        exigir(lerCupom(texto, erro).has_value() == erro.empty());
        conferirItens(texto);
    }
}
