// SPDX-License-Identifier: MIT
// What an item has: product (group I), ICMS (TabelaIcms.h), ISSQN (U), PIS and COFINS (Q to T), and
// IBS and CBS (NT 2025.002, group UB). Manual de Orientação do Contribuinte 7.0, layout 4.00.
#pragma once

#include "traducao/IbsCbs.h"
#include "traducao/Motor.h"
#include "traducao/TabelaIcms.h"

namespace zel::envio::tabela {

using P = ConfigProduto;

inline constexpr Linha kProd[]{
    obr("cProd", texto(1, 60), "I02").no(kDaVenda),
    obr("cEAN", kLivre, "I03").por(regra::gtin),
    obr("xProd", texto(1, 120), "I04, 373").por(regra::xProd).no(kDaVenda),
    obr("NCM", digitos(2, 8), "I05, 777, 778").por(regra::NCM),
    opc("CEST", digitos(7, 7), "I05c").por(regra::CEST),
    opc("indEscala", umDe("S N"), "I05d").configurado(&P::indEscala).se(regra::temCest),
    obr("CNPJFab", kCnpj, "I05e").configurado(&P::CNPJFab).se(regra::semEscala),
    opc("cBenef", texto(8, 10), "I05f, NT 2019.001").configurado(&P::cBenef),
    obr("CFOP", kCfop, "I08").no(kDaVenda),
    obr("uCom", texto(1, 6), "I09").no(kDaVenda),
    obr("qCom", kTDec_1104v, "I10").no(kDaVenda),
    obr("vUnCom", kTDec_1110v, "I10a").no(kDaVenda),
    obr("vProd", kTDec_1302, "I11").no(kDaVenda),
    obr("cEANTrib", kLivre, "I12").por(regra::gtinTrib),
    obr("uTrib", texto(1, 6), "I13").no(kDaVenda),
    obr("qTrib", kTDec_1104v, "I14").no(kDaVenda),
    obr("vUnTrib", kTDec_1110v, "I14a").no(kDaVenda),
    semZero("vFrete", "I15").no(kDaVenda),
    semZero("vSeg", "I16").no(kDaVenda),
    // A sale with its discount may call it Vdesc.
    semZero("vDesc", "I17").de("vDesc|Vdesc").no(kDaVenda),
    semZero("vOutro", "I17a").no(kDaVenda),
    obr("indTot", umDe("0 1"), "I17b").no(kDaVenda),
};

inline constexpr Linha kIssqn[]{
    obr("vBC", kTDec_1302, "U02").no(kDaVenda),
    obr("vAliq", kTDec_0302a04, "U03").no(kDaVenda),
    obr("vISSQN", kTDec_1302, "U04").no(kDaVenda),
    obr("cMunFG", kMunicipio, "U05").no("IMPOSTO\\ISSQN\\cMunFG"),
    obr("cListServ", kLivre, "U06").por(regra::cListServ),
    sai("cSitTrib", "U07 of 3.10"),
    obr("indISS", umDe("1 2 3 4 5 6 7"), "U12").configurado(&P::indISS),
    opc("cServico", texto(1, 20), "U13").configurado(&P::cServico),
    obr("indIncentivo", umDe("1 2"), "U17").configurado(&P::indIncentivo),
};

// PIS and COFINS differ in letters and names alone.
struct Nomes {
    std::string_view aliquota, valor, letra;
    // Keys of the till. In a sale by quantity PIS takes its CST from the key of sales by rate.
    std::string_view cstAliq, cstQtde, cstNt, cstOutr, porUnidade;
};
inline constexpr Nomes kNomesPis{"pPIS",
                                 "vPIS",
                                 "Q",
                                 "IMPOSTO\\PIS\\PISALIQ\\CST",
                                 "IMPOSTO\\PIS\\PISALIQ\\CST",
                                 "IMPOSTO\\PIS\\PISNT\\CST",
                                 "IMPOSTO\\PIS\\PISOUTR\\CST",
                                 "IMPOSTO\\PIS\\PISQTDE\\vAliqProd"};
inline constexpr Nomes kNomesCofins{"pCOFINS",
                                    "vCOFINS",
                                    "S",
                                    "IMPOSTO\\COFINS\\COFINSALIQ\\CST",
                                    "IMPOSTO\\COFINS\\COFINSQTDE\\CST",
                                    "IMPOSTO\\COFINS\\COFINSNT\\CST",
                                    "IMPOSTO\\COFINS\\COFINSOUTR\\CST",
                                    "IMPOSTO\\COFINS\\COFINSQTDE\\vAliqProd"};

template <const Nomes &N>
struct Contribuicao {
    static constexpr Linha kBase = obr("vBC", kTDec_1302, N.letra).no(kDaVenda);
    static constexpr Linha kAliquota = obr(N.aliquota, kTDec_0302a04, N.letra).no(kDaVenda);
    static constexpr Linha kValor = obr(N.valor, kTDec_1302, N.letra).no(kDaVenda);
    static constexpr Linha cst(std::string_view valores, std::string_view chave) {
        return obr("CST", umDe(valores), N.letra).no(chave);
    }
    static constexpr Linha kAliq[]{cst("01 02", N.cstAliq), kBase, kAliquota, kValor};
    static constexpr Linha kQtde[]{cst("03", N.cstQtde),
                                   obr("qBCProd", kTDec_1204v, N.letra).no(kDaVenda),
                                   obr("vAliqProd", kTDec_1104v, N.letra).no(N.porUnidade), kValor};
    static constexpr Linha kNt[]{cst("04 05 06 07 08 09", N.cstNt)};
    static constexpr Linha kOutr[]{
        cst("49 50 51 52 53 54 55 56 60 61 62 63 64 65 66 67 70 71 72 73 74 75 98 99", N.cstOutr),
        kBase.se(regra::porAliquota),
        kAliquota.se(regra::porAliquota),
        obr("qBCProd", kTDec_1204v, N.letra).no(kDaVenda).se(regra::porQuantidade),
        obr("vAliqProd", kTDec_1104v, N.letra).no(N.porUnidade).se(regra::porQuantidade),
        kValor,
    };
    static constexpr Linha kSt[]{
        kBase.se(regra::porAliquota),
        kAliquota.se(regra::porAliquota),
        obr("qBCProd", kTDec_1204, N.letra).no(kDaVenda).se(regra::porQuantidade),
        obr("vAliqProd", kTDec_1104, N.letra).no(N.porUnidade).se(regra::porQuantidade),
        kValor,
    };
};
using Pis = Contribuicao<kNomesPis>;
using Cofins = Contribuicao<kNomesCofins>;
inline constexpr Linha kPis[]{
    grupo("PISAliq", kGrupoOpc, Pis::kAliq, "Q02"), grupo("PISQtde", kGrupoOpc, Pis::kQtde, "Q03"),
    grupo("PISNT", kGrupoOpc, Pis::kNt, "Q04"), grupo("PISOutr", kGrupoOpc, Pis::kOutr, "Q05"),
    sai("PISST", "R01: beside PIS")};
inline constexpr Linha kCofins[]{grupo("COFINSAliq", kGrupoOpc, Cofins::kAliq, "S02"),
                                 grupo("COFINSQtde", kGrupoOpc, Cofins::kQtde, "S03"),
                                 grupo("COFINSNT", kGrupoOpc, Cofins::kNt, "S04"),
                                 grupo("COFINSOutr", kGrupoOpc, Cofins::kOutr, "S05"),
                                 sai("COFINSST", "T01: beside COFINS")};

// ---- IBS and CBS ----

inline std::string escrito(const std::string &texto) {
    return texto;
}
inline std::string escrito(Centavos valor) {
    return textoDe(valor);
}
template <auto Membro>
regra::Texto doIbsCbs(const Lugar &lugar) {
    return escrito(lugar.item->ibsCbs.*Membro);
}
inline regra::Texto vIBS(const Lugar &lugar) {
    return textoDe(lugar.item->ibsCbs.vIBSUF + lugar.item->ibsCbs.vIBSMun);
}
template <auto Membro>
regra::Texto daClasse(const Lugar &lugar) {
    return lugar.item->ibsCbs.classe->*Membro;
}
inline bool reduzido(const Lugar &lugar) {
    return !lugar.item->ibsCbs.pRedAliq.empty();
}
inline bool comValores(const Lugar &lugar) {
    return lugar.item->ibsCbs.comValores;
}

using V = ValoresIbsCbs;
// The rate of the year, the one that is left of it, and the tax.
template <auto Efetiva>
struct Reducao {
    static constexpr Linha kLinhas[]{
        obr("pRedAliq", kTaxa, "UB46").por(doIbsCbs<&V::pRedAliq>),
        obr("pAliqEfet", kTaxa, "UB47").por(doIbsCbs<Efetiva>),
    };
    static constexpr Linha kGrupo =
        grupo("gRed", Presenca::kExigido, kLinhas, "UB45").de(".").se(reduzido);
};
inline constexpr Linha kIbsUf[]{obr("pIBSUF", kTaxa, "UB18").por(doIbsCbs<&V::pIBSUF>),
                                Reducao<&V::efIBSUF>::kGrupo,
                                obr("vIBSUF", kTDec_1302, "UB35").por(doIbsCbs<&V::vIBSUF>)};
inline constexpr Linha kIbsMun[]{obr("pIBSMun", kTaxa, "UB37").por(doIbsCbs<&V::pIBSMun>),
                                 Reducao<&V::efIBSMun>::kGrupo,
                                 obr("vIBSMun", kTDec_1302, "UB54").por(doIbsCbs<&V::vIBSMun>)};
inline constexpr Linha kCbs[]{obr("pCBS", kTaxa, "UB56").por(doIbsCbs<&V::pCBS>),
                              Reducao<&V::efCBS>::kGrupo,
                              obr("vCBS", kTDec_1302, "UB67").por(doIbsCbs<&V::vCBS>)};
inline constexpr Linha kGIbsCbs[]{
    obr("vBC", kTDec_1302, "UB16").por(doIbsCbs<&V::vBC>),
    grupo("gIBSUF", Presenca::kExigido, kIbsUf, "UB17").de("."),
    grupo("gIBSMun", Presenca::kExigido, kIbsMun, "UB36").de("."),
    obr("vIBS", kTDec_1302, "UB54a").por(vIBS),
    grupo("gCBS", Presenca::kExigido, kCbs, "UB55").de("."),
};
inline constexpr Linha kIbsCbs[]{
    obr("CST", digitos(3, 3), "UB13").por(daClasse<&ClasseTributaria::CST>),
    obr("cClassTrib", digitos(6, 6), "UB14").por(daClasse<&ClasseTributaria::cClassTrib>),
    grupo("gIBSCBS", Presenca::kExigido, kGIbsCbs, "UB15").de(".").se(comValores),
};

inline constexpr Linha kImposto[]{
    opc("vTotTrib", kTDec_1302, "M02").no(kDaVenda),
    grupo("ICMS", Presenca::kExigido, kIcms, "N01")
        .se(regra::mercadoria)
        .no("IMPOSTO\\ICMS, onde Orig escolhe o grupo")
        .conferido(regra::situacaoDoRegime),
    grupo("ISSQN", kGrupoOpc, kIssqn, "U01"),
    grupo("PIS", kGrupoOpc, kPis, "Q01"),
    grupo("PISST", kGrupoOpc, Pis::kSt, "R01")
        .de("PIS/PISST")
        .se(regra::comPisSt)
        .conferido(regra::baseDaSt),
    grupo("COFINS", kGrupoOpc, kCofins, "S01"),
    grupo("COFINSST", kGrupoOpc, Cofins::kSt, "T01")
        .de("COFINS/COFINSST")
        .se(regra::comCofinsSt)
        .conferido(regra::baseDaSt),
    grupo("IBSCBS", Presenca::kExigido, kIbsCbs, "UB12").de(".").se(calcularIbsCbs),
};

inline constexpr Linha kDet[]{
    grupo("prod", Presenca::kExigido, kProd, "I01").no(kDaVenda),
    grupo("imposto", Presenca::kExigido, kImposto, "M01").no(kDaVenda),
    opc("infAdProd", texto(1, 500), "V01").no(kDaVenda),
};

} // namespace zel::envio::tabela
