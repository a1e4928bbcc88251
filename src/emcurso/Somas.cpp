// SPDX-License-Identifier: MIT
#include "emcurso/Somas.h"

#include "texto/Numero.h"

#include <array>
#include <string_view>

namespace zel {

namespace {

// What an item's ICMS group adds to the totals; a group that is not listed adds nothing. The totals
// are those of the Manual de Orientação do Contribuinte 6.0, Anexo I, group W. "ICMS900" is the
// spelling that is summed, where the layout's group is "ICMSSN900": kept, so that one adds nothing.
struct ParcelaICMS {
    std::string_view grupo;
    bool base, valor, substituicao;
};

constexpr std::array<ParcelaICMS, 12> kParcelasICMS{{
    {"ICMS00", true, true, false},
    {"ICMS10", true, true, true},
    {"ICMS20", true, true, false},
    {"ICMS30", false, false, true},
    {"ICMS40", false, true, false},
    {"ICMS51", true, true, false},
    {"ICMS70", true, true, true},
    {"ICMS90", true, true, true},
    {"ICMSPART", true, true, true},
    {"ICMSSN201", false, false, true},
    {"ICMSSN202", false, false, true},
    {"ICMS900", true, true, true},
}};

constexpr std::array<std::string_view, 4> kGruposPIS{"PISAliq", "PISQtde", "PISOutr", "PISST"};
constexpr std::array<std::string_view, 4> kGruposCOFINS{"COFINSAliq", "COFINSQtde", "COFINSOutr",
                                                        "COFINSST"};

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

void somarICMS(Somas &somas, const ST_tagZEL &icms) {
    for (const ParcelaICMS &parcela : kParcelasICMS) {
        const ST_tagZEL *grupo = icms.getSubTag(parcela.grupo);
        if (grupo == nullptr) continue;
        if (parcela.base) somas.baseICMS += numero(*grupo, "vBC");
        if (parcela.valor) somas.valorICMS += numero(*grupo, "vICMS");
        if (parcela.substituicao) {
            somas.baseST += numero(*grupo, "vBCST");
            somas.valorST += numero(*grupo, "vICMSST");
        }
        return;
    }
}

double somarContribuicao(const ST_tagZEL &imposto, std::string_view tributo,
                         const std::array<std::string_view, 4> &grupos, std::string_view valor) {
    double soma = 0;
    if (const ST_tagZEL *tag = imposto.getSubTag(tributo))
        for (const std::string_view nome : grupos)
            if (const ST_tagZEL *grupo = tag->getSubTag(nome)) soma += numero(*grupo, valor);
    return soma;
}

void somarImposto(Somas &somas, const ST_tagZEL &imposto) {
    const ST_tagZEL *icms = imposto.getSubTag("ICMS");
    const ST_tagZEL *issqn = icms == nullptr ? imposto.getSubTag("ISSQN") : nullptr;
    const double pis = somarContribuicao(imposto, "PIS", kGruposPIS, "vPIS");
    const double cofins = somarContribuicao(imposto, "COFINS", kGruposCOFINS, "vCOFINS");
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
