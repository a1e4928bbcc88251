// SPDX-License-Identifier: MIT
#include "negocio/InfoEstendida.h"

#include "comum/Centavo.h"
#include "config/Registro.h"
#include "emcurso/ZEL_Controle.h"
#include "imposto/Somas.h"
#include "recusa/Recusa.h"
#include "texto/Numero.h"
#include "zel_felbor/codigos.h"

#include <algorithm>
#include <cmath>

namespace zel {

namespace {

std::string vendendo(const ST_PersitenceXML_ZEL &documento, long long indice) {
    if (!documento.temListaDeVendas()) return {};
    if (indice == 1) return formatarInteiro(documento.quantidadeItens());
    if (indice == 2) return std::string(ZEL_TIPO_DESC_ACREC.texto());
    if (indice != 3 || documento.vendas->empty()) return {};
    const ST_tagZEL *prod = documento.vendas->back().getSubTag("prod");
    return prod != nullptr ? std::string(prod->valorDe("vProd")) : std::string{};
}

std::string pagando(const ST_PersitenceXML_ZEL &documento, long long indice) {
    if (indice != 1 && indice != 2) return {};
    const std::string total = totalDoCupom(documento);
    if (!documento.pagamentos || documento.pagamentos->empty())
        return indice == 1 ? total : std::string{};
    const double troco = lerDecimal(valorConfig(R"(CONFIGURACAO\TrocoUltimaNFCe)"_chave));
    double falta = lerDecimal(total) - totalPago(documento) - troco;
    // Sums of cents in binary leave dust that is neither owed nor over.
    if (std::abs(falta) < kMeioCentavo) falta = 0;
    if (indice == 1) return falta >= 0 ? "+" : "-";
    return formatarMoeda(std::abs(falta));
}

std::string encerrado(const ST_PersitenceXML_ZEL &documento, long long indice) {
    switch (indice) {
    case 1:
        return totalDoCupom(documento);
    case 2:
        return std::string(valorConfig(R"(IDE\nNF)"_chave));
    case 3:
        return std::string(valorConfig(R"(NFCE\ChaveDeAcesso)"_chave));
    case 4:
        return std::string(valorConfig(R"(NFCE\ProtocoloAutorizacao)"_chave).substr(0, 44));
    case 5:
        return std::string(valorConfig(R"(IDE\Serie)"_chave));
    case 6:
        return autorizacaoUltimoDocumento().dataHora;
    case 7:
        return autorizacaoUltimoDocumento().digest;
    default:
        return {};
    }
}

} // namespace

int fnInfoEstendida_ZEL(const ST_PersitenceXML_ZEL &documento, std::string_view indice,
                        std::string &saida) {
    saida.clear();
    const long long numero = lerInteiro(indice);
    const int estado = fnCFVerificarStatus_ZEL();
    if (estado < kVendendo) return ZEL_OK;
    if (numero == 0 || numero > 7)
        return recusar(Motivo::kIndice, {.campo = "indice", .dado = indice});
    if (estado == kVendendo) saida = vendendo(documento, numero);
    if (estado == kTotalizado || estado == kPagamento) saida = pagando(documento, numero);
    if (estado == kEncerrado) saida = encerrado(documento, numero);
    saida.resize(std::min<std::size_t>(saida.size(), 99));
    return ZEL_OK;
}

} // namespace zel
