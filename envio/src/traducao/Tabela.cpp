// SPDX-License-Identifier: MIT
// The document of layout 4.00, in the order of the schema. Source of each row: group and number in
// the Manual de Orientação do Contribuinte 7.0, number of a rejection, or Nota Técnica.
#include "traducao/Tabela.h"

#include "traducao/Somas.h"
#include "traducao/TabelaItem.h"

namespace zel::envio {

namespace {

using namespace tabela;

constexpr Presenca kExigido = Presenca::kExigido;

template <auto Membro>
regra::Texto daConfig(const Lugar &lugar) {
    return lugar.contexto.config.*Membro;
}
template <auto Membro>
regra::Texto doRespTec(const Lugar &lugar) {
    return lugar.contexto.config.respTec.*Membro;
}

// Group B.
constexpr Linha kIde[]{
    obr("cUF", digitos(2, 2), "B02").no("IDE\\cUF"),
    obr("cNF", digitos(8, 8), "B03").no("IDE\\cNF"),
    obr("natOp", texto(1, 60), "B04").no("IDE\\natOP"),
    sai("indPag", "B05 of 3.10"),
    obr("mod", umDe("65"), "B06").no("IDE\\Mod"),
    obr("serie", inteiro(3), "B07").no("IDE\\Serie"),
    obr("nNF", inteiro(9), "B08").no("IDE\\nNF"),
    obr("dhEmi", kMomento, "B09").no("CONFIGURACAO\\TIMEZONESERVIDOR"),
    obr("tpNF", umDe("0 1"), "B11").no("IDE\\tpNF"),
    obr("idDest", umDe("1 2 3"), "B11a").no("IDE\\idDest"),
    obr("cMunFG", kMunicipioDaLoja, "B12").no("IDE\\cMunFG"),
    obr("tpImp", umDe("0 1 2 3 4 5"), "B21").no("IDE\\tpImp"),
    obr("tpEmis", umDe("1 4 9"), "B22").no("IDE\\tpEmis"),
    obr("cDV", digitos(1, 1), "B23").no(kDoDocumento),
    obr("tpAmb", umDe("1 2"), "B24").no("CONFIGURACAO\\TipoAmbiente"),
    obr("finNFe", umDe("1 2 3 4"), "B25").no("IDE\\finNfe"),
    obr("indFinal", umDe("0 1"), "B25a").no("IDE\\indFinal"),
    obr("indPres", umDe("0 1 2 3 4 5 9"), "B25b").no("IDE\\indPres"),
    obr("indIntermed", umDe("0 1"), "B25c, NT 2020.006")
        .por(regra::indIntermed)
        .se(regra::naoPresencial),
    obr("procEmi", umDe("0 1 2 3"), "B26").no(kDoDocumento),
    obr("verProc", texto(1, 20), "B27").no("IDE\\verProc"),
    obr("dhCont", kMomento, "B28").no("CONFIGURACAO\\TIMEZONESERVIDOR").se(regra::emContingencia),
    obr("xJust", texto(15, 256), "B29").no("IDE\\xJust").se(regra::emContingencia),
};

// Group C.
constexpr Linha kEnderEmit[]{
    obr("xLgr", texto(2, 60), "C06").no("EMIT\\ENDEREMIT\\xLgr"),
    obr("nro", texto(1, 60), "C07").no("EMIT\\ENDEREMIT\\Nro"),
    obr("xBairro", texto(2, 60), "C09").no("EMIT\\ENDEREMIT\\xBairro"),
    obr("cMun", kMunicipioDaLoja, "C10").no("EMIT\\ENDEREMIT\\cMun"),
    obr("xMun", texto(2, 60), "C11").no("EMIT\\ENDEREMIT\\xMun"),
    obr("UF", kUf, "C12").no("EMIT\\ENDEREMIT\\UF"),
    obr("CEP", digitos(8, 8), "C13").no("EMIT\\ENDEREMIT\\CEP"),
};
constexpr Linha kEmit[]{
    obr("CNPJ", kCnpj, "C02").no("EMIT\\CNPJ"),
    obr("xNome", texto(2, 60), "C03").no("EMIT\\xNome"),
    grupo("enderEmit", kExigido, kEnderEmit, "C05").no(kDoDocumento),
    obr("IE", digitos(2, 14), "C17").no("EMIT\\IE"),
    opc("IM", texto(1, 15), "C19").por(regra::IM).se(regra::prestaServico),
    opc("CNAE", digitos(7, 7), "C20").por(regra::CNAE).se(regra::prestaServico),
    obr("CRT", umDe("1 2 3 4"), "C21").no("EMIT\\CRT"),
};

// Groups E and G.
constexpr Linha kEnderDest[]{
    obr("xLgr", texto(2, 60), "E06").no(kDoConsumidor),
    obr("nro", texto(1, 60), "E07").no(kDoConsumidor),
    opc("xCpl", texto(1, 60), "E08").no(kDoConsumidor),
    obr("xBairro", texto(2, 60), "E09").no(kDoConsumidor),
    obr("cMun", kMunicipio, "E10").no(kDoConsumidor),
    obr("xMun", texto(2, 60), "E11").no(kDoConsumidor),
    obr("UF", kUf, "E12").no(kDoConsumidor),
    opc("CEP", digitos(8, 8), "E13").no(kDoConsumidor),
};
constexpr Linha kDest[]{
    opc("CNPJ", kCnpj, "E02").no(kDoConsumidor),
    opc("CPF", kCpf, "E03").no(kDoConsumidor),
    opc("idEstrangeiro", kIdEstrangeiro, "E03a").no(kDoConsumidor),
    opc("xNome", texto(2, 60), "E04, 598").por(regra::xNomeDest).no(kDoConsumidor),
    grupo("enderDest", kGrupoOpc, kEnderDest, "E05"),
    obr("indIEDest", umDe("1 2 9"), "E16a").no(kDoConsumidor),
    opc("email", texto(1, 60), "E19").no(kDoConsumidor),
};
constexpr Linha kEntrega[]{
    obr("CNPJ", kLivre, "G02").por(regra::cnpjDest).se(regra::destSemCpf),
    obr("CPF", kCpf, "G02a").por(regra::cpfDest).se(regra::destComCpf),
    obr("xLgr", texto(2, 60), "G03").no(kDoConsumidor),
    obr("nro", texto(1, 60), "G04").no(kDoConsumidor).de("nro|Nro"),
    opc("xCpl", texto(1, 60), "G05").no(kDoConsumidor),
    obr("xBairro", texto(2, 60), "G06").no(kDoConsumidor),
    obr("cMun", kMunicipio, "G07").por(regra::cMunEntrega),
    obr("xMun", texto(2, 60), "G08").no(kDoConsumidor),
    obr("UF", kUf, "G09").no(kDoConsumidor),
};

// Group W. Sums after the rules of group W (vNF: 610); the till's own are passed over, but
// for what it charged.
constexpr Quais kMercadorias = Quais::kMercadorias, kServicos = Quais::kServicos;
constexpr Linha kIcmsTot[]{
    soma("vBC", "imposto/ICMS/*/vBC", "W03"),
    soma("vICMS", "imposto/ICMS/*/vICMS", "W04"),
    soma("vICMSDeson", "imposto/ICMS/*/vICMSDeson", "W04a"),
    soma("vFCP", "imposto/ICMS/*/vFCP", "W04h"),
    soma("vBCST", "imposto/ICMS/*/vBCST", "W05"),
    soma("vST", "imposto/ICMS/*/vICMSST", "W06"),
    soma("vFCPST", "imposto/ICMS/*/vFCPST", "W06a"),
    soma("vFCPSTRet", "imposto/ICMS/*/vFCPSTRet", "W06b"),
    soma("vProd", "prod/vProd", "W07", kExigido, kMercadorias),
    soma("vFrete", "prod/vFrete", "W08"),
    soma("vSeg", "prod/vSeg", "W09"),
    soma("vDesc", "prod/vDesc", "W10"),
    soma("vII", "imposto/II/vII", "W11"),
    soma("vIPI", "imposto/IPI/*/vIPI", "W12"),
    soma("vIPIDevol", "impostoDevol/IPI/vIPIDevol", "W12a"),
    soma("vPIS", "imposto/PIS/*/vPIS", "W13", kExigido, kMercadorias),
    soma("vCOFINS", "imposto/COFINS/*/vCOFINS", "W14", kExigido, kMercadorias),
    soma("vOutro", "prod/vOutro", "W15"),
    obr("vNF", kTDec_1302, "W16, 610").por(valorDaNota),
    soma("vTotTrib", "imposto/vTotTrib", "W16a").se(regra::comTotTrib),
};
constexpr Linha kIssqnTot[]{
    soma("vServ", "prod/vProd", "W18", Presenca::kSemZero, kServicos),
    soma("vBC", "imposto/ISSQN/vBC", "W19", Presenca::kSemZero),
    soma("vISS", "imposto/ISSQN/vISSQN", "W20", Presenca::kSemZero),
    soma("vPIS", "imposto/PIS/*/vPIS", "W21", Presenca::kSemZero, kServicos),
    soma("vCOFINS", "imposto/COFINS/*/vCOFINS", "W22", Presenca::kSemZero, kServicos),
    obr("dCompet", kLivre, "W22a").por(regra::dCompet),
};
constexpr Linha kRetTrib[]{
    semZero("vRetPIS", "W24").no(kDoTotal),    semZero("vRetCOFINS", "W25").no(kDoTotal),
    semZero("vRetCSLL", "W26").no(kDoTotal),   semZero("vIRRF", "W28").no(kDoTotal),
    semZero("vBCRetPrev", "W29").no(kDoTotal), semZero("vRetPrev", "W30").no(kDoTotal),
};
// NT 2025.002, group W of IBS and CBS: sums of what the items show, credits and deferrals none.
constexpr Linha kTotIbsUf[]{fixo("vDif", "0.00", "W38"), fixo("vDevTrib", "0.00", "W39"),
                            soma("vIBSUF", "imposto/IBSCBS/gIBSCBS/gIBSUF/vIBSUF", "W41")};
constexpr Linha kTotIbsMun[]{fixo("vDif", "0.00", "W43"), fixo("vDevTrib", "0.00", "W44"),
                             soma("vIBSMun", "imposto/IBSCBS/gIBSCBS/gIBSMun/vIBSMun", "W46")};
constexpr Linha kTotIbs[]{
    grupo("gIBSUF", kExigido, kTotIbsUf, "W37").de("."),
    grupo("gIBSMun", kExigido, kTotIbsMun, "W42").de("."),
    soma("vIBS", "imposto/IBSCBS/gIBSCBS/vIBS", "W47"),
    fixo("vCredPres", "0.00", "W48"),
    fixo("vCredPresCondSus", "0.00", "W49"),
};
constexpr Linha kTotCbs[]{
    fixo("vDif", "0.00", "W53"),
    fixo("vDevTrib", "0.00", "W54"),
    soma("vCBS", "imposto/IBSCBS/gIBSCBS/gCBS/vCBS", "W56"),
    fixo("vCredPres", "0.00", "W56a"),
    fixo("vCredPresCondSus", "0.00", "W56b"),
};
constexpr Linha kIbsCbsTot[]{
    soma("vBCIBSCBS", "imposto/IBSCBS/gIBSCBS/vBC", "W35"),
    grupo("gIBS", kExigido, kTotIbs, "W36").de(".").se(algumValorIbsCbs),
    grupo("gCBS", kExigido, kTotCbs, "W50").de(".").se(algumValorIbsCbs),
};
constexpr Linha kTotal[]{
    grupo("ICMSTot", kExigido, kIcmsTot, "W02"),
    grupo("ISSQNtot", kExigido, kIssqnTot, "W17").de("ISSQNTot|ISSQNtot").se(regra::temServico),
    grupo("retTrib", kGrupoOpc, kRetTrib, "W23"),
    grupo("IBSCBSTot", kExigido, kIbsCbsTot, "W34").de(".").se(comIbsCbs),
};

// Group X.
constexpr Linha kTransporta[]{
    opc("CNPJ", kCnpj, "X04").no(kDaTransportadora),
    opc("CPF", kCpf, "X05").no(kDaTransportadora),
    opc("xNome", texto(2, 60), "X06").no(kDaTransportadora),
    opc("IE", digitos(2, 14), "X07").no(kDaTransportadora),
    opc("xEnder", texto(1, 60), "X08").no(kDaTransportadora),
    opc("xMun", texto(1, 60), "X09").no(kDaTransportadora),
    opc("UF", kUf, "X10").no(kDaTransportadora),
};
constexpr Linha kTransp[]{
    obr("modFrete", umDe("0 1 2 3 4 9"), "X02").de("modFrete|modfrete").no(kDaTransportadora),
    grupo("transporta", kGrupoOpc, kTransporta, "X03"),
};

// Group YA: one `pag` with all payments.
constexpr Linha kCard[]{
    obr("tpIntegra", umDe("1 2"), "YA04a").por(regra::tpIntegra).no(kDoCartao),
    opc("CNPJ", kCnpj, "YA05").por(regra::cardCNPJ).no(kDoCartao),
    opc("tBand", digitos(2, 2), "YA06").por(regra::tBand).no(kDoCartao),
    opc("cAut", texto(1, 128), "YA07").por(regra::cAut).no(kDoCartao),
};
constexpr Linha kDetPag[]{
    obr("tPag", umDe("01 02 03 04 05 10 11 12 13 15 16 17 18 19 20 21 22 90 99"),
        "YA02, IT 2024.002")
        .por(regra::tPag)
        .no(kDaForma),
    obr("xPag", texto(2, 60), "YA02a, NT 2020.006").por(regra::xPag).se(regra::outraForma),
    obr("vPag", kTDec_1302, "YA03").por(regra::vPag).no(kDoPagamento),
    grupo("card", kExigido, kCard, "YA04").se(regra::comCartao).conferido(regra::integradoCompleto),
};
constexpr Linha kPag[]{
    grupo("detPag", kExigido, kDetPag, "YA01a").de("pag").no(kDoPagamento).repetido(100),
    obr("vTroco", kTDec_1302, "YA09").por(regra::vTroco).se(regra::comTroco),
};

// Groups YB, Z and ZD.
constexpr Linha kInfIntermed[]{
    obr("CNPJ", kCnpj, "YB02").por(daConfig<&Configuracao::intermediadorCNPJ>),
    obr("idCadIntTran", texto(2, 60), "YB03").por(daConfig<&Configuracao::intermediadorId>),
};
constexpr Linha kInfAdic[]{
    opc("infAdFisco", texto(1, 2000), "Z02").no(kDaMensagem),
    opc("infCpl", texto(1, 5000), "Z03").no(kDaMensagem),
};
constexpr Linha kCsrt[]{
    obr("idCSRT", digitos(2, 2), "ZD08").por(doRespTec<&ConfigRespTec::idCSRT>),
    obr("hashCSRT", kLivre, "ZD09").por(regra::hashCSRT),
};
constexpr Linha kInfRespTec[]{
    obr("CNPJ", kCnpj, "ZD02").por(doRespTec<&ConfigRespTec::CNPJ>),
    obr("xContato", texto(2, 60), "ZD04").por(doRespTec<&ConfigRespTec::xContato>),
    obr("email", texto(6, 60), "ZD05").por(doRespTec<&ConfigRespTec::email>),
    obr("fone", digitos(6, 14), "ZD06").por(doRespTec<&ConfigRespTec::fone>),
    juntos(kCsrt).se(regra::comCsrt),
};

constexpr Linha kInfNFe[]{
    grupo("ide", kExigido, kIde, "B01").no(kDoDocumento).conferido(regra::contingenciaComTipo),
    grupo("emit", kExigido, kEmit, "C01").no(kDoDocumento),
    grupo("dest", kGrupoOpc, kDest, "E01").conferido(regra::umDocumento),
    grupo("entrega", kGrupoOpc, kEntrega, "G01"),
    grupo("det", kExigido, kDet, "H01").no(kDaVenda).repetido(990, true),
    grupo("total", kExigido, kTotal, "W01").no(kDoDocumento).conferido(conferirCobrado),
    grupo("transp", kExigido, kTransp, "X01").no(kDaTransportadora),
    grupo("pag", kExigido, kPag, "YA01").de(".").conferido(regra::conferirPago),
    grupo("infIntermed", kExigido, kInfIntermed, "YB01").de(".").se(regra::comIntermediador),
    grupo("infAdic", kGrupoOpc, kInfAdic, "Z01"),
    grupo("infRespTec", kExigido, kInfRespTec, "ZD01, NT 2018.005").de(".").se(regra::comRespTec),
};

} // namespace

std::span<const Linha> tabelaInfNFe() {
    return kInfNFe;
}

} // namespace zel::envio
