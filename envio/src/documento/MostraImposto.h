// SPDX-License-Identifier: MIT
// The tables of what an item's taxes and a document's totals and payments are called.
#pragma once

#include <string_view>

namespace zel::envio {

// A tax of an item: paths below `grupo`, in which "*" is any one element. An empty one: there is
// none. Where it has a situation code, the line stands without an amount, too.
struct ImpostoLido {
    std::string_view nome, grupo, codigo, base, taxa, efetiva, valor;
};

inline constexpr ImpostoLido kImpostos[] = {
    {"ICMS", "imposto/ICMS/*", "CST|CSOSN", "vBC", "pICMS", "", "vICMS"},
    {"FCP", "imposto/ICMS/*", "", "vBCFCP", "pFCP", "", "vFCP"},
    {"ICMS ST", "imposto/ICMS/*", "", "vBCST", "pICMSST", "", "vICMSST"},
    {"FCP ST", "imposto/ICMS/*", "", "vBCFCPST", "pFCPST", "", "vFCPST"},
    {"ICMS ST retido antes", "imposto/ICMS/*", "", "vBCSTRet", "pST", "", "vICMSSTRet"},
    {"FCP ST retido antes", "imposto/ICMS/*", "", "vBCFCPSTRet", "pFCPSTRet", "", "vFCPSTRet"},
    {"ICMS desonerado", "imposto/ICMS/*", "", "", "", "", "vICMSDeson"},
    {"Crédito de ICMS do Simples", "imposto/ICMS/*", "", "", "pCredSN", "", "vCredICMSSN"},
    {"ICMS monofásico", "imposto/ICMS/*", "", "qBCMono", "adRemICMS", "", "vICMSMono"},
    {"ICMS monofásico retido", "imposto/ICMS/*", "", "qBCMonoReten", "adRemICMSReten", "",
     "vICMSMonoReten"},
    {"ICMS monofásico retido antes", "imposto/ICMS/*", "", "qBCMonoRet", "adRemICMSRet", "",
     "vICMSMonoRet"},
    {"IPI", "imposto/IPI/IPITrib", "CST", "vBC", "pIPI", "", "vIPI"},
    {"II", "imposto/II", "", "vBC", "", "", "vII"},
    {"ISSQN", "imposto/ISSQN", "cListServ", "vBC", "vAliq", "", "vISSQN"},
    {"PIS", "imposto/PIS/*", "CST", "vBC|qBCProd", "pPIS|vAliqProd", "", "vPIS"},
    {"PIS ST", "imposto/PISST", "", "vBC|qBCProd", "pPIS|vAliqProd", "", "vPIS"},
    {"COFINS", "imposto/COFINS/*", "CST", "vBC|qBCProd", "pCOFINS|vAliqProd", "", "vCOFINS"},
    {"COFINS ST", "imposto/COFINSST", "", "vBC|qBCProd", "pCOFINS|vAliqProd", "", "vCOFINS"},
    {"IS", "imposto/IS", "CSTIS", "vBCIS", "pIS", "", "vIS"},
    {"IBS e CBS", "imposto/IBSCBS", "CST", "gIBSCBS/vBC", "", "", ""},
    {"IBS do estado", "imposto/IBSCBS/gIBSCBS", "", "vBC", "gIBSUF/pIBSUF", "gIBSUF/gRed/pAliqEfet",
     "gIBSUF/vIBSUF"},
    {"IBS do município", "imposto/IBSCBS/gIBSCBS", "", "vBC", "gIBSMun/pIBSMun",
     "gIBSMun/gRed/pAliqEfet", "gIBSMun/vIBSMun"},
    {"CBS", "imposto/IBSCBS/gIBSCBS", "", "vBC", "gCBS/pCBS", "gCBS/gRed/pAliqEfet", "gCBS/vCBS"},
};

// An element by its path, and what it is called.
struct Rotulo {
    std::string_view caminho, nome;
};

// Below `prod`; those that are taken off stand with a minus.
inline constexpr Rotulo kAjustes[] = {
    {"vDesc", "-Desconto"}, {"vOutro", "Acréscimo"}, {"vFrete", "Frete"}, {"vSeg", "Seguro"}};

// Below `total`; shown when they are not zero.
inline constexpr Rotulo kTotais[] = {
    {"ICMSTot/vProd", "Produtos"},    {"ISSQNtot/vServ", "Serviços"},
    {"ISSQNTot/vServ", "Serviços"},   {"ICMSTot/vDesc", "-Descontos"},
    {"ICMSTot/vOutro", "Acréscimos"}, {"ICMSTot/vFrete", "Frete"},
    {"ICMSTot/vSeg", "Seguro"},       {"ICMSTot/vST", "ICMS ST"},
    {"ICMSTot/vFCPST", "FCP ST"},     {"ICMSTot/vII", "II"},
    {"ICMSTot/vIPI", "IPI"},
};
// Taxes within the price, below `total`: amount and base.
struct TributoTotal {
    std::string_view caminho, base, nome;
};
inline constexpr TributoTotal kTributosTotais[] = {
    {"ICMSTot/vICMS", "ICMSTot/vBC", "ICMS"},
    {"ICMSTot/vICMSDeson", "", "ICMS desonerado"},
    {"ICMSTot/vFCP", "", "FCP"},
    {"ICMSTot/vFCPSTRet", "", "FCP ST retido antes"},
    {"ICMSTot/vICMSMonoRet", "ICMSTot/qBCMonoRet", "ICMS monofásico retido antes"},
    {"ICMSTot/vPIS", "", "PIS"},
    {"ICMSTot/vCOFINS", "", "COFINS"},
    {"ISSQNtot/vISS", "ISSQNtot/vBC", "ISSQN"},
    {"ISSQNTot/vISS", "ISSQNTot/vBC", "ISSQN"},
    {"ISTot/vIS", "", "IS"},
    {"IBSCBSTot/gIBS/gIBSUF/vIBSUF", "IBSCBSTot/vBCIBSCBS", "IBS do estado"},
    {"IBSCBSTot/gIBS/gIBSMun/vIBSMun", "IBSCBSTot/vBCIBSCBS", "IBS do município"},
    {"IBSCBSTot/gCBS/vCBS", "IBSCBSTot/vBCIBSCBS", "CBS"},
    {"ICMSTot/vTotTrib", "", "Tributos aproximados (Lei 12.741/2012)"},
};

// tPag, NT 2020.006, NT 2023.004 and NT 2025.001.
inline constexpr Rotulo kFormas[] = {
    {"01", "Dinheiro"},
    {"02", "Cheque"},
    {"03", "Cartão de crédito"},
    {"04", "Cartão de débito"},
    {"05", "Crédito da loja"},
    {"10", "Vale-alimentação"},
    {"11", "Vale-refeição"},
    {"12", "Vale-presente"},
    {"13", "Vale-combustível"},
    {"15", "Boleto"},
    {"16", "Depósito"},
    {"17", "PIX dinâmico"},
    {"18", "Transferência"},
    {"19", "Fidelidade, cashback"},
    {"20", "PIX estático"},
    {"21", "Crédito em loja"},
    {"22", "Pagamento eletrônico sem integração"},
    {"90", "Sem pagamento"},
    {"99", "Outros"},
};

} // namespace zel::envio
