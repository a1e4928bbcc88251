// SPDX-License-Identifier: MIT
#include "conferencia/ConferenciaDocumento.h"

#include "comum/Digitos.h"
#include "leitura/Chaves.h"
#include "leitura/Texto.h"

#include <algorithm>
#include <string>
#include <vector>

namespace zel::aplicativo {

namespace {

// What the authority wants to read in a document without fiscal value, its rejections 373 and 598.
constexpr std::string_view kPrimeiroItem =
    "NOTA FISCAL EMITIDA EM AMBIENTE DE HOMOLOGACAO - SEM VALOR FISCAL";
constexpr std::string_view kConsumidor =
    "NF-E EMITIDA EM AMBIENTE DE HOMOLOGACAO - SEM VALOR FISCAL";

// The first digit of a CFOP, by where the goods go (idDest 1 to 3): Convênio s/nº of 15 December
// 1970, annex of the codes of operations, exits.
constexpr std::string_view kCfops = "567";

std::string_view numeroDe(const NoXml &item) {
    const std::string *numero = item.atributo("nItem");
    return numero == nullptr ? std::string_view("?") : *numero;
}

// What the authority's schema, or its rules, refuse and sums do not show.
class Conferencia {
public:
    Conferencia(const NoXml &infNFe, Relatorio &relatorio)
        : infNFe_(infNFe), relatorio_(relatorio) {}

    void fazer() {
        for (const NoXml &item : infNFe_.filhos) {
            if (item.nome != "det") continue;
            conferirTextos(item);
            conferirGtin(item);
            conferirNcm(item);
            conferirCfop(item);
            conferirValores(item);
            if (item.valor("prod/NCM") == procurarChave(R"(PROD\NCM)")->padrao)
                deFabrica_.push_back(numeroDe(item));
        }
        conferirNcmDeFabrica();
        conferirHomologacao();
    }

private:
    void achar(const IdAchado &id, const NoXml &item, std::string_view caminho, std::string texto,
               std::string remedio) {
        relatorio_.registrar({id, juntar({"item ", numeroDe(item), ", ", caminho}), item.linha,
                              std::move(texto), std::move(remedio)});
    }

    void conferirTextos(const NoXml &item) {
        for (const std::string_view caminho : {"prod/cProd", "prod/xProd", "prod/uCom"}) {
            const std::string_view valor = item.valor(caminho);
            if (!aparar(valor).empty() && !temBrancoNaPonta(valor)) continue;
            achar("valor-brancos", item, caminho,
                  aparar(valor).empty() ? "está em branco" : "tem branco na ponta",
                  "Tire os brancos do começo e do fim no cadastro do produto: a SEFAZ recusa o "
                  "documento.");
        }
    }

    void conferirGtin(const NoXml &item) {
        for (const std::string_view caminho : {"prod/cEAN", "prod/cEANTrib"}) {
            const std::string_view gtin = aparar(item.valor(caminho));
            if (gtin.empty() || ehGtin(gtin)) continue;
            achar("gtin-digito", item, caminho,
                  juntar({gtin, ": o tamanho ou o dígito verificador não confere"}),
                  "Corrija o código de barras no cadastro do produto, ou deixe-o vazio.");
        }
    }

    // 00 is a service.
    void conferirNcm(const NoXml &item) {
        const std::string_view ncm = item.valor("prod/NCM");
        if (ncm.empty() || ncm == "00" || ehNcm(ncm)) return;
        constexpr std::string_view kRemedio =
            "Corrija o NCM no cadastro do produto, ou em PROD\\NCM.";
        if (ncm.size() != 8 || !soDigitos(ncm))
            achar("ncm-tamanho", item, "prod/NCM", juntar({inicio(ncm, 20), ": não tem 8 dígitos"}),
                  std::string(kRemedio));
        else
            achar("ncm-inexistente", item, "prod/NCM", juntar({ncm, ": nenhum NCM começa assim"}),
                  std::string(kRemedio));
    }

    void conferirCfop(const NoXml &item) {
        const std::string_view destino = infNFe_.valor("ide/idDest"),
                               cfop = item.valor("prod/CFOP");
        if (destino.size() != 1 || destino < "1" || destino > "3" || cfop.empty()) return;
        const char primeiro = kCfops[static_cast<std::size_t>(destino[0] - '1')];
        if (cfop.front() == primeiro) return;
        achar("cfop-destino", item, "prod/CFOP",
              juntar({inicio(cfop, 20), ": com idDest ", destino, " o CFOP começa com ",
                      std::string(1, primeiro)}),
              "Corrija o CFOP no cadastro do produto, ou em PROD\\CFOP.");
    }

    void conferirValores(const NoXml &item) {
        const std::string_view quantidade = item.valor("prod/qCom"),
                               valor = item.valor("prod/vProd");
        if (!quantidade.empty() && lerDecimal(quantidade).value_or(0) == 0)
            achar("quantidade-zero", item, "prod/qCom",
                  juntar({inicio(quantidade, 20), ": nada foi vendido"}),
                  "Um texto que não é número vale zero: confira a quantidade antes de vender.");
        else if (!valor.empty() && lerDecimal(valor).value_or(0) == 0)
            achar("valor-zero", item, "prod/vProd",
                  juntar({inicio(valor, 20), ": o item não vale nada"}),
                  "Confira preço e quantidade: o produto deles, arredondado, é zero.");
    }

    void conferirNcmDeFabrica() {
        if (deFabrica_.empty()) return;
        relatorio_.registrar(
            {"ncm-fabrica", "det", infNFe_.linha,
             juntar({deFabrica_.size() == 1 ? "o item " : "os itens ", enumerar(deFabrica_),
                     deFabrica_.size() == 1 ? " leva " : " levam ",
                     procurarChave(R"(PROD\NCM)")->padrao, ", o NCM de fábrica"}),
             "Dê o NCM de cada item ao vender, ou grave o da loja em PROD\\NCM."});
    }

    void conferirHomologacao() {
        if (infNFe_.valor("ide/tpAmb") != "2") return;
        const NoXml *primeiro = infNFe_.filho("det");
        if (primeiro != nullptr && primeiro->valor("prod/xProd") != kPrimeiroItem)
            achar("homologacao-item", *primeiro, "prod/xProd",
                  "em homologação a SEFAZ recusa (373) outra descrição do primeiro item",
                  juntar({"Venda o primeiro item com a descrição ", kPrimeiroItem, "."}));
        const NoXml *destino = infNFe_.filho("dest");
        const std::string_view nome = infNFe_.valor("dest/xNome");
        if (destino != nullptr && !nome.empty() && nome != kConsumidor)
            relatorio_.registrar(
                {"homologacao-consumidor", "dest/xNome", destino->linha,
                 "em homologação a SEFAZ recusa (598) outro nome do consumidor",
                 juntar({"Identifique-o sem nome, ou com o nome ", kConsumidor, "."})});
    }

    const NoXml &infNFe_;
    Relatorio &relatorio_;
    std::vector<std::string_view> deFabrica_; // numbers of items
};

} // namespace

void conferirProdutos(const NoXml &infNFe, Relatorio &relatorio) {
    Conferencia(infNFe, relatorio).fazer();
}

} // namespace zel::aplicativo
