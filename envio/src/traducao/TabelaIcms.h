// SPDX-License-Identifier: MIT
// The groups of ICMS (group N of the Manual de Orientação do Contribuinte 7.0, layout 4.00, with
// the changes of NT 2023.004) as the till knows them: those of CST and CSOSN, in the order of the
// schema. The groups of single-phase taxation (02, 15, 53, 61) the till has not.
#pragma once

#include "traducao/Linha.h"
#include "traducao/Regras.h"

namespace zel::envio::tabela {

inline constexpr auto kUmDeCst = [](std::string_view valores) {
    return obr("CST", umDe(valores), "N12").no("IMPOSTO\\ICMS\\*\\CST");
};
inline constexpr auto kUmDeCsosn = [](std::string_view valores) {
    return obr("CSOSN", umDe(valores), "N12a").no("IMPOSTO\\ICMS\\*\\CSOSN");
};

inline constexpr Linha kOrig =
    obr("orig", umDe("0 1 2 3 4 5 6 7 8"), "N11").no("IMPOSTO\\ICMS\\*\\Orig");
inline constexpr Linha kModBC = obr("modBC", umDe("0 1 2 3"), "N13").no("IMPOSTO\\ICMS\\*\\modBC");
inline constexpr Linha kVBC = obr("vBC", kTDec_1302, "N15").no(kDaVenda);
inline constexpr Linha kPRedBC = obr("pRedBC", kTDec_0302a04, "N14").no("IMPOSTO\\ICMS\\*\\pRedBC");
inline constexpr Linha kPRedBCOpc =
    opc("pRedBC", kTDec_0302a04, "N14").no("IMPOSTO\\ICMS\\*\\pRedBC");
inline constexpr Linha kPICMS = obr("pICMS", kTDec_0302a04, "N16").no(kDaVenda);
inline constexpr Linha kVICMS = obr("vICMS", kTDec_1302, "N17").no(kDaVenda);
// modBCS is what the till's group of CST 30 may call it.
inline constexpr Linha kModBCST = obr("modBCST", umDe("0 1 2 3 4 5 6"), "N18")
                                      .no("IMPOSTO\\ICMS\\*\\modBCST")
                                      .de("modBCST|modBCS");
inline constexpr Linha kPMVAST = opc("pMVAST", kTDec_0302a04, "N19").no("IMPOSTO\\ICMS\\*\\pMVAST");
inline constexpr Linha kPRedBCST =
    opc("pRedBCST", kTDec_0302a04, "N20").no("IMPOSTO\\ICMS\\*\\pRedBCST");
inline constexpr Linha kVBCST = obr("vBCST", kTDec_1302, "N21").no(kDaVenda);
inline constexpr Linha kPICMSST =
    obr("pICMSST", kTDec_0302a04, "N22").no("IMPOSTO\\ICMS\\*\\pICMSST");
inline constexpr Linha kVICMSST = obr("vICMSST", kTDec_1302, "N23").no(kDaVenda);
inline constexpr Linha kPCredSN =
    obr("pCredSN", kTDec_0302a04, "N29").no("IMPOSTO\\ICMS\\*\\pCredSN");
inline constexpr Linha kVCredICMSSN =
    obr("vCredICMSSN", kTDec_1302, "N30").no("IMPOSTO\\ICMS\\*\\vCredICMSSN");
inline constexpr Linha kVBCSTRet =
    obr("vBCSTRet", kTDec_1302, "N26").no("IMPOSTO\\ICMS\\*\\vBCSTRet");
inline constexpr Linha kVICMSSTRet =
    obr("vICMSSTRet", kTDec_1302, "N27").no("IMPOSTO\\ICMS\\*\\vICMSSTRet");
inline constexpr Linha kSubstituto =
    opc("vICMSSubstituto", kTDec_1302, "N26b").por(regra::vICMSSubstituto);

// What the fund against poverty adds (NT 2016.002), of the own operation without and with its base,
// of the substitution, and of the substitution before.
inline constexpr Linha kPFCP = obr("pFCP", kTDec_0302a04, "N17b").por(regra::pFCP);
inline constexpr Linha kVFCP = obr("vFCP", kTDec_1302, "N17c").por(regra::vFCP);
inline constexpr Linha kFcpLinhas[]{obr("vBCFCP", kTDec_1302, "N17a").por(regra::vBCFCP), kPFCP,
                                    kVFCP};
inline constexpr Linha kFcpSemBaseLinhas[]{kPFCP, kVFCP};
inline constexpr Linha kFcpStLinhas[]{
    obr("vBCFCPST", kTDec_1302, "N23a").por(regra::vBCFCPST),
    obr("pFCPST", kTDec_0302a04, "N23b").por(regra::pFCPST),
    obr("vFCPST", kTDec_1302, "N23d").por(regra::vFCPST),
};
inline constexpr Linha kFcpStRetLinhas[]{
    obr("vBCFCPSTRet", kTDec_1302, "N27a").por(regra::vBCFCPSTRet),
    obr("pFCPSTRet", kTDec_0302a04, "N27b").por(regra::pFCPSTRet),
    obr("vFCPSTRet", kTDec_1302, "N27d").por(regra::vFCPSTRet),
};
inline constexpr Linha kFcp = juntos(kFcpLinhas).se(regra::comFcp);
inline constexpr Linha kFcpSemBase = juntos(kFcpSemBaseLinhas).se(regra::comFcp);
inline constexpr Linha kFcpSt = juntos(kFcpStLinhas).se(regra::comFcpSt);
inline constexpr Linha kFcpStRet = juntos(kFcpStRetLinhas).se(regra::comFcpStRet);

// What is withheld before: all of it or nothing. Without an amount it is left out.
inline constexpr Linha kRetidoLinhas[]{kVBCSTRet, obr("pST", kTDec_0302a04, "N26a").por(regra::pST),
                                       kSubstituto, kVICMSSTRet};
inline constexpr Linha kRetido = juntos(kRetidoLinhas).se(regra::retidoAntes);

// The relief is not taken off the price: the till charges the item without it (indDeduzDeson 0).
inline constexpr Linha kDesonerado[]{
    obr("vICMSDeson", kTDec_1302, "N28a").no("IMPOSTO\\ICMS\\ICMS40\\vICMS"),
    obr("motDesICMS", umDe("1 3 4 5 6 7 8 9 10 11 16 90"), "N28")
        .no("IMPOSTO\\ICMS\\*\\motDesICMS"),
    fixo("indDeduzDeson", "0", "N28b, NT 2023.004"),
};

inline constexpr Linha kProprio90[]{kModBC, kVBC, kPRedBCOpc, kPICMS, kVICMS, kFcp};
inline constexpr Linha kProprioSN[]{kModBC, kVBC, kPRedBCOpc, kPICMS, kVICMS};
inline constexpr Linha kSt[]{kModBCST, kPMVAST, kPRedBCST, kVBCST, kPICMSST, kVICMSST, kFcpSt};
inline constexpr Linha kCredito[]{kPCredSN, kVCredICMSSN};

inline constexpr Linha kIcms00[]{kOrig, kUmDeCst("00"), kModBC, kVBC, kPICMS, kVICMS, kFcpSemBase};
inline constexpr Linha kIcms10[]{kOrig,  kUmDeCst("10"), kModBC,   kVBC,    kPICMS,
                                 kVICMS, kFcp,           kModBCST, kPMVAST, kPRedBCST,
                                 kVBCST, kPICMSST,       kVICMSST, kFcpSt};
inline constexpr Linha kIcms20[]{kOrig, kUmDeCst("20"), kModBC, kPRedBC,
                                 kVBC,  kPICMS,         kVICMS, kFcp};
inline constexpr Linha kIcms30[]{kOrig,  kUmDeCst("30"), kModBCST, kPMVAST, kPRedBCST,
                                 kVBCST, kPICMSST,       kVICMSST, kFcpSt};
inline constexpr Linha kIcms40[]{kOrig, kUmDeCst("40 41 50"),
                                 juntos(kDesonerado).se(regra::desonerado)};
inline constexpr Linha kIcms51[]{kOrig,
                                 kUmDeCst("51"),
                                 opc("modBC", umDe("0 1 2 3"), "N13").no("IMPOSTO\\ICMS\\*\\modBC"),
                                 kPRedBCOpc,
                                 opc("vBC", kTDec_1302, "N15").no(kDaVenda),
                                 opc("pICMS", kTDec_0302a04, "N16").no(kDaVenda),
                                 opc("vICMS", kTDec_1302, "N17").no(kDaVenda),
                                 kFcp};
inline constexpr Linha kIcms60[]{kOrig, kUmDeCst("60"), kRetido, kFcpStRet};
inline constexpr Linha kIcms70[]{kOrig,     kUmDeCst("70"), kModBC,   kPRedBC,  kVBC,
                                 kPICMS,    kVICMS,         kFcp,     kModBCST, kPMVAST,
                                 kPRedBCST, kVBCST,         kPICMSST, kVICMSST, kFcpSt};
inline constexpr Linha kIcms90[]{kOrig, kUmDeCst("90"), juntos(kProprio90), juntos(kSt)};
inline constexpr Linha kIcmsPart[]{kOrig,
                                   kUmDeCst("10 90"),
                                   kModBC,
                                   kVBC,
                                   kPRedBCOpc,
                                   kPICMS,
                                   kVICMS,
                                   kModBCST,
                                   kPMVAST,
                                   kPRedBCST,
                                   kVBCST,
                                   kPICMSST,
                                   kVICMSST,
                                   kFcpSt,
                                   obr("pBCOp", kTDec_0302a04, "N25").no("IMPOSTO\\ICMS\\*\\pBCOp"),
                                   obr("UFST", kUf, "N24").no("IMPOSTO\\ICMS\\*\\UFST")};
inline constexpr Linha kIcmsSt[]{
    kOrig,
    kUmDeCst("41 60"),
    kVBCSTRet,
    opc("pST", kTDec_0302a04, "N26a").por(regra::pST),
    kSubstituto,
    kVICMSSTRet,
    kFcpStRet,
    obr("vBCSTDest", kTDec_1302, "N31").no("IMPOSTO\\ICMS\\*\\vBCSTDest"),
    obr("vICMSSTDest", kTDec_1302, "N32").no("IMPOSTO\\ICMS\\*\\vICMSSTDest")};
inline constexpr Linha kSn101[]{kOrig, kUmDeCsosn("101"), kPCredSN, kVCredICMSSN};
inline constexpr Linha kSn102[]{kOrig, kUmDeCsosn("102 103 300 400")};
inline constexpr Linha kSn201[]{kOrig,       kUmDeCsosn("201"), kModBCST, kPMVAST, kPRedBCST,
                                kVBCST,      kPICMSST,          kVICMSST, kFcpSt,  kPCredSN,
                                kVCredICMSSN};
inline constexpr Linha kSn202[]{
    kOrig, kUmDeCsosn("202 203"), kModBCST, kPMVAST, kPRedBCST, kVBCST, kPICMSST, kVICMSST, kFcpSt};
inline constexpr Linha kSn500[]{kOrig, kUmDeCsosn("500"), kRetido, kFcpStRet};
inline constexpr Linha kSn900[]{kOrig, kUmDeCsosn("900"), juntos(kProprioSN), juntos(kSt),
                                juntos(kCredito)};

inline constexpr Presenca kGrupoOpc = Presenca::kOpcional;
inline constexpr Linha kIcms[]{
    grupo("ICMS00", kGrupoOpc, kIcms00, "N02"),
    grupo("ICMS10", kGrupoOpc, kIcms10, "N03"),
    grupo("ICMS20", kGrupoOpc, kIcms20, "N04"),
    grupo("ICMS30", kGrupoOpc, kIcms30, "N05"),
    grupo("ICMS40", kGrupoOpc, kIcms40, "N06"),
    grupo("ICMS51", kGrupoOpc, kIcms51, "N07"),
    grupo("ICMS60", kGrupoOpc, kIcms60, "N08"),
    grupo("ICMS70", kGrupoOpc, kIcms70, "N09"),
    grupo("ICMS90", kGrupoOpc, kIcms90, "N10"),
    grupo("ICMSPart", kGrupoOpc, kIcmsPart, "N10a").de("ICMSPART|ICMSPart"),
    grupo("ICMSST", kGrupoOpc, kIcmsSt, "N10b"),
    grupo("ICMSSN101", kGrupoOpc, kSn101, "N10c"),
    grupo("ICMSSN102", kGrupoOpc, kSn102, "N10d"),
    grupo("ICMSSN201", kGrupoOpc, kSn201, "N10e"),
    grupo("ICMSSN202", kGrupoOpc, kSn202, "N10f"),
    grupo("ICMSSN500", kGrupoOpc, kSn500, "N10g"),
    grupo("ICMSSN900", kGrupoOpc, kSn900, "N10h").de("ICMSSN900|ICMS900"),
};

} // namespace zel::envio::tabela
