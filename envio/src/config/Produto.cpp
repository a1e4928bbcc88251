// SPDX-License-Identifier: MIT
#include "config/Configuracao.h"

namespace zel::envio {

namespace {

bool falta(const std::string &membro) {
    return membro.empty();
}
bool falta(const std::optional<Decimal> &membro) {
    return !membro;
}

// What is missing in `produto` is taken from what is said of more products.
void completar(ConfigProduto &produto, const ConfigProduto &geral) {
    const auto um = [&](auto ConfigProduto::*membro) {
        if (falta(produto.*membro)) produto.*membro = geral.*membro;
    };
    const auto todos = [&](auto... membros) { (um(membros), ...); };
    using P = ConfigProduto;
    todos(&P::CEST, &P::indEscala, &P::CNPJFab, &P::cBenef, &P::pST, &P::vICMSSubstituto, &P::pFCP,
          &P::pFCPST, &P::pFCPSTRet, &P::indISS, &P::indIncentivo, &P::cServico);
    // The two name one class.
    if (produto.CST.empty() && produto.cClassTrib.empty()) todos(&P::CST, &P::cClassTrib);
}

} // namespace

ConfigProduto produtoDe(const Configuracao &config, std::string_view cProd, std::string_view NCM) {
    ConfigProduto produto;
    if (const auto achado = config.produtos.find(cProd); achado != config.produtos.end())
        produto = achado->second;
    for (std::size_t digitos = NCM.size(); digitos > 0; --digitos)
        if (const auto achado = config.ncm.find(NCM.substr(0, digitos)); achado != config.ncm.end())
            completar(produto, achado->second);
    completar(produto, config.padrao);
    return produto;
}

} // namespace zel::envio
