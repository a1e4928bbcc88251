// SPDX-License-Identifier: MIT
// A good NFC-e of layout 4.00, and the same with something changed: before its key is made, before
// it is signed, or after.
#pragma once

#include "Assinada.h"

#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

namespace zel::envio::ensaio {

// Goods with FCP, goods with ICMS ST and a reduced class, a service; all with IBS and CBS.
inline constexpr std::string_view kDocumento400 =
    R"(<NFe xmlns="http://www.portalfiscal.inf.br/nfe"><infNFe versao="4.00" Id="NFe@CHAVE"><ide>)"
    R"(<cUF>43</cUF><cNF>17102545</cNF><natOp>Venda</natOp><mod>65</mod><serie>1</serie>)"
    R"(<nNF>42</nNF><dhEmi>2026-09-21T10:00:00-03:00</dhEmi><tpNF>1</tpNF><idDest>1</idDest>)"
    R"(<cMunFG>4314902</cMunFG><tpImp>4</tpImp><tpEmis>1</tpEmis><cDV>@DV</cDV><tpAmb>2</tpAmb>)"
    R"(<finNFe>1</finNFe><indFinal>1</indFinal><indPres>1</indPres><procEmi>0</procEmi>)"
    R"(<verProc>1</verProc></ide><emit><CNPJ>12345678000195</CNPJ><xNome>Padaria &amp; Cia</xNome>)"
    R"(<enderEmit><xLgr>Rua das Flores</xLgr><nro>1</nro><xBairro>Centro</xBairro>)"
    R"(<cMun>4314902</cMun><xMun>Porto Alegre</xMun><UF>RS</UF><CEP>90010000</CEP></enderEmit>)"
    R"(<IE>0963233556</IE><IM>123</IM><CRT>3</CRT></emit>)"
    R"(<dest><CPF>12345678909</CPF><indIEDest>9</indIEDest></dest>)"
    // The first item.
    R"(<det nItem="1"><prod><cProd>101</cProd><cEAN>7891000315507</cEAN>)"
    R"(<xProd>Café em grãos</xProd><NCM>09012100</NCM><CFOP>5102</CFOP><uCom>UN</uCom>)"
    R"(<qCom>2.0000</qCom><vUnCom>10.00</vUnCom><vProd>20.00</vProd>)"
    R"(<cEANTrib>7891000315507</cEANTrib><uTrib>UN</uTrib><qTrib>2</qTrib>)"
    R"(<vUnTrib>10.0000000000</vUnTrib><vDesc>1.00</vDesc><vOutro>0.50</vOutro>)"
    R"(<indTot>1</indTot></prod><imposto><ICMS><ICMS00><orig>0</orig><CST>00</CST>)"
    R"(<modBC>3</modBC><vBC>19.50</vBC><pICMS>17.00</pICMS><vICMS>3.32</vICMS><pFCP>2.00</pFCP>)"
    R"(<vFCP>0.39</vFCP></ICMS00></ICMS><PIS><PISAliq><CST>01</CST><vBC>19.50</vBC>)"
    R"(<pPIS>1.65</pPIS><vPIS>0.32</vPIS></PISAliq></PIS><COFINS><COFINSAliq><CST>01</CST>)"
    R"(<vBC>19.50</vBC><pCOFINS>7.60</pCOFINS><vCOFINS>1.48</vCOFINS></COFINSAliq></COFINS>)"
    R"(<IBSCBS><CST>000</CST><cClassTrib>000001</cClassTrib><gIBSCBS><vBC>13.99</vBC><gIBSUF>)"
    R"(<pIBSUF>0.1000</pIBSUF><vIBSUF>0.01</vIBSUF></gIBSUF><gIBSMun><pIBSMun>0.0000</pIBSMun>)"
    R"(<vIBSMun>0.00</vIBSMun></gIBSMun><vIBS>0.01</vIBS><gCBS><pCBS>0.9000</pCBS>)"
    R"(<vCBS>0.13</vCBS></gCBS></gIBSCBS></IBSCBS></imposto></det>)"
    // The second one.
    R"(<det nItem="2"><prod><cProd>7</cProd><cEAN>SEM GTIN</cEAN><xProd>Queijo</xProd>)"
    R"(<NCM>04069010</NCM><CEST>1702300</CEST><CFOP>5403</CFOP><uCom>KG</uCom>)"
    R"(<qCom>0.3500</qCom><vUnCom>39.90</vUnCom><vProd>13.97</vProd><cEANTrib>SEM GTIN</cEANTrib>)"
    R"(<uTrib>KG</uTrib><qTrib>0.3500</qTrib><vUnTrib>39.90</vUnTrib><indTot>1</indTot></prod>)"
    R"(<imposto><ICMS><ICMS10><orig>0</orig><CST>10</CST><modBC>3</modBC><vBC>13.97</vBC>)"
    R"(<pICMS>17.00</pICMS><vICMS>2.37</vICMS><modBCST>4</modBCST><pMVAST>40.00</pMVAST>)"
    R"(<vBCST>19.56</vBCST><pICMSST>17.00</pICMSST><vICMSST>0.96</vICMSST></ICMS10></ICMS>)"
    R"(<PIS><PISNT><CST>06</CST></PISNT></PIS><COFINS><COFINSNT><CST>06</CST></COFINSNT></COFINS>)"
    R"(<IBSCBS><CST>200</CST><cClassTrib>200034</cClassTrib><gIBSCBS><vBC>11.60</vBC><gIBSUF>)"
    R"(<pIBSUF>0.1000</pIBSUF><gRed><pRedAliq>60.0000</pRedAliq><pAliqEfet>0.0400</pAliqEfet>)"
    R"(</gRed><vIBSUF>0.00</vIBSUF></gIBSUF><gIBSMun><pIBSMun>0.0000</pIBSMun><gRed>)"
    R"(<pRedAliq>60.0000</pRedAliq><pAliqEfet>0.0000</pAliqEfet></gRed><vIBSMun>0.00</vIBSMun>)"
    R"(</gIBSMun><vIBS>0.00</vIBS><gCBS><pCBS>0.9000</pCBS><gRed><pRedAliq>60.0000</pRedAliq>)"
    R"(<pAliqEfet>0.3600</pAliqEfet></gRed><vCBS>0.04</vCBS></gCBS></gIBSCBS></IBSCBS></imposto>)"
    R"(</det>)"
    // The service.
    R"(<det nItem="3"><prod><cProd>S1</cProd><cEAN>SEM GTIN</cEAN><xProd>Conserto</xProd>)"
    R"(<NCM>00</NCM><CFOP>5933</CFOP><uCom>UN</uCom><qCom>1.0000</qCom><vUnCom>10.00</vUnCom>)"
    R"(<vProd>10.00</vProd><cEANTrib>SEM GTIN</cEANTrib><uTrib>UN</uTrib><qTrib>1.0000</qTrib>)"
    R"(<vUnTrib>10.00</vUnTrib><indTot>1</indTot></prod><imposto><ISSQN><vBC>10.00</vBC>)"
    R"(<vAliq>5.00</vAliq><vISSQN>0.50</vISSQN><cMunFG>4314902</cMunFG>)"
    R"(<cListServ>14.01</cListServ><indISS>1</indISS><indIncentivo>2</indIncentivo></ISSQN><PIS>)"
    R"(<PISAliq><CST>01</CST><vBC>10.00</vBC><pPIS>1.65</pPIS><vPIS>0.17</vPIS></PISAliq></PIS>)"
    R"(<COFINS><COFINSAliq><CST>01</CST><vBC>10.00</vBC><pCOFINS>7.60</pCOFINS>)"
    R"(<vCOFINS>0.76</vCOFINS></COFINSAliq></COFINS><IBSCBS><CST>000</CST>)"
    R"(<cClassTrib>000001</cClassTrib><gIBSCBS><vBC>8.57</vBC><gIBSUF><pIBSUF>0.1000</pIBSUF>)"
    R"(<vIBSUF>0.01</vIBSUF></gIBSUF><gIBSMun><pIBSMun>0.0000</pIBSMun><vIBSMun>0.00</vIBSMun>)"
    R"(</gIBSMun><vIBS>0.01</vIBS><gCBS><pCBS>0.9000</pCBS><vCBS>0.08</vCBS></gCBS></gIBSCBS>)"
    R"(</IBSCBS></imposto></det>)"
    // Totals and payments.
    R"(<total><ICMSTot><vBC>33.47</vBC><vICMS>5.69</vICMS><vICMSDeson>0.00</vICMSDeson>)"
    R"(<vFCP>0.39</vFCP><vBCST>19.56</vBCST><vST>0.96</vST><vFCPST>0.00</vFCPST>)"
    R"(<vFCPSTRet>0.00</vFCPSTRet><vProd>33.97</vProd><vFrete>0.00</vFrete><vSeg>0.00</vSeg>)"
    R"(<vDesc>1.00</vDesc><vII>0.00</vII><vIPI>0.00</vIPI><vIPIDevol>0.00</vIPIDevol>)"
    R"(<vPIS>0.32</vPIS><vCOFINS>1.48</vCOFINS><vOutro>0.50</vOutro><vNF>44.43</vNF></ICMSTot>)"
    R"(<ISSQNtot><vServ>10.00</vServ><vBC>10.00</vBC><vISS>0.50</vISS><vPIS>0.17</vPIS>)"
    R"(<vCOFINS>0.76</vCOFINS><dCompet>2026-09-21</dCompet></ISSQNtot>)"
    R"(<IBSCBSTot><vBCIBSCBS>34.16</vBCIBSCBS><gIBS><gIBSUF><vDif>0.00</vDif>)"
    R"(<vDevTrib>0.00</vDevTrib><vIBSUF>0.02</vIBSUF></gIBSUF><gIBSMun><vDif>0.00</vDif>)"
    R"(<vDevTrib>0.00</vDevTrib><vIBSMun>0.00</vIBSMun></gIBSMun><vIBS>0.02</vIBS>)"
    R"(<vCredPres>0.00</vCredPres><vCredPresCondSus>0.00</vCredPresCondSus></gIBS><gCBS>)"
    R"(<vDif>0.00</vDif><vDevTrib>0.00</vDevTrib><vCBS>0.25</vCBS><vCredPres>0.00</vCredPres>)"
    R"(<vCredPresCondSus>0.00</vCredPresCondSus></gCBS></IBSCBSTot></total>)"
    R"(<transp><modFrete>9</modFrete></transp><pag><detPag><tPag>17</tPag><vPag>30.00</vPag>)"
    R"(<card><tpIntegra>2</tpIntegra></card></detPag><detPag><tPag>01</tPag><vPag>20.00</vPag>)"
    R"(</detPag><vTroco>5.57</vTroco></pag><infAdic><infCpl>Volte sempre</infCpl></infAdic>)"
    R"(</infNFe><infNFeSupl><qrCode>https://www.sefaz.rs.gov.br/NFCE/NFCE-COM.aspx?p=@CHAVE|3|2)"
    R"(</qrCode><urlChave>www.sefaz.rs.gov.br/nfce/consulta</urlChave></infNFeSupl></NFe>)";

inline void trocarTudo(std::string &texto, std::string_view de, std::string_view para) {
    std::size_t i = texto.find(de);
    ASSERT_NE(i, texto.npos) << de;
    for (; i != texto.npos; i = texto.find(de, i + para.size()))
        texto.replace(i, de.size(), para);
}

enum class Quando { kAntesDaChave, kDepoisDaChave, kDepoisDeAssinado };

struct Troca {
    std::string de, para;
    Quando quando = Quando::kAntesDaChave;
};

inline std::string chaveDe(const std::string &xml) {
    const auto valor = [&](const std::string &nome, std::size_t largura) {
        const std::string texto = entre(xml, '<' + nome + '>', "<");
        return std::string(largura - std::min(largura, texto.size()), '0') + texto;
    };
    const std::string dhEmi = valor("dhEmi", 0);
    return std::string(
        ChaveAcesso::montar({valor("cUF", 2), dhEmi.substr(2, 2) + dhEmi.substr(5, 2),
                             valor("CNPJ", 14), valor("mod", 2), valor("serie", 3), valor("nNF", 9),
                             valor("tpEmis", 1), valor("cNF", 8)})
            ->texto());
}

// Signed, with every place of what is to be changed changed; a text that is not there fails.
inline Documento documento400(const std::vector<Troca> &trocas = {}, bool comAssinatura = true,
                              std::string chave = {}) {
    std::string xml(kDocumento400);
    const auto aplicar = [&](Quando quando) {
        for (const Troca &troca : trocas)
            if (troca.quando == quando) trocarTudo(xml, troca.de, troca.para);
    };
    aplicar(Quando::kAntesDaChave);
    if (chave.empty()) chave = chaveDe(xml);
    trocarTudo(xml, "@DV", chave.substr(43));
    trocarTudo(xml, "@CHAVE", chave);
    aplicar(Quando::kDepoisDaChave);
    if (comAssinatura) xml = assinada(xml, "infNFe");
    aplicar(Quando::kDepoisDeAssinado);
    return lido(xml);
}

} // namespace zel::envio::ensaio
