// SPDX-License-Identifier: MIT
#include "imposto/Somas.h"

#include "imposto/GruposContribuicao.h"
#include "imposto/GruposICMS.h"
#include "texto/Numero.h"

#include <string_view>

namespace zel {

namespace {

double numero(const ST_tagZEL &grupo, std::string_view nome) {
    return lerDecimal(grupo.valorDe(nome));
}

void somarProduto(Somas &somas, const ST_tagZEL &prod) {
    somas.produtos += numero(prod, "vProd");
    if (prod.getSubTag("vDesc") != nullptr)
        somas.descontos += numero(prod, "vDesc");
    else
        somas.outros += numero(prod, "vOutro");
}

// The totals are those of the Manual de Orientação do Contribuinte 6.0 (September 2015), Anexo I,
// group W. The first group that has something to add is the one that counts.
void somarICMS(Somas &somas, const ST_tagZEL &icms) {
    for (const Grupo &linha : gruposICMS()) {
        const bool base = linha.soma("vBC"), valor = linha.soma("vICMS"),
                   substituicao = linha.soma("vBCST");
        const ST_tagZEL *grupo = icms.getSubTag(linha.somadoComo());
        if (grupo == nullptr || (!base && !valor && !substituicao)) continue;
        if (base) somas.baseICMS += numero(*grupo, "vBC");
        if (valor) somas.valorICMS += numero(*grupo, "vICMS");
        if (substituicao) {
            somas.baseST += numero(*grupo, "vBCST");
            somas.valorST += numero(*grupo, "vICMSST");
        }
        return;
    }
}

double somarContribuicao(const ST_tagZEL &imposto, std::string_view tributo,
                         std::span<const Grupo> grupos, std::string_view valor) {
    double soma = 0;
    if (const ST_tagZEL *tag = imposto.getSubTag(tributo))
        for (const Grupo &linha : grupos) {
            // A group with a row for presets has another of the same name.
            if (linha.fonte == Fonte::kConfTemp || !linha.soma(valor)) continue;
            if (const ST_tagZEL *grupo = tag->getSubTag(linha.somadoComo()))
                soma += numero(*grupo, valor);
        }
    return soma;
}

void somarImposto(Somas &somas, const ST_tagZEL &imposto) {
    const ST_tagZEL *icms = imposto.getSubTag("ICMS");
    const ST_tagZEL *issqn = icms == nullptr ? imposto.getSubTag("ISSQN") : nullptr;
    const double pis = somarContribuicao(imposto, "PIS", gruposPIS(), "vPIS");
    const double cofins = somarContribuicao(imposto, "COFINS", gruposCOFINS(), "vCOFINS");
    if (icms != nullptr) {
        somarICMS(somas, *icms);
        somas.pis += pis;
        somas.cofins += cofins;
        somas.forma = Somas::Forma::kICMS;
    } else if (issqn != nullptr) {
        somas.baseServico += numero(*issqn, "vBC");
        somas.issqn += numero(*issqn, "vISSQN");
        somas.pisServico += pis;
        somas.cofinsServico += cofins;
        somas.forma = Somas::Forma::kISSQN;
    } else {
        somas.forma = Somas::Forma::kNenhuma;
    }
}

} // namespace

Somas somarItens(const ST_PersitenceXML_ZEL &documento) {
    return documento.vendas ? somarItens(*documento.vendas) : Somas{};
}

Somas somarItens(std::span<const ST_tagZEL> itens) {
    Somas somas;
    for (const ST_tagZEL &item : itens) {
        if (const ST_tagZEL *prod = item.getSubTag("prod")) somarProduto(somas, *prod);
        if (const ST_tagZEL *imposto = item.getSubTag("imposto")) somarImposto(somas, *imposto);
    }
    return somas;
}

std::string totalDoCupom(const ST_PersitenceXML_ZEL &documento) {
    if (!documento.totalizacao) return {};
    const ST_tagZEL *total = documento.totalizacao->getSubTag(0);
    const ST_tagZEL *forma = total != nullptr ? total->getSubTag(0) : nullptr;
    if (forma != nullptr && forma->getSubTag("vNF") != nullptr)
        return std::string(forma->valorDe("vNF"));
    return formatarMoeda(somarItens(documento).total());
}

double totalPago(const ST_PersitenceXML_ZEL &documento) {
    double soma = 0;
    if (!documento.pagamentos) return soma;
    for (const ST_tagZEL &pagamento : *documento.pagamentos)
        if (const ST_tagZEL *pag = pagamento.getSubTag(0)) soma += numero(*pag, "vPag");
    return soma;
}

} // namespace zel
