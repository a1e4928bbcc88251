// SPDX-License-Identifier: MIT
#include "negocio/Totalizacao.h"

#include "config/Registro.h"
#include "emcurso/ArquivoPersistencia.h"
#include "emcurso/ZEL_Controle.h"
#include "imposto/Somas.h"
#include "negocio/Argumento.h"
#include "negocio/Rateio.h"
#include "recusa/Recusa.h"
#include "secao/Conformidade.h"
#include "texto/Numero.h"
#include "zel_felbor/codigos.h"

#include <span>

namespace zel {

namespace {

// One element of a totals form and the sum it takes.
struct CampoTotal {
    std::string_view nome;
    double (*valor)(const Somas &);
};

constexpr double nada(const Somas &) {
    return 0;
}

// Manual de Orientação do Contribuinte 6.0 (September 2015), Anexo I, group W.
constexpr CampoTotal kICMSTot[] = {
    {"vBC", [](const Somas &s) { return s.baseICMS; }},
    {"vICMS", [](const Somas &s) { return s.valorICMS; }},
    {"vICMSDeson", nada},
    {"vBCST", [](const Somas &s) { return s.baseST; }},
    {"vST", [](const Somas &s) { return s.valorST; }},
    {"vProd", [](const Somas &s) { return s.produtos; }},
    {"vFrete", nada},
    {"vSeg", nada},
    {"vDesc", [](const Somas &s) { return s.descontos; }},
    {"vII", nada},
    {"vIPI", nada},
    {"vPIS", [](const Somas &s) { return s.pis; }},
    {"vCOFINS", [](const Somas &s) { return s.cofins; }},
    {"vOutro", [](const Somas &s) { return s.outros; }},
    {"vNF", [](const Somas &s) { return s.total(); }},
};

constexpr CampoTotal kISSQNTot[] = {
    {"vServ", nada},
    {"vBC", [](const Somas &s) { return s.baseServico; }},
    {"vISS", [](const Somas &s) { return s.issqn; }},
    {"vPIS", [](const Somas &s) { return s.pisServico; }},
    {"vCOFINS", [](const Somas &s) { return s.cofinsServico; }},
};

constexpr CampoTotal kRetTrib[] = {{"vRetPIS", nada}, {"vRetCOFINS", nada}, {"vRetCSLL", nada},
                                   {"vIRRF", nada},   {"vBCRetPrev", nada}, {"vRetPrev", nada}};

ST_tagZEL montarForma(std::string_view nome, std::span<const CampoTotal> campos,
                      const Somas &somas) {
    ST_tagZEL forma(nome);
    for (const CampoTotal &campo : campos)
        forma.addSubTag(campo.nome, formatarMoeda(campo.valor(somas)));
    return forma;
}

ST_tagZEL montarTotal(const Somas &somas) {
    ST_tagZEL total("total");
    switch (somas.forma) {
    case Somas::Forma::kICMS:
        total.addSubTag(montarForma("ICMSTot", kICMSTot, somas));
        break;
    case Somas::Forma::kISSQN:
        total.addSubTag(montarForma("ISSQNTot", kISSQNTot, somas));
        break;
    case Somas::Forma::kNenhuma:
        total.addSubTag(montarForma("retTrib", kRetTrib, somas));
        break;
    }
    return total;
}

} // namespace

int fnCFTotalizar_ZEL_Felbor(ST_PersitenceXML_ZEL &documento, std::string_view tipo,
                             std::string_view valor) {
    if (const int resultado = fnXML_CarregarXML_ZEL(); resultado != ZEL_OK) return resultado;
    if (const int resultado = fnVerificarSePosso_ZEL(Operacao::kTotalizar); resultado != ZEL_OK)
        return resultado;
    if (!documento.temListaDeVendas()) return recusarSemDocumento();

    Mudancas mudancas;
    const auto totalizar = [&] {
        const int rateio =
            fnRatearDescAcresTotalizacao(documento, argumentoCortado(tipo, 2), valor, mudancas);
        if (rateio != ZEL_OK) return rateio;
        const bool comAjuste = lerDecimal(argumentoDecimal(valor)) > 0;
        return fnCFeTotalizarTAG_ZEL(documento, montarTotal(somarItens(documento)),
                                     comAjuste ? Itens::kMudados : Itens::kComoEstavam);
    };
    return ouDesfaz(totalizar, [&] { mudancas.desfazer(); });
}

int fnCFeTotalizarTAG_ZEL(ST_PersitenceXML_ZEL &documento, ST_tagZEL total, Itens itens) {
    ST_tagZEL raiz = newST_tagZEL(false, nomeSecao(Secao::kTotalizacao));
    raiz.addSubTag(std::move(total));
    if (const int resultado = verificarSecao(Secao::kTotalizacao, raiz); resultado != ZEL_OK)
        return resultado;
    return desfazendoNaFalha(documento.totalizacao, [&] {
        documento.fnAdicionarTagZEL(Secao::kTotalizacao, std::move(raiz));
        const Alteracao estado = alteracaoEstado(kTotalizado);
        return itens == Itens::kMudados
                   ? fnPersistEstrutura_ZEL(documento, {&estado, 1})
                   : persistirUltimo(documento, Secao::kTotalizacao, {&estado, 1});
    });
}

} // namespace zel
