// A small NFC-e for the tests of printing, its returns, and a till of its own for each test.
#pragma once

#include "PastaTemporaria.h"
#include "ZEL_FelborFramework.h"
#include "config/Registro.h"
#include "documento/ZEL_Persistencia.h"
#include "imposto/TotalImposto.h"
#include "impressao/DadosImpressao.h"
#include "impressao/GerenciadorImpressao.h"
#include "util/Latin1.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace impressao {

using namespace zel;

inline constexpr std::string_view kChave = "35140111222333000181650010000001231171025446";
inline constexpr std::string_view kDigest = "FBFUQdZijVXNc2cxuJ9xHnx0Chc=";

// The sending component's own return, and the authorizer's record.
inline const std::string kRetornoEnvio =
    "<Retorno><SitCodigo>100</SitCodigo><DocChaAcesso>" + std::string(kChave) +
    "</DocChaAcesso><DocProtocolo>135140000000001</DocProtocolo><DocDhAut>"
    "2014-02-01T00:00:03-02:00</DocDhAut><DocDigestValue>" +
    std::string(kDigest) + "</DocDigestValue></Retorno>";
inline const std::string kRetornoSefaz =
    "<protNFe><infProt><dhRecbto>2014-02-01T00:00:03-02:00</dhRecbto><nProt>135140000000001</nProt>"
    "<digVal>" +
    std::string(kDigest) + "</digVal></infProt></protNFe>";

inline constexpr std::string_view kConsumidor =
    "<dest><CPF>12345678909</CPF><xNome>José da Silva</xNome><enderDest><xLgr>Rua A</xLgr>"
    "<nro>12</nro><xBairro>Centro</xBairro><cMun>3550308</cMun><xMun>São Paulo</xMun><UF>SP</UF>"
    "<CEP>01001000</CEP></enderDest></dest>"_l1;

inline std::string item(int numero, std::string_view codigo, std::string_view descricao,
                        std::string_view quantidade, std::string_view unidade,
                        std::string_view unitario) {
    return "<det nItem='" + std::to_string(numero) + "'><prod><cProd>" + std::string(codigo) +
           "</cProd><cEAN></cEAN><xProd>" + std::string(descricao) + "</xProd><NCM>39231090</NCM>" +
           "<uCom>" + std::string(unidade) + "</uCom><qCom>" + std::string(quantidade) +
           "</qCom><vUnCom>" + std::string(unitario) +
           "</vUnCom></prod><imposto><ICMS><ICMS00><vICMS>9.99</vICMS></ICMS00></ICMS></imposto>"
           "</det>";
}

inline std::string pagamento(std::string_view forma, std::string_view valor) {
    return "<pag><tPag>" + std::string(forma) + "</tPag><vPag>" + std::string(valor) +
           "</vPag></pag>";
}

struct Nota {
    std::string tpEmis = "1";
    std::string tpAmb = "1";
    std::string dest;
    std::string itens = item(1, "789", "Caneta azul", "2.0000", "UN", "5.25");
    std::string desconto = "0.00";
    std::string outro = "0.00";
    std::string total = "10.50";
    std::string tributos; // "<vTotTrib>1.00</vTotTrib>"
    std::string pagamentos = pagamento("01", "10.50");
    std::string infCpl;

    std::string xml() const {
        return "<NFe xmlns=\"http://www.portalfiscal.inf.br/nfe\"><infNFe Id=\"NFe" +
               std::string(kChave) +
               "\" versao=\"3.10\"><ide><cUF>35</cUF><cNF>17102544</cNF><serie>1</serie>"
               "<nNF>123</nNF><dhEmi>2014-01-31T23:59:59-02:00</dhEmi><tpEmis>" +
               tpEmis + "</tpEmis><cDV>6</cDV><tpAmb>" + tpAmb +
               std::string(
                   "</tpAmb></ide><emit><CNPJ>11222333000181</CNPJ><xNome>Pão &amp; Cia "
                   "Ltda</xNome>"
                   "<enderEmit><xLgr>Rua das Flores</xLgr><nro>100</nro><xBairro>Jardim</xBairro>"
                   "<cMun>3550308</cMun><xMun>São Paulo</xMun><UF>SP</UF></enderEmit>"
                   "<IE>111222333444</IE></emit>"_l1) +
               dest + itens + "<total><ICMSTot><vICMS>1.80</vICMS><vDesc>" + desconto +
               "</vDesc><vOutro>" + outro + "</vOutro><vNF>" + total + "</vNF>" + tributos +
               "</ICMSTot></total>" + pagamentos +
               (infCpl.empty() ? "" : "<infAdic><infCpl>" + infCpl + "</infCpl></infAdic>") +
               "</infNFe></NFe>";
    }
};

class Teste : public testing::Test {
protected:
    void SetUp() override {
        ::setenv("ZEL_DIRETORIO", (pasta / "").c_str(), 1);
        ASSERT_EQ(inicializarConfig(), ZEL_OK);
        G_stXML_Persistencia.fnLimpar();
        G_stDadosImpressao = {};
        G_szTotalImposto.limpar();
    }

    static void
    configurar(std::initializer_list<std::pair<std::string_view, std::string_view>> valores) {
        for (const auto &[caminho, valor] : valores)
            ASSERT_EQ(fnRegAlterarValor_ZEL(caminho, valor), ZEL_OK) << caminho;
    }

    // Reads a document and its return; an empty return is "OFFLINE".
    int ler(std::string_view xml, std::string_view retorno, CupomFiscal &cf) const {
        pasta.gravar("nota.xml", xml);
        pasta.gravar("retorno.xml", retorno);
        const std::string caminho = retorno.empty() ? std::string(kOffline) : pasta / "retorno.xml";
        return parseXMLCupomFiscal(pasta / "nota.xml", caminho, cf);
    }

    PastaTemporaria pasta;
};

// The text has the piece exactly `vezes` times.
inline testing::AssertionResult contem(std::string_view texto, std::string_view trecho,
                                       int vezes = 1) {
    for (std::size_t i = 0; (i = texto.find(trecho, i)) != texto.npos; i += trecho.size())
        --vezes;
    if (vezes == 0) return testing::AssertionSuccess();
    return testing::AssertionFailure() << -vezes << " too many of " << trecho << " in\n" << texto;
}

// Fields side by side, to be compared at once.
inline std::string juntar(std::initializer_list<std::string_view> campos) {
    std::string texto;
    for (const std::string_view campo : campos)
        texto.append(campo).append("|");
    return texto;
}

} // namespace impressao
