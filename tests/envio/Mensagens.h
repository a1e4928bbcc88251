// SPDX-License-Identifier: MIT
// Messages of layout 4.00 as short as the published schemas allow, unsigned.
#pragma once

#include "apoio/Trecho.h"
#include "base/Xml.h"
#include "comum/ChaveAcesso.h"

#include <gtest/gtest.h>
#include <string>

namespace zel::envio::ensaio {

inline Documento lido(const std::string &xml) {
    std::string motivo;
    auto documento = Documento::ler(xml, motivo);
    EXPECT_TRUE(documento) << motivo << '\n' << xml;
    return documento ? std::move(*documento) : Documento();
}

inline std::string chaveDoDocumento() {
    const std::string partes = "3526091234567800019565001000000007112345670";
    return partes + fnCalcula_cDV(partes);
}

inline std::string item(int numero) {
    return "<det nItem=\"" + std::to_string(numero) +
           "\"><prod><cProd>7</cProd><cEAN>SEM GTIN</cEAN><xProd>Pão de queijo</xProd>"
           "<NCM>19059090</NCM><CFOP>5102</CFOP><uCom>UN</uCom><qCom>1.0000</qCom>"
           "<vUnCom>1.00</vUnCom><vProd>1.00</vProd><cEANTrib>SEM GTIN</cEANTrib>"
           "<uTrib>UN</uTrib><qTrib>1.0000</qTrib><vUnTrib>1.00</vUnTrib><indTot>1</indTot></prod>"
           "<imposto><ICMS><ICMSSN102><orig>0</orig><CSOSN>102</CSOSN></ICMSSN102></ICMS>"
           "<PIS><PISOutr><CST>99</CST><vBC>0.00</vBC><pPIS>0.00</pPIS><vPIS>0.00</vPIS></PISOutr>"
           "</PIS><COFINS><COFINSOutr><CST>99</CST><vBC>0.00</vBC><pCOFINS>0.00</pCOFINS>"
           "<vCOFINS>0.00</vCOFINS></COFINSOutr></COFINS></imposto></det>";
}

inline std::string nfe(int itens = 1) {
    const std::string chave = chaveDoDocumento();
    std::string xml =
        "<NFe xmlns=\"http://www.portalfiscal.inf.br/nfe\"><infNFe versao=\"4.00\" Id=\"NFe" +
        chave +
        "\"><ide><cUF>35</cUF><cNF>12345670</cNF><natOp>VENDA</natOp><mod>65</mod>"
        "<serie>1</serie><nNF>7</nNF><dhEmi>2026-09-21T10:00:00-03:00</dhEmi><tpNF>1</tpNF>"
        "<idDest>1</idDest><cMunFG>3550308</cMunFG><tpImp>4</tpImp><tpEmis>1</tpEmis><cDV>" +
        chave.back() +
        "</cDV><tpAmb>2</tpAmb><finNFe>1</finNFe><indFinal>1</indFinal><indPres>1</indPres>"
        "<procEmi>0</procEmi><verProc>1</verProc></ide><emit><CNPJ>12345678000195</CNPJ>"
        "<xNome>PÃO &amp; CAFÉ LTDA</xNome><enderEmit><xLgr>Rua</xLgr><nro>1</nro>"
        "<xBairro>Centro</xBairro><cMun>3550308</cMun><xMun>São Paulo</xMun><UF>SP</UF>"
        "<CEP>01001000</CEP></enderEmit><IE>123456789012</IE><CRT>1</CRT></emit>";
    for (int i = 1; i <= itens; ++i)
        xml += item(i);
    const std::string total = std::to_string(itens) + ".00";
    xml += "<total><ICMSTot>";
    for (const char *campo : {"vBC", "vICMS", "vICMSDeson", "vFCP", "vBCST", "vST", "vFCPST",
                              "vFCPSTRet", "vProd", "vFrete", "vSeg", "vDesc", "vII", "vIPI",
                              "vIPIDevol", "vPIS", "vCOFINS", "vOutro", "vNF"}) {
        const bool soma = std::string_view(campo) == "vProd" || std::string_view(campo) == "vNF";
        xml += '<' + std::string(campo) + '>' + (soma ? total : "0.00") + "</" + campo + '>';
    }
    return xml +
           "</ICMSTot></total><transp><modFrete>9</modFrete></transp><pag><detPag>"
           "<tPag>01</tPag><vPag>" +
           total + "</vPag></detPag></pag></infNFe></NFe>";
}

inline std::string evento(const std::string &detalhe, const char *tipo = "110111") {
    const std::string chave = chaveDoDocumento();
    return "<evento xmlns=\"http://www.portalfiscal.inf.br/nfe\" versao=\"1.00\"><infEvento "
           "Id=\"ID" +
           std::string(tipo) + chave +
           "01\"><cOrgao>35</cOrgao><tpAmb>2</tpAmb>"
           "<CNPJ>12345678000195</CNPJ><chNFe>" +
           chave + "</chNFe><dhEvento>2026-09-21T10:05:00-03:00</dhEvento><tpEvento>" + tipo +
           "</tpEvento><nSeqEvento>1</nSeqEvento><verEvento>1.00</verEvento>"
           "<detEvento versao=\"1.00\">" +
           detalhe + "</detEvento></infEvento></evento>";
}

inline std::string cancelamento() {
    return evento("<descEvento>Cancelamento</descEvento><nProt>135260000000001</nProt>"
                  "<xJust>Cliente desistiu da compra</xJust>");
}

inline std::string substituicao() {
    return evento("<descEvento>Cancelamento por substituicao</descEvento>"
                  "<cOrgaoAutor>35</cOrgaoAutor><tpAutor>1</tpAutor><verAplic>1</verAplic>"
                  "<nProt>135260000000001</nProt><xJust>Emitida de novo sem conexao</xJust>"
                  "<chNFeRef>" +
                      chaveDoDocumento() + "</chNFeRef>",
                  "110112");
}

inline std::string lote(const std::string &raiz, const char *versao, const std::string &dentro) {
    return '<' + raiz + " xmlns=\"http://www.portalfiscal.inf.br/nfe\" versao=\"" + versao +
           "\"><idLote>1</idLote>" + (raiz == "enviNFe" ? "<indSinc>1</indSinc>" : "") + dentro +
           "</" + raiz + '>';
}

inline std::string inutilizacao() {
    return "<inutNFe xmlns=\"http://www.portalfiscal.inf.br/nfe\" versao=\"4.00\">"
           "<infInut Id=\"ID35261234567800019565001000000008000000009\"><tpAmb>2</tpAmb>"
           "<xServ>INUTILIZAR</xServ><cUF>35</cUF><ano>26</ano><CNPJ>12345678000195</CNPJ>"
           "<mod>65</mod><serie>1</serie><nNFIni>8</nNFIni><nNFFin>9</nNFFin>"
           "<xJust>Numeros pulados pelo caixa</xJust></infInut></inutNFe>";
}

} // namespace zel::envio::ensaio
