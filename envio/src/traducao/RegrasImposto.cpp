// SPDX-License-Identifier: MIT
#include "base/Decimal.h"
#include "base/Texto.h"
#include "comum/Ascii.h"
#include "traducao/Motor.h"
#include "traducao/Regras.h"

namespace zel::envio::regra {

namespace {

bool temValor(const No &grupo, std::string_view nome) {
    const auto numero = Decimal::ler(aparar(grupo.texto(nome)));
    return numero && !numero->zero();
}

// One of the three rates of the fund, and the base in the group that it is of.
struct Fundo {
    std::optional<Decimal> ConfigProduto::*taxa;
    std::string_view base;
};
constexpr Fundo kProprio{&ConfigProduto::pFCP, "vBC"};
constexpr Fundo kSt{&ConfigProduto::pFCPST, "vBCST"};
constexpr Fundo kStRet{&ConfigProduto::pFCPSTRet, "vBCSTRet"};

bool incide(const Lugar &icms, const Fundo &fundo) {
    const auto &taxa = icms.item->produto.*fundo.taxa;
    return taxa && !taxa->zero() && centavosDe(icms.novo.filho(fundo.base)) > 0;
}
Texto baseDe(const Lugar &icms, const Fundo &fundo) {
    return icms.novo.texto(fundo.base);
}
// Written in full: a rate that the schema does not take is refused by its row.
Texto porcento(const std::optional<Decimal> &taxa) {
    return taxa ? taxa->texto(2, Decimal::kMaisCasas, 15) : std::nullopt;
}
Texto valorDe(const Lugar &icms, const Fundo &fundo) {
    const auto &taxa = icms.item->produto.*fundo.taxa;
    return textoDe(taxa->porCentoDe(centavosDe(icms.novo.filho(fundo.base))));
}

} // namespace

bool mercadoria(const Lugar &imposto) {
    return !imposto.item->servico;
}
bool servico(const Lugar &imposto) {
    return imposto.item->servico;
}

// "0101" and "101" are "01.01" (LC 116/2003).
Texto cListServ(const Lugar &issqn) {
    std::string codigo = aparar(issqn.antigo.texto("cListServ"));
    std::erase(codigo, '.');
    if (codigo.size() == 3) codigo.insert(0, "0");
    if (codigo.size() != 4 || !soDigitos(codigo))
        return recusar(issqn, "cListServ", codigo,
                       "é um item da lista de serviços, 4 dígitos; corrija "
                       "IMPOSTO\\ISSQN\\cListServ de ZEL_Framework.xml");
    return codigo.substr(0, 2) + '.' + codigo.substr(2);
}

// The till's groups of other operations and of substitution may hold both forms; what counts is
// base and rate, unless these are nothing and a value per unit is something.
bool porAliquota(const Lugar &grupo) {
    const bool aliquota = grupo.antigo.filho("vBC") && acharFilho(grupo.antigo, "pPIS|pCOFINS");
    const bool quantidade = grupo.antigo.filho("qBCProd") && grupo.antigo.filho("vAliqProd");
    if (!aliquota || !quantidade) return !quantidade;
    const bool nada = !temValor(grupo.antigo, "vBC") ||
                      (!temValor(grupo.antigo, "pPIS") && !temValor(grupo.antigo, "pCOFINS"));
    return !nada || !temValor(grupo.antigo, "vAliqProd");
}
bool porQuantidade(const Lugar &grupo) {
    return !porAliquota(grupo);
}

bool comPisSt(const Lugar &imposto) {
    const No grupo = imposto.antigo.filho("PIS/PISST");
    return temValor(grupo, "vBC") || temValor(grupo, "vAliqProd") || temValor(grupo, "vPIS");
}
bool comCofinsSt(const Lugar &imposto) {
    const No grupo = imposto.antigo.filho("COFINS/COFINSST");
    return temValor(grupo, "vBC") || temValor(grupo, "vAliqProd") || temValor(grupo, "vCOFINS");
}
// TDec_1302Opc has no zero.
void baseDaSt(const Lugar &grupo) {
    if (const No vBC = grupo.novo.filho("vBC"); vBC && centavosDe(vBC) == 0)
        recusar(grupo, "vBC", vBC.texto(),
                "a base da substituição não pode ser zero; corrija " + std::string(kDaVenda));
}

bool desonerado(const Lugar &icms) {
    return temValor(icms.antigo, "vICMSDeson");
}

// CRT 4, of NT 2024.001, is of the Simples Nacional too.
void situacaoDoRegime(const Lugar &icms) {
    const std::string CRT = aparar(icms.contexto.antiga.texto("emit/CRT"));
    if (CRT.size() != 1 || CRT < "1" || CRT > "4") return; // refused where it stands
    const bool simples = CRT == "1" || CRT == "4";
    for (const No &grupo : icms.antigo.filhos())
        if (static_cast<bool>(grupo.filho("CSOSN")) != simples)
            recusar(icms, grupo.nome(), aparar(grupo.texto(simples ? "CST" : "CSOSN")),
                    std::string(simples ? "o emitente é do Simples Nacional, e seus itens têm CSOSN"
                                        : "o emitente não é do Simples Nacional, e seus itens têm "
                                          "CST") +
                        ": no caixa, acerte EMIT\\CRT (agora " + CRT +
                        ") ou o grupo de IMPOSTO\\ICMS de ZEL_Framework.xml, e venda de novo");
}

bool retidoAntes(const Lugar &icms) {
    return temValor(icms.antigo, "vBCSTRet") || temValor(icms.antigo, "vICMSSTRet");
}

// Of ICMSST it is optional, of the others all or none of the group are there.
Texto pST(const Lugar &icms) {
    const auto &taxa = icms.item->produto.pST;
    if (taxa || icms.linha->nome == "ICMSST") return porcento(taxa);
    return recusar(icms, "pST", "",
                   faltaConfigurar(*icms.item, "pST") +
                       ", porque o caixa dá vBCSTRet e vICMSSTRet");
}

Texto vICMSSubstituto(const Lugar &icms) {
    const auto &porUnidade = icms.item->produto.vICMSSubstituto;
    const auto quantidade = Decimal::ler(icms.item->novo.texto("prod/qCom"));
    if (!porUnidade || !quantidade) return {};
    const auto valor = porUnidade->vezes(*quantidade);
    return valor ? Texto(textoDe(*valor)) : std::nullopt;
}

bool comFcp(const Lugar &icms) {
    return incide(icms, kProprio);
}
bool comFcpSt(const Lugar &icms) {
    return incide(icms, kSt);
}
bool comFcpStRet(const Lugar &icms) {
    return incide(icms, kStRet);
}
Texto vBCFCP(const Lugar &icms) {
    return baseDe(icms, kProprio);
}
Texto vBCFCPST(const Lugar &icms) {
    return baseDe(icms, kSt);
}
Texto vBCFCPSTRet(const Lugar &icms) {
    return baseDe(icms, kStRet);
}
Texto pFCP(const Lugar &icms) {
    return porcento(icms.item->produto.pFCP);
}
Texto pFCPST(const Lugar &icms) {
    return porcento(icms.item->produto.pFCPST);
}
Texto pFCPSTRet(const Lugar &icms) {
    return porcento(icms.item->produto.pFCPSTRet);
}
Texto vFCP(const Lugar &icms) {
    return valorDe(icms, kProprio);
}
Texto vFCPST(const Lugar &icms) {
    return valorDe(icms, kSt);
}
Texto vFCPSTRet(const Lugar &icms) {
    return valorDe(icms, kStRet);
}

} // namespace zel::envio::regra
