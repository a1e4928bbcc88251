// SPDX-License-Identifier: MIT
// Documents of layout 3.10 as the till writes them, from rows.
#pragma once

#include "base/Decimal.h"
#include "base/Xml.h"
#include "comum/ChaveAcesso.h"
#include "config/Configuracao.h"
#include "traducao/Traducao.h"

#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace zel::envio::teste {

using Campos = std::vector<std::pair<std::string, std::string>>;

// "CST=00 modBC=3" as elements, in that order; a value ends at the next blank.
inline std::string elementos(const std::string &lista) {
    std::string xml;
    for (std::size_t i = 0; i < lista.size();) {
        const std::size_t igual = lista.find('=', i),
                          fim = std::min(lista.find(' ', i), lista.size());
        const std::string nome = lista.substr(i, igual - i);
        xml += '<' + nome + '>' + lista.substr(igual + 1, fim - igual - 1) + "</" + nome + '>';
        i = fim + 1;
    }
    return xml;
}

inline std::string grupo(const std::string &nome, const std::string &dentro) {
    return '<' + nome + '>' + dentro + "</" + nome + '>';
}

inline std::string icms(const std::string &nome, const std::string &lista) {
    return grupo("ICMS", grupo(nome, elementos(lista)));
}

// An item that is sold with ICMS00 unless something else is given.
struct ItemNota {
    std::string cProd = "101", xProd = "Cafe 500 g", NCM = "09012100", EAN = " ", CFOP = "5102";
    std::string quantidade = "2.0000", preco = "10.00", vProd = "20.00", vDesc, vOutro;
    std::string imposto = icms("ICMS00", "orig=0 CST=00 modBC=3 vBC=20.00 pICMS=18.00 vICMS=3.60");

    std::string xml(std::size_t numero) const {
        std::string prod = grupo("cProd", cProd) + grupo("cEAN", EAN) + grupo("xProd", xProd) +
                           grupo("NCM", NCM) + grupo("CFOP", CFOP) + grupo("uCom", "UN") +
                           grupo("qCom", quantidade) + grupo("vUnCom", preco) +
                           grupo("vProd", vProd) + grupo("cEANTrib", EAN) + grupo("uTrib", "UN") +
                           grupo("qTrib", quantidade) + grupo("vUnTrib", preco);
        if (!vDesc.empty()) prod += grupo("vDesc", vDesc);
        if (!vOutro.empty()) prod += grupo("vOutro", vOutro);
        return "<det nItem='" + std::to_string(numero) + "'>" +
               grupo("prod", prod + "<indTot>1</indTot>") + grupo("imposto", imposto) + "</det>";
    }
};

struct Nota {
    // CRT: empty is as the first item's tax has it.
    std::string tpEmis = "1", tpAmb = "1", CRT, dhEmi = "2025-06-30T12:00:00-03:00";
    std::string indPres = "1", cNF = "17102545", nNF = "42", UF = "RS", cUF = "43";
    std::string IE = "0963233556", contingencia, dest, entrega;
    std::string vNF = "20.00"; // empty: the till's total is one of services
    std::vector<ItemNota> itens{{}};
    std::vector<std::pair<std::string, std::string>> pagamentos{{"01", "20.00"}};
    std::string transp = "<modFrete>9</modFrete>", infAdic;

    std::string chave() const {
        const auto zeros = [](const std::string &texto, std::size_t largura) {
            return std::string(largura - texto.size(), '0') + texto;
        };
        return std::string(
            ChaveAcesso::montar({cUF, dhEmi.substr(2, 2) + dhEmi.substr(5, 2), "11222333000181",
                                 "65", "001", zeros(nNF, 9), tpEmis, cNF})
                ->texto());
    }

    std::string regime() const {
        if (!CRT.empty()) return CRT;
        return itens.front().imposto.find("<CSOSN>") == std::string::npos ? "3" : "1";
    }

    std::string xml() const {
        const std::string chaveDaNota = chave();
        std::string dentro = grupo(
            "ide", elementos("cUF=" + cUF + " cNF=" + cNF +
                             " natOp=Venda indPag=0 mod=65 serie=1 nNF=" + nNF + " dhEmi=" + dhEmi +
                             " tpNF=1 idDest=1 cMunFG=4314902 tpImp=4" + " tpEmis=" + tpEmis +
                             " cDV=" + chaveDaNota.back() + " tpAmb=" + tpAmb +
                             " finNFe=1 indFinal=1 indPres=" + indPres + " procEmi=0 verProc=1.0") +
                       contingencia);
        dentro += grupo("emit", "<CNPJ>11222333000181</CNPJ><xNome>Padaria  da Esquina</xNome>" +
                                    grupo("enderEmit",
                                          "<xLgr>Rua das Flores</xLgr><nro>001</nro><xBairro>Centro"
                                          "</xBairro><cMun>4314902</cMun><xMun>Porto Alegre</xMun>"
                                          "<UF>" +
                                              UF + "</UF><CEP>90010000</CEP>") +
                                    grupo("IE", IE) + grupo("CRT", regime()));
        dentro += dest + entrega;
        for (std::size_t i = 0; i < itens.size(); ++i)
            dentro += itens[i].xml(i + 1);
        dentro += grupo("total", vNF.empty() ? "<ISSQNTot><vServ>0.00</vServ></ISSQNTot>"
                                             : grupo("ICMSTot", grupo("vNF", vNF)));
        dentro += grupo("transp", transp);
        for (const auto &[tPag, vPag] : pagamentos)
            dentro += grupo("pag", grupo("tPag", tPag) + grupo("vPag", vPag));
        if (!infAdic.empty()) dentro += grupo("infAdic", grupo("infCpl", infAdic));
        return R"(<NFe xmlns="http://www.portalfiscal.inf.br/nfe"><infNFe Id="NFe)" + chaveDaNota +
               R"(" versao="3.10">)" + dentro + "</infNFe></NFe>";
    }
};

struct Traduzida {
    std::optional<Documento> documento;
    Recusas recusas;

    std::string texto(std::string_view caminho) const {
        return documento ? documento->raiz().texto("infNFe/" + std::string(caminho))
                         : "recusada: " + recusas.texto();
    }
    No no(std::string_view caminho) const {
        return documento ? documento->raiz().filho("infNFe/" + std::string(caminho)) : No();
    }
    bool recusou(std::string_view campo) const {
        for (const auto &recusa : recusas.lista())
            if (recusa.campo == campo) return true;
        return false;
    }
};

inline Traduzida traduzirXml(const std::string &xml, const Configuracao &config = {},
                             const ContextoNota &nota = {}) {
    Traduzida traduzida;
    std::string motivo;
    const auto antiga = Documento::ler(xml, motivo);
    EXPECT_TRUE(antiga) << motivo << '\n' << xml;
    if (antiga) traduzida.documento = traduzirNfce(antiga->raiz(), config, traduzida.recusas, nota);
    return traduzida;
}

inline Traduzida traduzir(const Nota &nota, const Configuracao &config = {},
                          const ContextoNota &contexto = {}) {
    return traduzirXml(nota.xml(), config, contexto);
}

} // namespace zel::envio::teste
