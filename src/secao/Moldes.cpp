// SPDX-License-Identifier: MIT
#include "secao/Moldes.h"

#include "secao/Secao.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string_view>

namespace zel {

std::optional<ST_tagZEL> G_stTagZEL_abertura;
std::optional<ST_tagZEL> G_stTagZEL_venda;
std::optional<ST_tagZEL> G_stTagZEL_totalizacao;
std::optional<ST_tagZEL> G_stTagZEL_transporte;
std::optional<ST_tagZEL> G_stTagZEL_pagamento;
std::optional<ST_tagZEL> G_stTagZEL_encerramento;

namespace {

// One element of a template: a leaf with its limits in characters, or a group with its children.
struct Molde {
    std::string_view nome;
    bool obrigatorio;
    int minimo = 0;
    int maximo = 0;
    const Molde *filhos = nullptr;
    std::size_t quantidade = 0;
};

// A leaf that may be left out, and one that the caller must give.
constexpr Molde opc(std::string_view nome, int minimo, int maximo) {
    return {nome, false, minimo, maximo};
}
constexpr Molde obr(std::string_view nome, int minimo, int maximo) {
    return {nome, true, minimo, maximo};
}

// The same for groups.
template <std::size_t N>
constexpr Molde grupoOpc(std::string_view nome, const Molde (&filhos)[N]) {
    return {nome, false, 0, 0, filhos, N};
}
template <std::size_t N>
constexpr Molde grupoObr(std::string_view nome, const Molde (&filhos)[N]) {
    return {nome, true, 0, 0, filhos, N};
}

// Elements and their order: Manual de Orientação do Contribuinte 6.0 (September 2015), Anexo I
// (NF-e layout 3.10), by the group's letter there. Lengths are those that the operations keep to.

// ---- abertura: groups E (dest) and G (entrega) ----

constexpr Molde kEnderDest[] = {
    opc("xLgr", 2, kMaiorTexto),          opc("nro", 1, kMaiorTexto),
    opc("xBairro", 1, kMaiorTexto),       opc("cMun", kDigitosMunicipio, kDigitosMunicipio),
    opc("xMun", 2, kMaiorTexto),          opc("UF", kLetrasUf, kLetrasUf),
    opc("CEP", kDigitosCep, kDigitosCep),
};
constexpr Molde kDest[] = {
    opc("CPF", 11, 11),
    opc("CNPJ", 14, 14),
    opc("idEstrangeiro", 0, kMaiorEstrangeiro),
    opc("xNome", 2, kMaiorTexto),
    grupoOpc("enderDest", kEnderDest),
    opc("indIEDest", 1, 1),
    opc("email", 1, 60),
};
constexpr Molde kEntrega[] = {
    obr("xLgr", 2, kMaiorTexto),    obr("Nro", 1, kMaiorTexto),  opc("xCpl", 1, kMaiorTexto),
    opc("xBairro", 1, kMaiorTexto), opc("xMun", 2, kMaiorTexto), opc("UF", kLetrasUf, kLetrasUf),
};
constexpr Molde kAbertura[] = {grupoOpc("dest", kDest), grupoOpc("entrega", kEntrega)};

// ---- venda: groups I (prod), N (ICMS), Q and R (PIS), S and T (COFINS), U (ISSQN) ----

constexpr Molde kProd[] = {
    obr("cProd", 1, kMaiorTexto),
    obr("cEAN", 0, 14),
    obr("xProd", 1, kMaiorDescricao),
    obr("NCM", 2, 8),
    obr("CFOP", 4, 4),
    obr("uCom", 1, kMaiorUnidade),
    obr("qCom", 1, 15),
    obr("vUnCom", 1, 15),
    obr("vProd", 1, 15),
    obr("cEANTrib", 0, 14),
    obr("uTrib", 1, kMaiorUnidade),
    obr("qTrib", 1, 15),
    obr("vUnTrib", 1, 21),
    opc("vDesc", 1, 15),
    opc("vOutro", 1, 15),
    obr("indTot", 1, 1),
};
constexpr Molde kIcms00[] = {
    obr("orig", 1, 1), obr("CST", 2, 2),   obr("modBC", 1, 1),
    obr("vBC", 3, 15), obr("pICMS", 3, 5), obr("vICMS", 3, 15),
};
constexpr Molde kIcms10[] = {
    obr("orig", 1, 1),     obr("CST", 2, 2),    obr("modBC", 1, 1),   obr("vBC", 3, 15),
    obr("pICMS", 3, 5),    obr("vICMS", 3, 15), obr("modBCST", 1, 1), obr("pMVAST", 3, 5),
    obr("pRedBCST", 3, 5), obr("vBCST", 3, 15), obr("pICMSST", 3, 5), obr("vICMSST", 3, 15),
};
constexpr Molde kIcms20[] = {
    obr("orig", 1, 1), obr("CST", 2, 2),   obr("modBC", 1, 1),  obr("pRedBC", 3, 5),
    obr("vBC", 3, 15), obr("pICMS", 3, 5), obr("vICMS", 3, 15),
};
constexpr Molde kIcms30[] = {
    obr("orig", 1, 1),     obr("CST", 2, 2),    obr("modBCST", 1, 1), opc("pMVAST", 3, 5),
    opc("pRedBCST", 3, 5), obr("vBCST", 3, 15), obr("pICMSST", 3, 5), obr("vICMSST", 3, 15),
};
constexpr Molde kIcms40[] = {
    obr("orig", 1, 1),
    obr("CST", 2, 2),
    opc("vICMSDeson", 3, 15),
    opc("motDesICMS", 1, 1),
};
constexpr Molde kIcms51[] = {
    obr("orig", 1, 1), obr("CST", 2, 2),   opc("modBC", 1, 1),  opc("pRedBC", 3, 5),
    opc("vBC", 3, 15), opc("pICMS", 3, 5), opc("vICMS", 3, 15),
};
constexpr Molde kIcms60[] = {
    obr("orig", 1, 1),
    obr("CST", 2, 2),
    opc("vBCSTRet", 3, 15),
    opc("vICMSSTRet", 3, 15),
};
constexpr Molde kIcms70[] = {
    obr("orig", 1, 1),     obr("CST", 2, 2),      obr("modBC", 1, 1),  obr("pRedBC", 3, 5),
    obr("vBC", 3, 15),     opc("pICMS", 3, 5),    obr("vICMS", 3, 15), obr("modBCST", 1, 1),
    opc("pMVAST", 3, 5),   opc("pRedBCST", 3, 5), obr("vBCST", 3, 15), obr("pICMSST", 3, 5),
    obr("vICMSST", 3, 15),
};
constexpr Molde kIcms90[] = {
    obr("orig", 1, 1),     obr("CST", 2, 2),      obr("modBC", 1, 1),  obr("vBC", 3, 15),
    opc("pRedBC", 3, 5),   obr("pICMS", 3, 5),    obr("vICMS", 3, 15), obr("modBCST", 1, 1),
    opc("pMVAST", 3, 5),   opc("pRedBCST", 3, 5), obr("vBCST", 3, 15), obr("pICMSST", 3, 5),
    obr("vICMSST", 3, 15),
};
// Named "ICMSPART" here and "ICMSPart", as in the layout, where the group is built: kept.
constexpr Molde kIcmsPart[] = {
    obr("orig", 1, 1),     obr("CST", 2, 2),      obr("modBC", 1, 1),  obr("vBC", 3, 15),
    opc("pRedBC", 3, 5),   obr("pICMS", 3, 5),    obr("vICMS", 3, 15), obr("modBCST", 1, 1),
    opc("pMVAST", 3, 5),   opc("pRedBCST", 3, 5), obr("vBCST", 3, 15), obr("pICMSST", 3, 5),
    obr("vICMSST", 3, 15), obr("pBCOp", 3, 5),    obr("UFST", 2, 2),
};
constexpr Molde kIcmsSt[] = {
    obr("orig", 1, 1),        obr("CST", 2, 2),        obr("vBCSTRet", 3, 15),
    obr("vICMSSTRet", 3, 15), opc("vBCSTDest", 3, 15), obr("vICMSSTDest", 3, 15),
};
constexpr Molde kIcmsSn101[] = {
    obr("orig", 1, 1),
    obr("CSOSN", 3, 3),
    obr("pCredSN", 3, 5),
    obr("vCredICMSSN", 3, 15),
};
constexpr Molde kIcmsSn102[] = {obr("orig", 1, 1), obr("CSOSN", 3, 3)};
constexpr Molde kIcmsSn201[] = {
    obr("orig", 1, 1),     obr("CSOSN", 3, 3),        obr("modBCST", 1, 1), opc("pMVAST", 3, 5),
    opc("pRedBCST", 3, 5), obr("vBCST", 3, 15),       obr("pICMSST", 3, 5), obr("vICMSST", 3, 15),
    obr("pCredSN", 3, 5),  obr("vCredICMSSN", 3, 15),
};
constexpr Molde kIcmsSn202[] = {
    obr("orig", 1, 1),     obr("CSOSN", 3, 3),  obr("modBCST", 1, 1), opc("pMVAST", 3, 5),
    opc("pRedBCST", 3, 5), obr("vBCST", 3, 15), obr("pICMSST", 3, 5), obr("vICMSST", 3, 15),
};
constexpr Molde kIcmsSn500[] = {
    obr("orig", 1, 1),
    obr("CSOSN", 3, 3),
    obr("vBCSTRet", 3, 15),
    opc("vICMSSTRet", 3, 15),
};
constexpr Molde kIcmsSn900[] = {
    obr("orig", 1, 1),     obr("CSOSN", 3, 3),    obr("modBC", 1, 1),        obr("vBC", 3, 15),
    opc("pRedBC", 3, 5),   obr("pICMS", 3, 5),    obr("vICMS", 3, 15),       obr("modBCST", 1, 1),
    opc("pMVAST", 3, 5),   opc("pRedBCST", 3, 5), obr("vBCST", 3, 15),       obr("pICMSST", 3, 5),
    obr("vICMSST", 3, 15), obr("pCredSN", 3, 5),  obr("vCredICMSSN", 3, 15),
};
constexpr Molde kIcms[] = {
    grupoOpc("ICMS00", kIcms00),       grupoOpc("ICMS10", kIcms10),
    grupoOpc("ICMS20", kIcms20),       grupoOpc("ICMS30", kIcms30),
    grupoOpc("ICMS40", kIcms40),       grupoOpc("ICMS51", kIcms51),
    grupoOpc("ICMS60", kIcms60),       grupoOpc("ICMS70", kIcms70),
    grupoOpc("ICMS90", kIcms90),       grupoOpc("ICMSPART", kIcmsPart),
    grupoOpc("ICMSST", kIcmsSt),       grupoOpc("ICMSSN101", kIcmsSn101),
    grupoOpc("ICMSSN102", kIcmsSn102), grupoOpc("ICMSSN201", kIcmsSn201),
    grupoOpc("ICMSSN202", kIcmsSn202), grupoOpc("ICMSSN500", kIcmsSn500),
    grupoOpc("ICMSSN900", kIcmsSn900),
};
constexpr Molde kPisAliq[] = {
    obr("CST", 2, 2),
    obr("vBC", 3, 15),
    obr("pPIS", 3, 5),
    obr("vPIS", 3, 15),
};
constexpr Molde kPisQtde[] = {
    obr("CST", 2, 2),
    obr("qBCProd", 1, 16),
    obr("vAliqProd", 3, 15),
    obr("vPIS", 3, 15),
};
constexpr Molde kPisNt[] = {obr("CST", 2, 2)};
constexpr Molde kPisOutr[] = {
    obr("CST", 2, 2),      opc("vBC", 3, 15),       opc("pPIS", 3, 5),
    opc("qBCProd", 1, 16), opc("vAliqProd", 3, 15), obr("vPIS", 3, 15),
};
constexpr Molde kPisSt[] = {
    obr("vBC", 1, 15),       obr("pPIS", 3, 5),  obr("qBCProd", 1, 16),
    obr("vAliqProd", 3, 15), obr("vPIS", 3, 15),
};
constexpr Molde kPis[] = {
    grupoOpc("PISAliq", kPisAliq), grupoOpc("PISQtde", kPisQtde), grupoOpc("PISNT", kPisNt),
    grupoOpc("PISOutr", kPisOutr), grupoOpc("PISST", kPisSt),
};
constexpr Molde kCofinsAliq[] = {
    obr("CST", 2, 2),
    obr("vBC", 3, 15),
    obr("pCOFINS", 3, 5),
    obr("vCOFINS", 3, 15),
};
constexpr Molde kCofinsQtde[] = {
    obr("CST", 2, 2),
    obr("qBCProd", 1, 16),
    obr("vAliqProd", 3, 15),
    obr("vCOFINS", 3, 15),
};
constexpr Molde kCofinsNt[] = {obr("CST", 2, 2)};
constexpr Molde kCofinsOutr[] = {
    obr("CST", 2, 2),      opc("vBC", 3, 15),       opc("pCOFINS", 3, 5),
    opc("qBCProd", 1, 16), opc("vAliqProd", 3, 15), obr("vCOFINS", 3, 15),
};
constexpr Molde kCofinsSt[] = {
    obr("vBC", 3, 15),       obr("pCOFINS", 3, 5),  obr("qBCProd", 1, 16),
    obr("vAliqProd", 3, 15), obr("vCOFINS", 3, 15),
};
constexpr Molde kCofins[] = {
    grupoOpc("COFINSAliq", kCofinsAliq), grupoOpc("COFINSQtde", kCofinsQtde),
    grupoOpc("COFINSNT", kCofinsNt),     grupoOpc("COFINSOutr", kCofinsOutr),
    grupoOpc("COFINSST", kCofinsSt),
};
constexpr Molde kIssqn[] = {
    opc("vBC", 3, 15),      opc("vAliq", 3, 5),
    opc("vISSQN", 3, 15),   opc("cMunFG", kDigitosMunicipio, kDigitosMunicipio),
    opc("cListServ", 3, 4), opc("cSitTrib", 1, 1),
};
constexpr Molde kImposto[] = {
    grupoOpc("ICMS", kIcms),
    grupoOpc("PIS", kPis),
    grupoOpc("COFINS", kCofins),
    grupoOpc("ISSQN", kIssqn),
};
constexpr Molde kVenda[] = {grupoObr("prod", kProd), grupoObr("imposto", kImposto)};

// ---- totalizacao: group W ----

constexpr Molde kIcmsTot[] = {
    obr("vBC", 1, 15),     obr("vICMS", 1, 15),  obr("vICMSDeson", 1, 15), obr("vBCST", 1, 15),
    obr("vST", 1, 15),     obr("vProd", 1, 15),  obr("vFrete", 1, 15),     obr("vSeg", 1, 15),
    obr("vDesc", 1, 15),   obr("vII", 1, 15),    obr("vIPI", 1, 15),       obr("vPIS", 1, 15),
    obr("vCOFINS", 1, 15), obr("vOutro", 1, 15), obr("vNF", 1, 15),
};
constexpr Molde kIssqnTot[] = {
    opc("vServ", 1, 15), opc("vBC", 1, 15),     opc("vISS", 1, 15),
    opc("vPIS", 1, 15),  opc("vCOFINS", 1, 15),
};
constexpr Molde kRetTrib[] = {
    opc("vRetPIS", 1, 15), opc("vRetCOFINS", 1, 15), opc("vRetCSLL", 1, 15),
    opc("vIRRF", 1, 15),   opc("vBCRetPrev", 1, 15), opc("vRetPrev", 1, 15),
};
constexpr Molde kTotal[] = {
    grupoOpc("ICMSTot", kIcmsTot),
    grupoOpc("ISSQNTot", kIssqnTot),
    grupoOpc("retTrib", kRetTrib),
};
constexpr Molde kTotalizacao[] = {grupoObr("total", kTotal)};

// ---- transporte, pagamento, encerramento: groups X, YA, Z ----

constexpr Molde kTransporta[] = {
    opc("CNPJ", 14, 14),
    opc("CPF", 11, 11),
    opc("xNome", 2, kMaiorTexto),
    opc("IE", 2, 14),
    opc("xEnder", 1, kMaiorTexto),
    opc("xMun", 1, kMaiorTexto),
    opc("UF", kLetrasUf, kLetrasUf),
};
constexpr Molde kTransp[] = {obr("modFrete", 1, 1), grupoOpc("transporta", kTransporta)};
constexpr Molde kTransporte[] = {grupoObr("transp", kTransp)};

constexpr Molde kPag[] = {obr("tPag", 2, 2), obr("vPag", 1, 15)};
constexpr Molde kPagamento[] = {grupoObr("pag", kPag)};

constexpr Molde kInfAdic[] = {opc("infAdFisco", 1, 2000), opc("infCpl", 1, kMaiorInfCpl)};
constexpr Molde kEncerramento[] = {grupoOpc("infAdic", kInfAdic)};

struct SecaoMolde {
    std::optional<ST_tagZEL> *molde;
    Molde raiz;
};

// In the order of the section numbers.
constexpr SecaoMolde kSecoes[] = {
    {&G_stTagZEL_abertura, grupoObr("abertura", kAbertura)},
    {&G_stTagZEL_venda, grupoObr("venda", kVenda)},
    {&G_stTagZEL_totalizacao, grupoObr("totalizacao", kTotalizacao)},
    {&G_stTagZEL_pagamento, grupoObr("pagamento", kPagamento)},
    {&G_stTagZEL_transporte, grupoObr("transporte", kTransporte)},
    {&G_stTagZEL_encerramento, grupoObr("encerramento", kEncerramento)},
};

ST_tagZEL construir(const Molde &molde) {
    ST_tagZEL no(molde.nome);
    no.obrigatorio = molde.obrigatorio;
    no.tamanhoMinimo = molde.minimo;
    no.tamanhoMaximo = molde.maximo;
    if (molde.filhos == nullptr) return no;
    no.ehGrupo = true;
    auto &filhos = no.subTags.emplace();
    filhos.reserve(molde.quantidade);
    for (std::size_t i = 0; i < molde.quantidade; ++i)
        filhos.push_back(construir(molde.filhos[i]));
    return no;
}

} // namespace

std::size_t lugarNoProduto(std::string_view nome) {
    const auto achado = std::ranges::find(kProd, nome, &Molde::nome);
    return static_cast<std::size_t>(achado - std::begin(kProd));
}

std::size_t elementosDoProduto() {
    return std::size(kProd);
}

void construirMoldes() {
    for (const auto &secao : kSecoes)
        if (!*secao.molde) *secao.molde = construir(secao.raiz);
}

void liberarMoldes() {
    for (const auto &secao : kSecoes)
        secao.molde->reset();
}

const std::optional<ST_tagZEL> &moldeDaSecao(Secao secao) {
    return *kSecoes[static_cast<std::size_t>(secao)].molde;
}

} // namespace zel
