// SPDX-License-Identifier: MIT
// The readers of the command zel, which look at whatever stands in a directory. What it takes for a
// configuration value must be what the library takes; documents, receipts and items to be sold are
// only looked at.
// The first byte chooses.
#include "Alvo.h"

#include "ArquivoConfig.h"
#include "ConferenciaConfig.h"
#include "ConferenciaDocumento.h"
#include "Cupom.h"
#include "TabelaChaves.h"
#include "Texto.h"
#include "Venda.h"

#include "config/ArquivoConfig.h"
#include "util/TextoXml.h"

using namespace zel::aplicativo;

namespace {

void conferirComoABiblioteca(std::string_view texto) {
    Relatorio relatorio;
    const ArquivoConfig config(texto, relatorio);
    const auto carga = zel::fnXML_CarregarXML(texto, zel::ValoresConfig{});
    exigir(config.temRaiz() == carga.has_value());
    if (!carga) return;
    conferirConfig(config, relatorio);
    for (const LinhaChave &chave : kChaves) {
        // By path there is only one of the key that stands twice.
        if (chave.nome() == "dFab") continue;
        const auto valor = latin1DeUtf8(config[chave.caminho].valor);
        exigir(valor && zel::cortarBytes(*valor, chave.tamanho) ==
                            carga->valores[*zel::procurarChave(chave.caminho)]);
    }
}

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

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *dados, std::size_t tamanho) {
    std::string_view texto = textoDe(dados, tamanho);
    Relatorio relatorio;
    std::string erro;
    switch (tirarNumero(texto, 3)) {
    case 0:
        conferirComoABiblioteca(texto);
        break;
    case 1:
        conferirDocumento(texto, "", relatorio);
        break;
    default:
        exigir(lerCupom(texto, erro).has_value() == erro.empty());
        conferirItens(texto);
    }
    return 0;
}
