// SPDX-License-Identifier: MIT
// The values that are not simply copied, each a function that a row of the tables names.
#pragma once

#include "traducao/Linha.h"

#include <optional>
#include <string>
#include <string_view>

namespace zel::envio {

struct Item;

// Fills number, product configuration and kind of an item before its rows are walked.
void abrirItem(const Lugar &det);

// "configure CEST em [produtos."7"], [ncm."22011000"] ou [padrao] de zel-envio.toml".
std::string faltaConfigurar(const Item &item, std::string_view chave);

namespace regra {

using Texto = std::optional<std::string>;

// ide
bool naoPresencial(const Lugar &ide);
Texto indIntermed(const Lugar &ide);
bool emContingencia(const Lugar &ide);
void contingenciaComTipo(const Lugar &ide);

// emit: the registration with the municipality, where the document has services and the shop says
// it
bool prestaServico(const Lugar &emit);
Texto IM(const Lugar &emit), CNAE(const Lugar &emit);

// dest, entrega
Texto xNomeDest(const Lugar &dest);
void umDocumento(const Lugar &dest);
bool destComCpf(const Lugar &entrega);
bool destSemCpf(const Lugar &entrega);
Texto cpfDest(const Lugar &entrega);
Texto cnpjDest(const Lugar &entrega); // may be empty, which the schema takes
Texto cMunEntrega(const Lugar &entrega);

// prod
Texto xProd(const Lugar &prod);
Texto NCM(const Lugar &prod);
Texto gtin(const Lugar &prod);
Texto gtinTrib(const Lugar &prod);
Texto CEST(const Lugar &prod);
bool temCest(const Lugar &prod);
bool semEscala(const Lugar &prod); // indEscala N asks for CNPJFab

// imposto
bool mercadoria(const Lugar &imposto);
bool servico(const Lugar &imposto);
void situacaoDoRegime(const Lugar &icms); // CSOSN of who is in the Simples Nacional, else CST
Texto cListServ(const Lugar &issqn);
bool porAliquota(const Lugar &grupo); // of PIS or COFINS; else by quantity
bool porQuantidade(const Lugar &grupo);
bool comPisSt(const Lugar &imposto); // one of nothing but zeros says nothing
bool comCofinsSt(const Lugar &imposto);
void baseDaSt(const Lugar &grupo);
bool desonerado(const Lugar &icms);
bool retidoAntes(const Lugar &icms);
Texto pST(const Lugar &icms);
Texto vICMSSubstituto(const Lugar &icms);

// The fund against poverty: where its rate is configured and there is a base.
bool comFcp(const Lugar &icms);
bool comFcpSt(const Lugar &icms);
bool comFcpStRet(const Lugar &icms);
Texto vBCFCP(const Lugar &icms), pFCP(const Lugar &icms), vFCP(const Lugar &icms);
Texto vBCFCPST(const Lugar &icms), pFCPST(const Lugar &icms), vFCPST(const Lugar &icms);
Texto vBCFCPSTRet(const Lugar &icms), pFCPSTRet(const Lugar &icms), vFCPSTRet(const Lugar &icms);

// total, infIntermed, infRespTec
bool temServico(const Lugar &total);
bool comTotTrib(const Lugar &icmsTot);
Texto dCompet(const Lugar &issqnTot);
bool comIntermediador(const Lugar &infNFe);
bool comRespTec(const Lugar &infNFe);
bool comCsrt(const Lugar &infRespTec);
Texto hashCSRT(const Lugar &infRespTec);

// Pagamentos.cpp
Texto tPag(const Lugar &detPag), xPag(const Lugar &detPag), vPag(const Lugar &detPag);
bool outraForma(const Lugar &detPag);
bool comCartao(const Lugar &detPag);
Texto tpIntegra(const Lugar &card), cardCNPJ(const Lugar &card), tBand(const Lugar &card),
    cAut(const Lugar &card);
void integradoCompleto(const Lugar &card);
bool comTroco(const Lugar &pag);
Texto vTroco(const Lugar &pag);
void conferirPago(const Lugar &pag);

} // namespace regra

} // namespace zel::envio
